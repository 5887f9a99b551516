// Runs the program in its own directory and captures everything a user sees.
#include "support/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
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

void redirect(int stream, const fs::path& file) {
  const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (fd < 0 || dup2(fd, stream) < 0) _exit(126);
  close(fd);
}

[[noreturn]] void execOrbeln(const fs::path& cwd, const fs::path& install, const TempDir& streams,
                             const std::vector<std::string>& arguments) {
  redirect(STDOUT_FILENO, streams / "out");
  redirect(STDERR_FILENO, streams / "err");
  if (chdir(cwd.c_str()) != 0) _exit(126);
  if (install.empty()) {
    unsetenv("ORBELN_DIR");
  } else {
    setenv("ORBELN_DIR", install.c_str(), 1);
  }
  std::vector<std::string> words{"orbeln"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execv(ORBELN_BINARY, argv.data());
  _exit(127);
}

}  // namespace

ProgramRun runOrbeln(const fs::path& cwd, const fs::path& install,
                     const std::vector<std::string>& arguments) {
  const TempDir streams;
  const pid_t child = fork();
  if (child == 0) execOrbeln(cwd, install, streams, arguments);
  int state = 0;
  waitpid(child, &state, 0);
  return {WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state), readFile(streams / "out"),
          readFile(streams / "err")};
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
