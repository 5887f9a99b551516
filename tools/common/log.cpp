// Notes, warnings and errors of one conversion, each with the file and line it is about.
#include "common/log.h"

#include <algorithm>

namespace tools {

std::size_t Log::count(Severity severity) const {
  return static_cast<std::size_t>(
      std::count_if(messages_.begin(), messages_.end(),
                    [&](const Message& message) { return message.severity == severity; }));
}

std::string describe(const Message& message) {
  std::string text = message.file;
  if (message.line > 0) text += (text.empty() ? "line " : ":") + std::to_string(message.line);
  if (!text.empty()) text += ": ";
  if (message.severity == Severity::Warning) text += "warning: ";
  if (message.severity == Severity::Error) text += "error: ";
  return text + message.text;
}

}  // namespace tools
