// Runs one program and waits for it.
#include "run/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <cstdlib>

#include "run/interrupt.h"

namespace run {

namespace {

constexpr long kPauseNanoseconds = 10'000'000;
constexpr int kPausesPerTick = 10;
constexpr int kPausesBeforeKill = 300;  // three seconds to clean up
constexpr int kCannotStart = 127;

/// A child that outlives its parent would go on writing into a folder that the next run takes.
void dieWithParent(pid_t parent) {
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
  if (getppid() != parent) _exit(kCannotStart);
}

[[noreturn]] void becomeProgram(const Command& command, std::vector<char*>& arguments, pid_t parent) {
  restoreSignals();
  dieWithParent(parent);
  const char* input = command.inputFile.empty() ? "/dev/null" : command.inputFile.c_str();
  const int in = open(input, O_RDONLY | O_CLOEXEC);
  const int log = open(command.logFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (in < 0 || dup2(in, STDIN_FILENO) < 0) _exit(kCannotStart);
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
  const pid_t parent = getpid(), child = fork();
  if (child < 0) return kCannotStart;
  if (child == 0) becomeProgram(command, arguments, parent);
  int state = 0, pauses = 0, pausesSinceSignal = 0;
  const timespec pause{0, kPauseNanoseconds};
  while (waitpid(child, &state, WNOHANG) == 0) {
    nanosleep(&pause, nullptr);
    if (caughtSignal() == 0) {
      if (++pauses % kPausesPerTick == 0) tick();
    } else if (pausesSinceSignal++ == 0) {
      kill(child, SIGTERM);
    } else if (pausesSinceSignal == kPausesBeforeKill) {
      kill(child, SIGKILL);
    }
  }
  return WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
}

}  // namespace run
