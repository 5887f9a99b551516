// Building blocks of the output tables: cells, text with printf formats.
#pragma once

#include <string>

namespace output_text {

/// Appends the formatted text to `text`.
[[gnu::format(printf, 2, 3)]] void append(std::string& text, const char* format, ...);

/// The residue code when it is a single character, else "?".
inline std::string singleCode(const std::string& code) {
  return code.size() == 1 ? code : "?";
}

}  // namespace output_text

/// Table-cell text of a number, six significant digits.
std::string cellText(double value);
std::string cellText(int value);
