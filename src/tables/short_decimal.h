// Conversion of the short plain decimals that fill numeric tables, eight characters at a time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Bytes that may be read, whatever they hold, from the start of every text given to `scanShortDecimal`.
inline constexpr std::size_t kShortDecimalPadding = 16;

/// An optional '-', then digits with at most one point among them, up to 15 characters in all; behind the
/// eighth there is no point. The value is digits / 10^fraction; where both are exact in a precision, one
/// division gives the correctly rounded number (Clinger, PLDI 1990).
struct ShortDecimal {
  std::uint64_t digits = 0;    ///< below 10^15, exact in double precision
  std::uint32_t fraction = 0;  ///< digits behind the point
  std::uint32_t length = 0;    ///< characters of the whole number; 0: not of this form
  bool negative = false;
  bool point = false;

  /// As strtod rounds.
  double toDouble() const {
    static constexpr std::array<double, 16> kPower = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const double magnitude = static_cast<double>(static_cast<std::int64_t>(digits)) / kPower[fraction];
    // The sign without a branch: it follows no pattern.
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) ^ std::uint64_t{negative} << 63);
  }
  bool isExactInFloat() const { return digits < (1U << 24) && fraction <= 10; }
  /// As strtof rounds; only when `isExactInFloat`.
  float toFloat() const {
    static constexpr std::array<float, 11> kPower = {1e0F, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F,
                                                     1e6F, 1e7F, 1e8F, 1e9F, 1e10F};
    const float magnitude = static_cast<float>(static_cast<std::int32_t>(digits)) / kPower[fraction];
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(magnitude) ^ std::uint32_t{negative} << 31);
  }
};

namespace short_decimal {

inline constexpr std::uint64_t kEveryByte = 0x0101010101010101U;
inline constexpr std::uint64_t kHighBits = 0x80 * kEveryByte;

/// Eight characters, the first in the lowest byte.
inline std::uint64_t load(const char* text) {
  std::uint64_t word = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&word, text, sizeof word);
  } else {
    for (int i = 7; i >= 0; --i) word = word << 8 | static_cast<unsigned char>(text[i]);
  }
  return word;
}

/// The lowest bit set marks the first byte below '!' (a blank or a control character); 0 without one.
inline std::uint64_t firstBlank(std::uint64_t word) {
  return (word - ('!' * kEveryByte)) & ~word & kHighBits;
}

/// Characters before the one marked in `mark`.
inline unsigned charactersBefore(std::uint64_t mark) {
  return static_cast<unsigned>(std::countr_zero(mark)) >> 3;
}

/// Digit values 0 to 9 in every byte?
inline bool allDigits(std::uint64_t values) {
  return (((values + 0x76 * kEveryByte) | values) & kHighBits) == 0;
}

/// The number that eight digit values spell, the lowest byte first.
inline std::uint64_t joinDigits(std::uint64_t values) {
  constexpr std::uint64_t kPairs = 0x000000FF000000FFU;
  values = values * 10 + (values >> 8);
  const std::uint64_t high = (values & kPairs) * (100U + (std::uint64_t{1000000} << 32));
  const std::uint64_t low = ((values >> 16) & kPairs) * (1U + (std::uint64_t{10000} << 32));
  return (high + low) >> 32;
}

/// Takes the first point out of eight values: the ones before it move up by one byte. Notes where it was.
inline std::uint64_t withoutPoint(std::uint64_t values, ShortDecimal& number) {
  const std::uint64_t difference = values ^ (('.' ^ '0') * kEveryByte);
  const std::uint64_t mark = (difference - kEveryByte) & ~difference & kHighBits;  // exact at its lowest bit
  const std::uint64_t before = ((mark & (0 - mark)) >> 7) - 1;
  number.point = mark != 0;
  number.fraction = number.point ? 7 - charactersBefore(mark) : 0;
  const std::uint64_t moved = (values & before) << 8 | (values & ~(before << 8 | 0xFF));
  return number.point ? moved : values;
}

/// Numbers of 8 to 15 characters.
inline ShortDecimal scanLonger(const char* text) {
  static constexpr std::array<std::uint32_t, 8> kPower = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000};
  ShortDecimal number;
  const std::uint64_t second = load(text + 8);
  const std::uint64_t blank = firstBlank(second);
  if (blank == 0) return number;
  const unsigned rest = charactersBefore(blank);
  number.negative = *text == '-';
  std::uint64_t values = load(text) ^ ('0' * kEveryByte);
  if (number.negative) values &= ~std::uint64_t{0xFF};
  values = withoutPoint(values, number);
  // Two shifts, as there may be nothing left.
  const std::uint64_t restValues = (second ^ ('0' * kEveryByte)) << (8 * (7 - rest)) << 8;
  if (!allDigits(values) || !allDigits(restValues)) return number;
  number.digits = joinDigits(values) * kPower[rest] + joinDigits(restValues);
  number.fraction = number.point ? number.fraction + rest : 0;
  number.length = 8 + rest;
  return number;
}

}  // namespace short_decimal

/// Reads the number at `text` up to the next blank or control character. Up to seven characters take no
/// branch on what they are, and where the number ends is found before all else: the caller's next step waits
/// for it.
inline ShortDecimal scanShortDecimal(const char* text) {
  using namespace short_decimal;
  const std::uint64_t word = load(text);
  const std::uint64_t blank = firstBlank(word);
  if (blank == 0) {
    // Copied member by member, which leaves the compiler free to keep the usual result in registers.
    const ShortDecimal longer = scanLonger(text);
    return {longer.digits, longer.fraction, longer.length, longer.negative, longer.point};
  }
  ShortDecimal number;
  const unsigned length = charactersBefore(blank);
  if (length == 0) return number;
  number.negative = (word & 0xFF) == '-';
  // Zeros in front fill the eight bytes, one more takes the place of the sign.
  const unsigned free = 8 * (8 - length);
  std::uint64_t values = (word ^ ('0' * kEveryByte)) << free;
  values &= ~((0 - std::uint64_t{number.negative}) & std::uint64_t{0xFF} << free);
  values = withoutPoint(values, number);
  const unsigned marks = static_cast<unsigned>(number.negative) + static_cast<unsigned>(number.point);
  if (!allDigits(values) || length == marks) return number;
  number.digits = joinDigits(values);
  number.length = length;
  return number;
}
