// Whole files in and out: reading from a path or standard input, writing without ever leaving half a file.
#include "common/files.h"

#include "tables/OutputFile.h"
#include "tables/wholeFile.h"

namespace tools {

FileText readTextFile(const std::string& path) {
  FileBytes file = readWholeFile(path, true);
  if (file.bytes.starts_with("\xEF\xBB\xBF")) file.bytes.erase(0, 3);
  return {file.ok, std::move(file.bytes), std::move(file.error)};
}

std::string writeTextFile(const std::string& path, std::string_view text) {
  return writeWholeFile(path == "-" ? "/dev/stdout" : path, text).reason;
}

}  // namespace tools
