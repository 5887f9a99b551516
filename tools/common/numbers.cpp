// Whole texts as numbers, independent of the locale.
#include "common/numbers.h"

#include <charconv>
#include <cmath>

namespace tools {

namespace {

template <class Number>
bool parseWhole(std::string_view s, Number& value) {
  const char* end = s.data() + s.size();
  const auto [stop, status] = std::from_chars(s.data(), end, value);
  return status == std::errc{} && stop == end;
}

}  // namespace

bool parseNumber(std::string_view s, double& value) {
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  return parseWhole(s, value) && std::isfinite(value);
}

bool parseInteger(std::string_view s, int& value) {
  return parseWhole(s, value);
}

}  // namespace tools
