// Raw positions of a drive: fixed-point numbers with 16 fraction bits of an encoder count.
#pragma once

namespace orsanta {

constexpr int Count_Fraction_Bits = 16;
constexpr double Raw_Per_Count = 1 << Count_Fraction_Bits;
// Raw for each mm until SetScale tells another: 1000 counts, one for each micrometre.
constexpr double Start_Scale = 1000.0 * Raw_Per_Count;

}  // namespace orsanta
