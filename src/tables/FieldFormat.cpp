// One printf-style column format, parsed once and applied to text cells.
#include "tables/FieldFormat.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "tables/text.h"

namespace {

constexpr std::size_t kLongestNumber = 420;  // 309 digits, sign, point, 99 decimals

/// Reads decimal digits from `i` on, saturating far above every limit used.
int readDigits(std::string_view s, std::size_t& i) {
  constexpr int kSaturated = 100000000;
  int value = 0;
  for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i)
    value = std::min(value * 10 + (s[i] - '0'), kSaturated);
  return value;
}

}  // namespace

FieldFormat::FieldFormat(std::string_view stored) {
  const std::size_t percent = stored.find('%');
  if (percent == std::string_view::npos) return;
  const std::size_t letter = stored.find_first_not_of("-.0123456789", percent + 1);
  if (letter == std::string_view::npos) return;
  if (stored[letter] != 's' && stored[letter] != 'd' && stored[letter] != 'f') return;
  conversion = stored[letter];
  before = stored.substr(0, percent);
  after = stored.substr(letter + 1);
  if (!parseSpecification(stored.substr(percent + 1, letter - percent - 1))) {
    zeroPadded = false;
    width = 0;
    precision = -1;
  }
}

/// Flags, width and precision; false for an order that printf does not define.
bool FieldFormat::parseSpecification(std::string_view specification) {
  std::size_t i = 0;
  bool leftAligned = false;
  for (; i < specification.size() && (specification[i] == '-' || specification[i] == '0'); ++i) {
    (specification[i] == '-' ? leftAligned : zeroPadded) = true;
  }
  width = std::min(readDigits(specification, i), kMaxWidth);
  if (leftAligned) width = -width;
  if (i < specification.size() && specification[i] == '.') {
    ++i;
    precision = readDigits(specification, i);
    if (conversion != 's') precision = std::min(precision, kMaxPrecision);
  }
  return i == specification.size();
}

void FieldFormat::append(std::string& out, std::string_view cell) const {
  if (conversion == '\0') return;
  out += before;
  if (conversion == 's') {
    appendText(out, cell);
  } else if (conversion == 'f' && !zeroPadded) {
    appendNumber(out, text::toDouble(cell));
  } else {
    appendPrinted(out, cell);
  }
  out += after;
}

/// What printf would write, faster.
void FieldFormat::appendNumber(std::string& out, double value) const {
  char buffer[kLongestNumber];
  const int decimals = precision >= 0 ? precision : 6;
  const auto end = std::to_chars(buffer, buffer + kLongestNumber, value, std::chars_format::fixed, decimals);
  appendPadded(out, {buffer, static_cast<std::size_t>(end.ptr - buffer)});
}

void FieldFormat::appendPrinted(std::string& out, std::string_view cell) const {
  char buffer[kMaxWidth + kLongestNumber];
  if (conversion == 'd') {
    const char* format = zeroPadded ? "%0*.*d" : "%*.*d";
    std::snprintf(buffer, sizeof buffer, format, width, precision, text::toInt(cell));
  } else {
    std::snprintf(buffer, sizeof buffer, "%0*.*f", width, precision, text::toDouble(cell));
  }
  out += buffer;
}

void FieldFormat::appendText(std::string& out, std::string_view cell) const {
  if (precision >= 0) cell = cell.substr(0, static_cast<std::size_t>(precision));
  appendPadded(out, cell);
}

void FieldFormat::appendPadded(std::string& out, std::string_view text) const {
  const auto columns = static_cast<std::size_t>(width < 0 ? -width : width);
  const std::size_t padding = columns > text.size() ? columns - text.size() : 0;
  if (width > 0) out.append(padding, ' ');
  out += text;
  if (width < 0) out.append(padding, ' ');
}
