// Text utilities shared by every table reader and writer: white space, splitting, number parsing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace text {

/// True for blank and the control characters 9 to 13.
constexpr bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Leading and trailing white space removed, inner runs replaced by one blank.
std::string simplifyWhiteSpace(std::string_view s);

/// `s` without leading and trailing white space.
std::string_view trim(std::string_view s);

/// The runs of non-white-space characters of `s`, in order (views into `s`).
std::vector<std::string_view> split_WhiteSpace(std::string_view s);
/// The same into `tokens`, whose memory is reused, ending after `limit` of them.
void split_WhiteSpace(std::string_view s, std::vector<std::string_view>& tokens, std::size_t limit);

/// The non-empty pieces of `s` between occurrences of `separator`, scanned from the left.
std::vector<std::string> split(std::string_view separator, std::string_view s);
std::vector<std::string> split(char separator, std::string_view s);

/// Pieces `from` to `to` (from 0) of `s` cut at `separator`, joined by it again; empty when there is none.
std::string section(std::string_view s, char separator, int from, int to);

/// ASCII upper case.
std::string upper(std::string_view s);

/// `strtol(base 10)` narrowed to 32 bits: leading white space skipped, reading stops at the first
/// character that is no part of the number, 0 without a number.
std::int32_t toInt(std::string_view s);

/// `strtod`: as above for a floating-point number, correctly rounded, independent of the locale.
double toDouble(std::string_view s);

/// One table column: `%`, any of `-.0-9`, one of `s d f`, surrounded by optional white space.
bool checkFormat(std::string_view format);

/// The characters of a residue sequence as stored: A to Y, c, p, h and ? stay, blanks are skipped,
/// anything else becomes X.
std::vector<char> decodeSequence(std::string_view s);

}  // namespace text
