// The simulator's unit of time: one tick is one step of the physics.
#pragma once

#include <cstdint>

namespace simulator {

using Ticks = int64_t;  // since Reset

constexpr Ticks Ticks_Per_Ms = 50;
constexpr double Tick_S = 0.001 / static_cast<double>(Ticks_Per_Ms);

}  // namespace simulator
