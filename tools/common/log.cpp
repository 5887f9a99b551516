// Notes, warnings and errors of one conversion, each with the file and line it is about.
#include "common/log.h"

#include <algorithm>

namespace tools {

std::size_t Log::count(Severity severity) const {
  return static_cast<std::size_t>(
      std::count_if(messages_.begin(), messages_.end(),
                    [&](const Message& message) { return message.severity == severity; }));
}

namespace {

/// Bytes of the well-formed UTF-8 character that `text` begins with; 0 for anything else and for controls.
std::size_t printableLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
  const unsigned first = byte(0);
  if (first < 0x80) return first >= ' ' && first != 0x7F ? 1 : 0;
  const std::size_t length = first >= 0xC2 && first < 0xE0   ? 2
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0u) != 0x80u) return 0;
  }
  const bool control = first == 0xC2 && byte(1) < 0xA0;
  const bool overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
  // Marks that turn the direction of writing can make a line read as something else.
  const bool turning = first == 0xE2 && ((byte(1) == 0x80 && byte(2) >= 0xAA && byte(2) <= 0xAE) ||
                                         (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9));
  return control || overlong || turning ? 0 : length;
}

}  // namespace

std::string printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = printableLength(text);
    if (length > 0) {
      shown += text.substr(0, length);
      text.remove_prefix(length);
      continue;
    }
    const auto byte = static_cast<unsigned char>(text[0]);
    shown += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    text.remove_prefix(1);
  }
  return shown;
}

std::string shortened(std::string_view text, std::size_t most) {
  const bool cut = text.size() > most;
  text = text.substr(0, most);
  // Not inside a UTF-8 character: back to its first byte.
  while (cut && !text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0u) == 0x80u)
    text.remove_suffix(1);
  if (cut && !text.empty() && static_cast<unsigned char>(text.back()) >= 0xC0u) text.remove_suffix(1);
  return printable(text) + (cut ? "..." : "");
}

std::string describe(const Message& message) {
  std::string text = printable(message.file);
  if (message.line > 0) text += (text.empty() ? "line " : ":") + std::to_string(message.line);
  if (!text.empty()) text += ": ";
  if (message.severity == Severity::Warning) text += "warning: ";
  if (message.severity == Severity::Error) text += "error: ";
  text += printable(message.text);
  for (const std::string& line : message.table) text += "\n  " + printable(line);
  return text;
}

}  // namespace tools
