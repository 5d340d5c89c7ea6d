// Measured values from text with separated columns, as spreadsheets write it.
//
// The first line names the columns, in any order and in either case; columns with other names are passed over. Columns
// are separated by semicolons, tabs or commas, whichever the first line has, in this order. Numbers have a decimal
// point or a decimal comma; a comma only where columns are not separated by commas, or in quotation marks. Empty lines,
// and a byte order mark at the begin, count for nothing.
//
// Every function throws C_Refused with one line of text for each bad line, its number included, for a column that is
// missing, and for a text without values.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "study/crossed.h"
#include "study/force.h"
#include "study/linearity.h"

namespace study {

// Columns part, appraiser, trial, value (mm).
std::vector<C_Reading> Read_Crossed(const std::string& text);

// Columns reference and value (mm), gathered by reference in the order in which they first come up. reference_mm: of
// all values where there is no column of that name; without it the column is needed.
std::vector<C_Reference_Values> Read_References(const std::string& text, std::optional<double> reference_mm = {});

// Columns height (mm), set (g), true (g).
std::vector<C_Force_Reading> Read_Forces(const std::string& text);

// One line of the text, without line end: fields joined by commas, in quotation marks where they hold a comma, a
// semicolon or a mark.
std::string Csv_Line(const std::vector<std::string>& fields);

}  // namespace study
