// Building blocks of the output tables: text is collected with printf formats and written in one go.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace output_text {

/// Appends the formatted text to `text`.
[[gnu::format(printf, 2, 3)]] void append(std::string& text, const char* format, ...);

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// The file opened for writing, old content dropped; null when that fails.
File open(const std::string& path);
/// Writes the whole text.
void write(const File& file, const std::string& text);

/// The residue code when it is a single character, else "?".
inline std::string singleCode(const std::string& code) {
  return code.size() == 1 ? code : "?";
}

}  // namespace output_text
