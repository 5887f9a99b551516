// Short decimals against the library's conversions, bit for bit.
#include "tables/short_decimal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

namespace {

/// Checks one number inside a longer text; says whether it was taken.
bool checkAgainstLibrary(const std::string& number, char follower) {
  const std::string text = number + follower + "123 45.6 789 10111213";
  const ShortDecimal decimal = scanShortDecimal(text.c_str());
  if (decimal.length == 0) return false;
  EXPECT_EQ(decimal.length, number.size()) << text;
  EXPECT_EQ(std::bit_cast<std::uint64_t>(decimal.toDouble()),
            std::bit_cast<std::uint64_t>(std::strtod(number.c_str(), nullptr)))
      << text;
  if (decimal.isExactInFloat()) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(decimal.toFloat()),
              std::bit_cast<std::uint32_t>(std::strtof(number.c_str(), nullptr)))
        << text;
  }
  return true;
}

TEST(ShortDecimal, EqualsTheLibraryOnPlainNumbers) {
  std::mt19937 random(11);
  for (int trial = 0; trial < 20000; ++trial) {
    std::string digits;
    const std::size_t count = 1 + random() % 15;
    for (std::size_t i = 0; i < count; ++i) digits += "0123456789999000"[random() % 16];
    if (random() % 4 != 0) digits.insert(random() % (count + 1), ".");
    if (random() % 2 == 0) digits.insert(0, "-");
    const std::size_t point = digits.find('.');
    const bool form = digits.size() <= 15 && (digits.size() < 8 || point == std::string::npos || point < 8);
    EXPECT_EQ(checkAgainstLibrary(digits, " \n\t\r"[random() % 4]), form) << digits;
  }
}

TEST(ShortDecimal, LeavesEverythingElse) {
  const std::string texts =
      ";-;.;-.;+1;--1;1-;1e5;1.2.3;0x10;nan;-inf;1,5;12345678.5;1234567890123456;0.00000000000001;1.2345678x;"
      "\xb1"
      "5;5\xb0;1.\xae;";
  std::istringstream in(texts);
  for (std::string text; std::getline(in, text, ';');) {
    EXPECT_FALSE(checkAgainstLibrary(text, ' ')) << text;
  }
  EXPECT_EQ(scanShortDecimal("12x45 7 8 9 0 1 2 3 4").length, 0U);
}

}  // namespace
