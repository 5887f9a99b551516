// What the older C++ library of the WebAssembly compiler (Debian's Emscripten 3.1.6) lacks of C++20, under
// the standard names, so that the programs need not know. Force-included in the WebAssembly build only; to be
// emptied piece by piece as that library grows: what it has by itself is left to it.
#pragma once

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <ranges>
#include <string>
#include <type_traits>
#include <version>

_LIBCPP_BEGIN_NAMESPACE_STD

#ifndef __cpp_lib_bit_cast
template <class To, class From>
[[nodiscard]] constexpr To bit_cast(const From& from) noexcept {
  static_assert(sizeof(To) == sizeof(From));
  return __builtin_bit_cast(To, from);
}
#endif

#ifndef __cpp_lib_smart_ptr_for_overwrite
template <class Array>
requires is_unbounded_array_v<Array> unique_ptr<Array> make_unique_for_overwrite(size_t n) {
  return unique_ptr<Array>(new remove_extent_t<Array>[n]);
}
#endif

#if !defined(__cpp_lib_to_chars)
namespace orbeln_compat {

/// The end of the decimal number at `p`, as `from_chars` reads it with chars_format::general: no blanks, no
/// '+' in front, no hexadecimal. `p` itself where there is none.
inline const char* endOfNumber(const char* p, const char* end) {
  const char* const start = p;
  const auto digits = [&] {
    const char* const first = p;
    while (p != end && *p >= '0' && *p <= '9') ++p;
    return p - first;
  };
  if (p != end && *p == '-') ++p;
  for (const char* word : {"infinity", "inf", "nan"}) {
    const size_t length = strlen(word);
    if (static_cast<size_t>(end - p) >= length && strncasecmp(p, word, length) == 0) return p + length;
  }
  ptrdiff_t found = digits();
  if (p != end && *p == '.') {
    ++p;
    found += digits();
  }
  if (found == 0) return start;
  const char* const mantissa = p;
  if (p == end || (*p != 'e' && *p != 'E')) return p;
  ++p;
  if (p != end && (*p == '-' || *p == '+')) ++p;
  return digits() > 0 ? p : mantissa;
}

inline float parse(const char* text, float) {
  return strtof(text, nullptr);
}

inline double parse(const char* text, double) {
  return strtod(text, nullptr);
}

}  // namespace orbeln_compat

template <class Number>
requires is_same_v<Number, float> || is_same_v<Number, double> from_chars_result from_chars(const char* first,
                                                                                            const char* last,
                                                                                            Number& value) {
  const char* const end = orbeln_compat::endOfNumber(first, last);
  if (end == first) return {first, errc::invalid_argument};
  const string copy(first, end);
  errno = 0;
  const Number read = orbeln_compat::parse(copy.c_str(), Number{});  // rounds correctly, knows no locale
  if (errno == ERANGE) return {end, errc::result_out_of_range};
  value = read;
  return {end, errc{}};
}

/// The two formats that the programs write, with their precision: printf writes the same characters.
inline to_chars_result to_chars(char* first, char* last, double value, chars_format format, int precision) {
  const auto space = static_cast<size_t>(last - first);
  char text[512];
  const int length =
      snprintf(text, sizeof text, format == chars_format::fixed ? "%.*f" : "%.*g", precision, value);
  if (length < 0 || static_cast<size_t>(length) > space || static_cast<size_t>(length) >= sizeof text)
    return {last, errc::value_too_large};
  memcpy(first, text, static_cast<size_t>(length));
  return {first + length, errc{}};
}
#endif

#ifndef __cpp_lib_ranges
namespace ranges {

template <class Range, class Value, class Projection = identity>
auto find(Range&& range, const Value& value, Projection projection = {}) {
  return find_if(begin(range), end(range),
                 [&](const auto& item) { return invoke(projection, item) == value; });
}

template <class Range, class Predicate>
bool all_of(Range&& range, Predicate predicate) {
  return std::all_of(begin(range), end(range), predicate);
}

}  // namespace ranges
#endif

_LIBCPP_END_NAMESPACE_STD
