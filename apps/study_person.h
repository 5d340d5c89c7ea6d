// The person at the terminal, and the signal that ends a study early.
#pragma once

#include <optional>
#include <string>

namespace app {

// From now on Ctrl-C and a termination only ask the study to end.
void Catch_Interrupts();
bool Interrupted();

// Shows the question on the error stream and returns the line that was typed, without blanks around it. Nothing when
// the person ended the study: by q, Ctrl-C, or the end of the input.
std::optional<std::string> Ask(const std::string& question);

}  // namespace app
