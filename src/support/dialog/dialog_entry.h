// How the edits of a dialog show numbers, and how a typed number is read. Independent of the locale.
#pragma once

#include <string>

namespace orsanta {

// A number with that many decimals.
std::wstring Number_Text(double value, int decimals);

// Reads a typed number. Blanks around it and full-width digits and signs are accepted; anything else around the number
// is not, nor a number that is not finite or, for an integer, does not fit. Then it returns false and leaves value as
// it is.
bool Read_Typed(const std::wstring& text, double& value);
bool Read_Typed(const std::wstring& text, int& value);

// The message for an entry that is refused.
std::wstring Range_Reason(double min, double max);
std::wstring No_Number_Reason(bool integer);

}  // namespace orsanta
