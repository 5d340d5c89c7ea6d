// How numbers stand in the edits of a dialog, and how what an operator typed there is read. Independent of the locale.
#pragma once

#include <string>

namespace orsanta {

// A number with that many decimals.
std::wstring Number_Text(double value, int decimals);

// Reads a typed number. Blanks around it and full-width digits and signs are taken; anything else beside the number is
// not, nor a number that is not finite or, for an integer, does not fit. Returns false and leaves value as it is then.
bool Read_Typed(const std::wstring& text, double& value);
bool Read_Typed(const std::wstring& text, int& value);

// What the operator is told about an entry that does not get in.
std::wstring Range_Reason(double min, double max);
std::wstring No_Number_Reason(bool integer);

}  // namespace orsanta
