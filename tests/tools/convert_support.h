// Converts small texts in memory and shows the outcome the way a test wants to read it.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include "convert/conversion.h"

namespace support {

struct Converted {
  bool ok = false;
  bool ambiguous = false;
  convert::Conversion conversion;
  tools::Log log;

  /// "5 G HA2 3.91" for every row, in order.
  std::vector<std::string> rows() const {
    std::vector<std::string> lines;
    for (const convert::TableRow& row : conversion.rows) {
      lines.push_back(std::to_string(row.resid) + " " + row.code + " " + row.atom + " " + row.text);
    }
    return lines;
  }
  /// The report, warnings included, as one text.
  std::string report() const {
    std::string text;
    for (const std::string& line : convert::reportLines(conversion)) text += line + "\n";
    for (const tools::Message& message : log.messages()) text += tools::describe(message) + "\n";
    return text;
  }
  /// The only error; an empty message when there is none or more than one.
  tools::Message error() const {
    tools::Message found;
    for (const tools::Message& message : log.messages()) {
      if (message.severity != tools::Severity::Error) continue;
      if (!found.text.empty()) return {};
      found = message;
    }
    return found;
  }
};

/// Settings with one member changed.
template <class Member>
convert::Settings with(Member convert::Settings::*member, const std::type_identity_t<Member>& value) {
  convert::Settings settings;
  settings.*member = value;
  return settings;
}

inline Converted convertString(const std::string& text, const convert::Settings& settings = {},
                               const std::string& file = "input.txt") {
  Converted result;
  result.log = tools::Log(file);
  result.ok = convert::convertText(file, text, settings, result.conversion, result.ambiguous, result.log);
  return result;
}

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace support
