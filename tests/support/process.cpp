// Runs the program in its own directory and captures everything a user sees.
#include "support/process.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

namespace support {

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::string pattern = (fs::temp_directory_path() / "orbeln_XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  path = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

namespace {

std::string quoted(const std::string& word) {
  return "'" + std::regex_replace(word, std::regex("'"), "'\\''") + "'";
}

}  // namespace

ProgramRun runShell(const fs::path& cwd, const std::string& line) {
  const TempDir streams;
  const std::string command = "exec >" + quoted(streams / "out") + " 2>" + quoted(streams / "err") + "; cd " +
                              quoted(cwd) + " || exit 126; " + line;
  const int state = std::system(command.c_str());
  return {WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state), readFile(streams / "out"),
          readFile(streams / "err")};
}

ProgramRun runOrbeln(const fs::path& cwd, const fs::path& install,
                     const std::vector<std::string>& arguments) {
  std::string line = install.empty() ? "unset ORBELN_DIR;" : "export ORBELN_DIR=" + quoted(install) + ';';
  line += " exec " + quoted(ORBELN_BINARY);
  for (const std::string& argument : arguments) line += ' ' + quoted(argument);
  return runShell(cwd, line);
}

std::string readFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void writeFile(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

std::vector<std::string> split(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

}  // namespace support
