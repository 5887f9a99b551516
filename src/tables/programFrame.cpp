// What every program does around its own work: standard streams, memory, uncaught errors.
#include "tables/programFrame.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>

#include "tables/UnfinishedFiles.h"

namespace {

const char* programName = "";  // the handler below takes no argument

void say(const char* text) {
  std::size_t left = std::strlen(text);
  while (left > 0) {
    const ssize_t written = write(STDERR_FILENO, text, left);
    if (written <= 0) return;
    text += written;
    left -= static_cast<std::size_t>(written);
  }
}

/// Allocates nothing.
[[noreturn]] void endWithoutMemory() {
  unfinished::discardAll();
  std::fflush(stdout);
  say(programName);
  say(": out of memory: this run needs more than the system or a limit (ulimit -v) grants\n");
  std::_Exit(1);
}

/// A closed standard stream must not be given to the next file that is opened: messages would end up in a
/// table. What is put in its place cannot be read or written either.
void reserveStandardStreams() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    if (open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) != descriptor) return;
  }
}

/// The system's reason why standard output failed, as far as it still tells.
const char* outputProblem() {
  errno = 0;
  return write(STDOUT_FILENO, "", 0) < 0 ? std::strerror(errno) : "not everything could be written";
}

/// Reports a failure once.
bool standardOutputIsWhole() {
  static bool reported = false;
  std::cout.flush();
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && !std::cout.fail()) return true;
  if (!reported) std::cerr << programName << ": standard output: " << outputProblem() << std::endl;
  reported = true;
  return false;
}

}  // namespace

int runProgramFrame(const char* name, const std::function<int()>& body) {
  programName = name;
  reserveStandardStreams();
  std::set_new_handler(endWithoutMemory);
  std::atexit([] { standardOutputIsWhole(); });  // some stages end the process
  int status = 1;
  try {
    status = body();
  } catch (const std::bad_alloc&) {
    endWithoutMemory();
  } catch (const std::exception& error) {
    unfinished::discardAll();
    std::cerr << name << ": " << error.what() << std::endl;
  }
  return standardOutputIsWhole() || status != 0 ? status : 1;
}
