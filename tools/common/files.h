// Whole files in and out: reading from a path or standard input, writing without ever leaving half a file.
#pragma once

#include <string>
#include <string_view>

namespace tools {

struct FileText {
  bool ok = false;
  std::string text;      ///< UTF-8 with plain line ends, whatever the file had (see decodeText())
  std::string encoding;  ///< what was unusual about the file's encoding, in words; empty when nothing was
  std::string error;     ///< why it could not be read, in words
};

/// The text of `path`, of standard input for "-". Binary files and more than 256 MB are refused.
FileText readTextFile(const std::string& path);

/// Writes `text` to `path` as OutputFile does ("-" is standard output). Empty text, or what went wrong.
std::string writeTextFile(const std::string& path, std::string_view text);

}  // namespace tools
