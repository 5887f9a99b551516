// White space, splitting, number parsing and format checks.
#include "tables/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

namespace {

using Strings = std::vector<std::string>;

TEST(Text, SimplifiesWhiteSpace) {
  const struct {
    const char* in;
    const char* out;
  } cases[] = {{"", ""},     {" \t\r\n\v\f", ""},         {"a", "a"}, {"  a  b\t\tc ", "a b c"},
               {"a\r", "a"}, {"\x1c\x80 x", "\x1c\x80 x"}};
  for (const auto& c : cases) EXPECT_EQ(text::simplifyWhiteSpace(c.in), c.out);
}

TEST(Text, SplitsAndDropsEmptyPieces) {
  const struct {
    const char* separator;
    const char* in;
    Strings out;
  } cases[] = {{"-", "", {}},
               {"-", "abc", {"abc"}},
               {"-", "---", {}},
               {"-", "-a--b-", {"a", "b"}},
               {"ab", "xababyabb", {"x", "y", "b"}},
               {"aa", "aaa", {"a"}},
               {"", "a b", {"a b"}},
               {"", "", {}}};
  for (const auto& c : cases)
    EXPECT_EQ(text::split(c.separator, c.in), c.out) << c.separator << " in " << c.in;
  EXPECT_EQ(text::split('%', " %5d%%6s"), (Strings{" ", "5d", "6s"}));
  EXPECT_EQ(text::split_WhiteSpace("\t a  b\r"), (std::vector<std::string_view>{"a", "b"}));
  std::vector<std::string_view> tokens{"old"};
  text::split_WhiteSpace("a b c d", tokens, 2);
  EXPECT_EQ(tokens, (std::vector<std::string_view>{"a", "b"}));
}

TEST(Text, SectionJoinsNumberedPieces) {
  const struct {
    int from, to;
    const char* out;
  } cases[] = {{0, 0, "a"}, {2, 2, "c"}, {3, 3, ""}, {1, 9, "b,c"}, {2, 1, ""}, {-1, 0, "a"}};
  for (const auto& c : cases) EXPECT_EQ(text::section(",a,,b,c", ',', c.from, c.to), c.out) << c.from;
}

TEST(Text, ReadsIntegersAsStrtolDoes) {
  const std::string numbers =
      " ;-;+;+-3;12;-5;+7;  "
      "\t42abc;0x10;010;1e3;2147483647;2147483648;-2147483649;4294967301;9223372036854775807;"
      "9223372036854775808;-9223372036854775808;-9223372036854775809;99999999999999999999999;3.9;\x80";
  for (const std::string& s : text::split(';', numbers)) {
    EXPECT_EQ(text::toInt(s), static_cast<std::int32_t>(std::strtol(s.c_str(), nullptr, 10))) << s;
  }
  EXPECT_EQ(text::toInt(""), 0);
}

void expectSameBits(const std::string& s) {
  const double expected = std::strtod(s.c_str(), nullptr), got = text::toDouble(s);
  EXPECT_EQ(std::memcmp(&expected, &got, sizeof got), 0) << s << " gives " << got;
}

TEST(Text, ReadsOddNumbersAsStrtodDoes) {
  const std::string numbers =
      " ;-;+;.;-.;+.5;-.5;5.;-0;1e;1e+;1e5;1E-5x;1.2.3;--1;- "
      "1;0x10;-0X1.8p3;0x;inf;-Infinity;nan;nan(1);infx;1e400;"
      "-1e400;1e-400;5e-324;2e-324;1.7976931348623159e308;2.2250738585072011e-308;\f\v8.25;9007199254740993;"
      "x1;1,5;"
      "0.1000000000000000055511151231257827021181583404541015625000000000000000000000001";
  for (const std::string& s : text::split(';', numbers)) expectSameBits(s);
  expectSameBits("");
}

TEST(Text, ReadsRandomNumbersAsStrtodDoes) {
  std::mt19937_64 random(20240607);
  char buffer[400];
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    const char* const formats[] = {"%.17g", "%.6g", "%.3e", "%.25g"};
    std::snprintf(buffer, sizeof buffer, formats[i % 4], value);
    expectSameBits(buffer);
    std::snprintf(buffer, sizeof buffer, "%9.6f",
                  static_cast<double>(static_cast<std::int64_t>(bits)) / 1e17);
    expectSameBits(buffer);
  }
}

TEST(Text, ChecksFieldFormats) {
  for (const char* good : {"%s", "%d", "%f", " %5d \t", "%-8.3f", "%09d", "%5-3.2.1d", "%.f"}) {
    EXPECT_TRUE(text::checkFormat(good)) << good;
  }
  for (const char* bad :
       {"", " ", "%", "d", "%5", "%i", "%lf", "%+d", "% d", "%5g", "%d x", "%dd", "%%d", "%d%d", "x%d"}) {
    EXPECT_FALSE(text::checkFormat(bad)) << bad;
  }
}

TEST(Text, DecodesSequenceLetters) {
  const std::vector<char> codes = text::decodeSequence(" AY cph? Zax1\xff\t@");
  EXPECT_EQ(std::string(codes.begin(), codes.end()), "AYcph?XXXXXXX");
}

}  // namespace
