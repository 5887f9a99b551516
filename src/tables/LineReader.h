// Line-wise reading of text files of any size through one growing buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

/// Yields the lines of a file as views, without copying them. Lines may hold any bytes and be of any length;
/// a last line without newline counts. Memory is one block plus the longest line.
class LineReader {
 public:
  /// Readable bytes behind the end of every line. The first of them is a newline.
  static constexpr std::size_t kPadding = 32;

  /// Opens `path`; a directory or a file whose first block cannot be read counts as not open.
  explicit LineReader(const std::string& path);

  bool isOpen() const { return file != nullptr; }
  /// The next line without its newline, valid until the next call; false at the end of the file.
  bool next(std::string_view& line);
  std::int64_t lineNumber() const { return lineCount; }  ///< of the last line, from 1

 private:
  struct Close {
    void operator()(std::FILE* f) const { std::fclose(f); }
  };
  bool fill();

  std::unique_ptr<std::FILE, Close> file;
  std::unique_ptr<char[]> buffer;
  std::size_t capacity = 0, begin = 0, end = 0;
  std::int64_t lineCount = 0;
};
