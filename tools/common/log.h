// Notes, warnings and errors of one conversion, each with the file and line it is about.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tools {

enum class Severity { Note, Warning, Error };

struct Message {
  Severity severity = Severity::Note;
  std::string file;
  int line = 0;  ///< from 1; 0 when the message is about the whole file
  std::string text;
  std::vector<std::string> table = {};  ///< lines printed below the message
};

/// Collects messages in order. A step that fails leaves an error here and returns false.
class Log {
 public:
  explicit Log(std::string file = {}) : file_(std::move(file)) {}

  /// Messages from here on are about `file`; returns the file they were about before.
  std::string enter(std::string file) { return std::exchange(file_, std::move(file)); }
  const std::string& file() const { return file_; }

  void note(int line, std::string text) { add(Severity::Note, line, std::move(text)); }
  void warn(int line, std::string text) { add(Severity::Warning, line, std::move(text)); }
  /// Always false, so that a step can end with `return log.error(...)`.
  bool error(int line, std::string text) {
    add(Severity::Error, line, std::move(text));
    return false;
  }
  /// The same with lines below the message, for more than one line can hold.
  bool error(int line, std::string text, std::vector<std::string> table) {
    messages_.push_back({Severity::Error, file_, line, std::move(text), std::move(table)});
    return false;
  }

  const std::vector<Message>& messages() const { return messages_; }
  std::size_t count(Severity severity) const;
  bool failed() const { return count(Severity::Error) > 0; }

 private:
  void add(Severity severity, int line, std::string text) {
    messages_.push_back({severity, file_, line, std::move(text), {}});
  }

  std::string file_;
  std::vector<Message> messages_;
};

/// `text` as it may go to a terminal: control characters (line ends and tabs included) and bytes that are no
/// UTF-8 become \\xNN, so that a hostile or broken file cannot move the cursor or colour the screen.
std::string printable(std::string_view text);

/// printable() cut to about `most` characters, with "..." where something is left out.
std::string shortened(std::string_view text, std::size_t most = 60);

/// "file:line: warning: text" (no severity word for a note), printable.
std::string describe(const Message& message);

}  // namespace tools
