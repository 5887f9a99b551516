// Whole files in and out: reading from a path or standard input, writing without ever leaving half a file.
#include "common/files.h"

#include "common/text_encoding.h"
#include "tables/OutputFile.h"
#include "tables/wholeFile.h"

namespace tools {

// More than any shift list or table of this program; an endless pipe must end as well.
constexpr std::size_t kLargestFile = std::size_t{256} << 20;

FileText readTextFile(const std::string& path) {
  FileText result;
  FileBytes file = readWholeFile(path, true, kLargestFile + 1);
  result.error = std::move(file.error);
  if (file.ok) result.error = binaryComplaint(file.bytes);
  if (result.error.empty() && file.bytes.size() > kLargestFile)
    result.error = "is larger than 256 MB, which no shift list is";
  result.ok = result.error.empty();
  if (!result.ok) return result;
  Decoded decoded = decodeText(std::move(file.bytes));
  result.text = std::move(decoded.text);
  result.encoding = std::move(decoded.changes);
  return result;
}

std::string writeTextFile(const std::string& path, std::string_view text) {
  return writeWholeFile(path == "-" ? "/dev/stdout" : path, text).reason;
}

}  // namespace tools
