// What the older C++ library of the WebAssembly compiler (Debian's Emscripten 3.1.6) lacks of C++20, under
// the standard names, so that the programs need not know. Force-included in the WebAssembly build only; to be
// emptied piece by piece as that library grows: what it has by itself is left to it.
#pragma once

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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
#endif

#ifndef __cpp_lib_ranges
namespace views {

/// iota(first, last) | transform(function), as the loops over residues use them.
template <class Integer, class Function>
class CountedTransform {
 public:
  class Iterator {
   public:
    Iterator(Integer at, const Function& made) : value(at), function(&made) {}
    auto operator*() const { return (*function)(value); }
    Iterator& operator++() {
      ++value;
      return *this;
    }
    bool operator==(const Iterator& other) const { return value == other.value; }

   private:
    Integer value;
    const Function* function;
  };

  CountedTransform(Integer low, Integer high, Function made) : first(low), last(high), function(made) {}
  Iterator begin() const { return {first, function}; }
  Iterator end() const { return {last, function}; }

 private:
  Integer first, last;
  Function function;
};

template <class Integer>
struct Counted {
  Integer first, last;
};

template <class Function>
struct Transform {
  Function function;
};

template <class Integer>
Counted<Integer> iota(Integer first, Integer last) {
  return {first, last};
}

template <class Function>
Transform<Function> transform(Function function) {
  return {function};
}

template <class Integer, class Function>
CountedTransform<Integer, Function> operator|(Counted<Integer> counted, Transform<Function> transform) {
  return {counted.first, counted.last, transform.function};
}

}  // namespace views
#endif

_LIBCPP_END_NAMESPACE_STD
