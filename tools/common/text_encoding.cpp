// Texts as instruments, spreadsheets and old computers write them, brought to UTF-8 with plain line ends.
#include "common/text_encoding.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tools {

namespace {

constexpr std::size_t kSample = 4096;  // bytes that tell the encoding
constexpr std::uint32_t kReplacement = 0xFFFD;

enum class Encoding { Bytes, Utf16Little, Utf16Big };

/// Without a mark, text in Western letters shows as zero bytes in every second place and in no other.
Encoding unmarkedEncoding(std::string_view bytes) {
  const std::size_t pairs = std::min(bytes.size(), kSample) / 2;
  std::size_t zeros[2] = {0, 0};
  for (std::size_t i = 0; i < 2 * pairs; ++i) zeros[i % 2] += bytes[i] == '\0' ? 1 : 0;
  if (pairs < 2) return Encoding::Bytes;
  if (zeros[0] == 0 && zeros[1] * 10 > pairs * 9) return Encoding::Utf16Little;
  if (zeros[1] == 0 && zeros[0] * 10 > pairs * 9) return Encoding::Utf16Big;
  return Encoding::Bytes;
}

Encoding encodingOf(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE")) return Encoding::Utf16Little;
  if (bytes.starts_with("\xFE\xFF")) return Encoding::Utf16Big;
  return unmarkedEncoding(bytes);
}

void appendUtf8(std::string& text, std::uint32_t code) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | (code >> 6));
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | (code >> 12));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | (code >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

std::string fromUtf16(std::string_view bytes, bool little) {
  const auto unit = [&](std::size_t at) {
    const auto first = static_cast<unsigned char>(bytes[at]),
               second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<std::uint32_t>(little ? first | second << 8 : first << 8 | second);
  };
  std::string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    std::uint32_t code = unit(i);
    if (i == 0 && code == 0xFEFF) continue;
    if (code >= 0xD800 && code < 0xDC00 && i + 3 < bytes.size()) {
      const std::uint32_t low = unit(i + 2);
      const bool pair = low >= 0xDC00 && low < 0xE000;
      code = pair ? 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00) : kReplacement;
      if (pair) i += 2;
    } else if (code >= 0xD800 && code < 0xE000) {
      code = kReplacement;
    }
    appendUtf8(text, code);
  }
  return text;
}

/// Returns whether a CR stood alone as the end of a line.
bool plainLineEnds(std::string& text) {
  std::size_t out = text.find('\r');
  if (out == std::string::npos) return false;
  bool alone = false;
  for (std::size_t i = out; i < text.size(); ++i) {
    if (text[i] != '\r') {
      text[out++] = text[i];
      continue;
    }
    // Files that were carried as text twice end their lines with CR CR LF.
    std::size_t next = i;
    while (next < text.size() && text[next] == '\r') ++next;
    if (next < text.size() && text[next] == '\n') {
      i = next;
    } else {
      alone = true;
    }
    text[out++] = '\n';
  }
  text.resize(out);
  return alone;
}

}  // namespace

std::string binaryComplaint(std::string_view beginning) {
  using namespace std::string_view_literals;
  static constexpr std::pair<std::string_view, const char*> kKinds[] = {
      {"\x1F\x8B"sv, "the file is compressed; run gunzip on it first"},
      {"\xFD"
       "7zXZ\0"sv,
       "the file is compressed; run unxz on it first"},
      {"BZh9"sv, "the file is compressed; run bunzip2 on it first"},
      {"PK\x03\x04"sv,
       "the file is a spreadsheet (.xlsx) or a zip archive; save it as CSV, or unpack it first"},
      {"\xD0\xCF\x11\xE0"sv,
       "the file is a spreadsheet (.xls) or another office document; save it as CSV first"},
      {"%PDF-"sv, "the file is a PDF document; a shift list is plain text"},
      {"{\\rtf"sv, "the file is an RTF document; save it as plain text first"}};
  for (const auto& [mark, complaint] : kKinds) {
    if (beginning.starts_with(mark)) return complaint;
  }
  const bool zeros = beginning.find('\0') != std::string_view::npos;
  return zeros && encodingOf(beginning) == Encoding::Bytes ? "this is no text file" : "";
}

Decoded decodeText(std::string bytes) {
  Decoded decoded;
  const Encoding encoding = encodingOf(bytes);
  if (encoding != Encoding::Bytes) {
    decoded.text = fromUtf16(bytes, encoding == Encoding::Utf16Little);
    decoded.changes = "UTF-16 text";
  } else {
    decoded.text = std::move(bytes);
    if (decoded.text.starts_with("\xEF\xBB\xBF")) decoded.text.erase(0, 3);
  }
  if (plainLineEnds(decoded.text)) {
    decoded.changes += decoded.changes.empty() ? "lines end with CR" : ", lines end with CR";
  }
  return decoded;
}

}  // namespace tools
