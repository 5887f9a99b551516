// Whole texts as numbers, independent of the locale.
#pragma once

#include <string_view>

namespace tools {

/// The whole of `s` as a finite number; false when it is anything else.
bool parseNumber(std::string_view s, double& value);
/// The whole of `s` as an integer; false when it is anything else.
bool parseInteger(std::string_view s, int& value);

}  // namespace tools
