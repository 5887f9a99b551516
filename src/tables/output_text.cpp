// Building blocks of the output tables: cells, text with printf formats.
#include "tables/output_text.h"

#include <array>
#include <charconv>
#include <cstdarg>
#include <cstdio>

namespace output_text {

void append(std::string& text, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::array<char, 512> buffer;
  const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  va_end(arguments);
  if (length <= 0) return;
  const auto n = static_cast<std::size_t>(length);
  if (n < buffer.size()) {
    text.append(buffer.data(), n);
    return;
  }
  const std::size_t start = text.size();
  text.resize(start + n + 1);
  va_start(arguments, format);
  std::vsnprintf(text.data() + start, n + 1, format, arguments);
  va_end(arguments);
  text.resize(start + n);
}

}  // namespace output_text

std::string cellText(double value) {
  std::array<char, 32> buffer;
  // By its definition the same characters as those of "%.6g".
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 6);
  return {buffer.data(), end.ptr};
}

std::string cellText(int value) {
  return std::to_string(value);
}
