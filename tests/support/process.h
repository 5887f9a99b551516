// Runs the program in its own directory and captures everything a user sees.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace support {

/// A fresh directory, removed with everything in it at the end of the scope. Its path holds no hyphen, since
/// option values cannot contain one.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  std::filesystem::path operator/(const std::string& name) const { return path / name; }

  std::filesystem::path path;
};

struct ProgramRun {
  int status = 0;  ///< exit status; minus the signal number when a signal ended the program
  std::string out, err;
};

/// Runs orbeln in directory `cwd` with ORBELN_DIR set to `install` (unset when empty).
ProgramRun runOrbeln(const std::filesystem::path& cwd, const std::filesystem::path& install,
                     const std::vector<std::string>& arguments);

/// Runs a line of the shell in directory `cwd`. Redirections in the line win over the capture.
ProgramRun runShell(const std::filesystem::path& cwd, const std::string& line);

std::string readFile(const std::filesystem::path& file);  ///< empty when it cannot be opened
void writeFile(const std::filesystem::path& file, const std::string& text);
std::vector<std::string> split(const std::string& text);  ///< the words of `text`
inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace support
