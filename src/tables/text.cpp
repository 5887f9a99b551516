// Text utilities shared by every table reader and writer: white space, splitting, number parsing.
#include "tables/text.h"

#include <charconv>
#include <cstdlib>
#include <limits>

namespace text {

namespace {

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view withoutLeadingSpace(std::string_view s) {
  std::size_t i = 0;
  while (i < s.size() && isSpace(s[i])) ++i;
  return s.substr(i);
}

/// Decimal numbers that `from_chars` and `strtod` read alike: no '+', no hexadecimal, no inf or nan.
bool isPlainDecimal(std::string_view s) {
  const std::size_t first = !s.empty() && s[0] == '-' ? 1 : 0;
  if (first >= s.size() || !(isDigit(s[first]) || s[first] == '.')) return false;
  return !(s[first] == '0' && first + 1 < s.size() && (s[first + 1] == 'x' || s[first + 1] == 'X'));
}

}  // namespace

std::string_view trim(std::string_view s) {
  s = withoutLeadingSpace(s);
  while (!s.empty() && isSpace(s.back())) s.remove_suffix(1);
  return s;
}

std::string simplifyWhiteSpace(std::string_view s) {
  s = trim(s);
  std::string result;
  result.reserve(s.size());
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (!isSpace(s[i])) {
      result += s[i];
    } else if (!isSpace(s[i - 1])) {  // trimmed: a white-space character is never the first
      result += ' ';
    }
  }
  return result;
}

void split_WhiteSpace(std::string_view s, std::vector<std::string_view>& tokens, std::size_t limit) {
  tokens.clear();
  const char* p = s.data();
  const char* const end = p + s.size();
  while (tokens.size() < limit) {
    while (p != end && isSpace(*p)) ++p;
    if (p == end) return;
    const char* const start = p;
    while (p != end && !isSpace(*p)) ++p;
    tokens.emplace_back(start, static_cast<std::size_t>(p - start));
  }
}

std::vector<std::string_view> split_WhiteSpace(std::string_view s) {
  std::vector<std::string_view> tokens;
  split_WhiteSpace(s, tokens, std::numeric_limits<std::size_t>::max());
  return tokens;
}

std::vector<std::string> split(std::string_view separator, std::string_view s) {
  std::vector<std::string> pieces;
  std::size_t from = 0;
  while (from < s.size()) {
    std::size_t to = separator.empty() ? std::string_view::npos : s.find(separator, from);
    if (to == std::string_view::npos) to = s.size();
    if (to > from) pieces.emplace_back(s.substr(from, to - from));
    from = to + separator.size();
    if (separator.empty()) break;
  }
  return pieces;
}

std::vector<std::string> split(char separator, std::string_view s) {
  return split(std::string_view(&separator, 1), s);
}

std::string section(std::string_view s, char separator, int from, int to) {
  const std::vector<std::string> pieces = split(separator, s);
  std::string result;
  for (int i = from < 0 ? 0 : from; i <= to && i < static_cast<int>(pieces.size()); ++i) {
    if (i > from && i > 0) result += separator;
    result += pieces[static_cast<std::size_t>(i)];
  }
  return result;
}

std::string upper(std::string_view s) {
  std::string result(s);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

std::int32_t toInt(std::string_view s) {
  s = withoutLeadingSpace(s);
  const bool negative = !s.empty() && s[0] == '-';
  if (!s.empty() && (s[0] == '-' || s[0] == '+')) s.remove_prefix(1);
  // strtol saturates at the limits of a 64-bit long; only then is the value narrowed.
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  const std::uint64_t limit = negative ? kMax + 1 : kMax;
  std::uint64_t magnitude = 0;
  for (const char c : s) {
    if (!isDigit(c)) break;
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (magnitude > (limit - digit) / 10) {
      magnitude = limit;
      break;
    }
    magnitude = magnitude * 10 + digit;
  }
  const std::uint64_t value = negative ? std::uint64_t{0} - magnitude : magnitude;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

double toDouble(std::string_view s) {
  s = withoutLeadingSpace(s);
  if (isPlainDecimal(s)) {
    double value = 0.0;
    const auto result = std::from_chars(s.data(), s.data() + s.size(), value);
    if (result.ec == std::errc{}) return value;
    if (result.ec == std::errc::invalid_argument) return 0.0;
  }
  // Rare spellings and values beyond the range of a double; strtod needs a terminated copy.
  return std::strtod(std::string(s).c_str(), nullptr);
}

bool checkFormat(std::string_view format) {
  format = trim(format);
  if (format.size() < 2 || format.front() != '%') return false;
  const char conversion = format.back();
  if (conversion != 's' && conversion != 'd' && conversion != 'f') return false;
  for (const char c : format.substr(1, format.size() - 2)) {
    if (c != '-' && c != '.' && !isDigit(c)) return false;
  }
  return true;
}

std::vector<char> decodeSequence(std::string_view s) {
  std::vector<char> codes;
  codes.reserve(s.size());
  for (const char c : s) {
    if (c == ' ') continue;
    const bool known = (c >= 'A' && c <= 'Y') || c == 'c' || c == 'p' || c == 'h' || c == '?';
    codes.push_back(known ? c : 'X');
  }
  return codes;
}

}  // namespace text
