// Encodings and line ends of every system become UTF-8 with LF; binary files are named for what they are.
#include "common/text_encoding.h"

#include <gtest/gtest.h>

namespace {

std::string utf16(std::u16string_view text, bool little) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
    bytes += little ? low : high;
    bytes += little ? high : low;
  }
  return bytes;
}

TEST(TextEncoding, EverySystemsTextBecomesTheSame) {
  const std::u16string wide = u"Cα 54.1\r\n\U00010348 x\n";
  const std::string plain = "C\xCE\xB1 54.1\n\xF0\x90\x8D\x88 x\n";
  const struct {
    const char* name;
    std::string bytes;
    std::string text;
    const char* changes;
  } cases[] = {
      {"plain", "a 1\nb 2", "a 1\nb 2", ""},
      {"DOS", "a\r\n\r\nb\r\n", "a\n\nb\n", ""},
      {"DOS twice", "a\r\r\nb\r\r\n", "a\nb\n", ""},
      {"old Mac", "a\r\rb\r", "a\n\nb\n", "lines end with CR"},
      {"mixed", "a\rb\r\nc\nd\r", "a\nb\nc\nd\n", "lines end with CR"},
      {"UTF-8 mark",
       "\xEF\xBB\xBF"
       "a\n",
       "a\n", ""},
      {"UTF-16 little", utf16(u"\uFEFF" + wide, true), plain, "UTF-16 text"},
      {"UTF-16 big", utf16(u"\uFEFF" + wide, false), plain, "UTF-16 text"},
      {"UTF-16 unmarked", utf16(u"1 MET CA 54.1\r2", true), "1 MET CA 54.1\n2",
       "UTF-16 text, lines end with CR"},
      {"half a surrogate", utf16(u"\uFEFF", true) + std::string("\x00\xD8", 2) + utf16(u"a", true) + "x",
       "\xEF\xBF\xBD"
       "a",
       "UTF-16 text"}};
  for (const auto& c : cases) {
    const tools::Decoded decoded = tools::decodeText(c.bytes);
    EXPECT_EQ(decoded.text, c.text) << c.name;
    EXPECT_EQ(decoded.changes, c.changes) << c.name;
    EXPECT_EQ(tools::binaryComplaint(c.bytes), "") << c.name;
  }
}

TEST(TextEncoding, BinaryFilesAreNamed) {
  using namespace std::string_literals;
  const std::pair<std::string, const char*> cases[] = {{"\x1F\x8B\x08"s, "gunzip"},
                                                       {"PK\x03\x04\x14\0"s, "CSV"},
                                                       {"\0\0\0\0abc"s, "no text"},
                                                       {"%PDF-1.4"s, "PDF"}};
  for (const auto& [bytes, complaint] : cases) {
    EXPECT_NE(tools::binaryComplaint(bytes).find(complaint), std::string::npos) << complaint;
  }
}

}  // namespace
