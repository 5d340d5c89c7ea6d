// orsanta: the host program. It drives liborsanta.so as any other host does.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <optional>

#include "commands.h"
#include "software.h"

namespace app {
namespace {

template <class T>
std::optional<T> Read_Whole(const std::string& text) {
  T value{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

template <class T>
CLI::Validator Range(const std::string& kind, T min, T max, const std::string& shown_range) {
  CLI::Validator check;
  check.operation([=](std::string& text) {
    const std::optional<T> value = Read_Whole<T>(text);
    if (value && *value >= min && *value <= max) return std::string();
    return "takes " + kind + " from " + shown_range + ", not \"" + text + "\"";
  });
  check.description(shown_range);
  return check;
}

std::string Short(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

// What could have stood in place of an argument that nobody knows.
std::string Allowed(const CLI::App& program) {
  const CLI::App* command = &program;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  std::string text;
  for (const CLI::App* sub : command->get_subcommands({})) text += " " + sub->get_name();
  for (const CLI::Option* option : command->get_options()) text += " " + option->get_name();
  return text;
}

int Tell_Wrong_Argument(const CLI::App& program, const CLI::ParseError& error) {
  std::string text = error.what();
  std::replace(text.begin(), text.end(), '\n', ' ');
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr ||
      dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
    text += ". Allowed here:" + Allowed(program);
  }
  std::fprintf(stderr, "orsanta: %s\n", text.c_str());
  return Wrong_Argument;
}

}  // namespace

CLI::Validator Whole_Number(long min, long max) {
  return Range<long>("a whole number", min, max, std::to_string(min) + " to " + std::to_string(max));
}

CLI::Validator Number(double min, double max) {
  return Range<double>("a number", min, max, Short(min) + " to " + Short(max));
}

}  // namespace app

namespace {

int Run(int argc, char** argv) {
  CLI::App program("orsanta: a constant-force thickness gauge, here on the simulator, its simulated installation.",
                   "orsanta");
  program.require_subcommand(1);
  program.set_version_flag("--version", app::Software_Lines, "Prints the version, and which libraries are loaded");
  program.failure_message([](const CLI::App*, const CLI::Error&) { return std::string(); });
  int exit_status = app::Done;
  app::Add_Measure(program, exit_status);
  app::Add_Selftest(program, exit_status);
  app::Add_Study(program, exit_status);
  app::Add_Panel(program, exit_status);
  app::Add_Doctor(program, exit_status);
  program.footer(
      "Exit status: 0 all went well, 1 something failed, 2 an argument is wrong.\n"
      "orsanta COMMAND --help explains a command.");
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& help) {
    return program.exit(help);
  } catch (const CLI::ParseError& error) {
    return app::Tell_Wrong_Argument(program, error);
  }
  return exit_status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {  // a folder that cannot be made, or no memory
    std::fprintf(stderr, "orsanta: %s\n", error.what());
    return app::Failed;
  }
}
