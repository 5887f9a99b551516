// Files by identity: two spellings, a symbolic link or a hard link may all be one file.
#include "common/same_file.h"

#include <sys/stat.h>

namespace tools {

bool sameFile(const std::string& a, const std::string& b) {
  struct stat first {
  }, second{};
  if (a.empty() || b.empty() || a == "-" || b == "-") return false;
  if (stat(a.c_str(), &first) != 0 || stat(b.c_str(), &second) != 0) return false;
  // A device or a terminal may well be read and written.
  return S_ISREG(first.st_mode) && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::string overwrittenInput(const std::string& output, const std::vector<std::string>& inputs) {
  for (const std::string& input : inputs) {
    if (sameFile(output, input)) return input;
  }
  return "";
}

}  // namespace tools
