// Runs one program and waits for it.
#include "run/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>

namespace run {

namespace {

constexpr long kTickNanoseconds = 100'000'000;
constexpr int kCannotStart = 127;

[[noreturn]] void becomeProgram(const Command& command, std::vector<char*>& arguments) {
  const int log = open(command.logFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (log < 0 || dup2(log, STDOUT_FILENO) < 0 || dup2(log, STDERR_FILENO) < 0) _exit(kCannotStart);
  if (!command.folder.empty() && chdir(command.folder.c_str()) != 0) _exit(kCannotStart);
  for (const auto& [name, value] : command.environment) setenv(name.c_str(), value.c_str(), 1);
  execv(command.program.c_str(), arguments.data());
  _exit(kCannotStart);
}

}  // namespace

int execute(const Command& command, const std::function<void()>& tick) {
  std::vector<std::string> words = {command.program};
  words.insert(words.end(), command.arguments.begin(), command.arguments.end());
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child < 0) return kCannotStart;
  if (child == 0) becomeProgram(command, arguments);
  int state = 0;
  const timespec pause{0, kTickNanoseconds};
  while (waitpid(child, &state, WNOHANG) == 0) {
    nanosleep(&pause, nullptr);
    tick();
  }
  return WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
}

}  // namespace run
