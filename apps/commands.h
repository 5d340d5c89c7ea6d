// The commands of the host program, one file for each. A command adds itself to the command line; when it was given it
// runs and leaves the program's exit status.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace app {

// Exit statuses.
constexpr int Done = 0;
constexpr int Failed = 1;          // the command ran and something failed
constexpr int Wrong_Argument = 2;  // nothing was started

constexpr int Max_Stations = 14;

void Add_Measure(CLI::App& program, int& exit_status);
void Add_Selftest(CLI::App& program, int& exit_status);
void Add_Study(CLI::App& program, int& exit_status);
void Add_Panel(CLI::App& program, int& exit_status);
void Add_Doctor(CLI::App& program, int& exit_status);

// Checks that an argument is a whole number, or any number, from min to max, and else says so.
CLI::Validator Whole_Number(long min, long max);
CLI::Validator Number(double min, double max);

}  // namespace app
