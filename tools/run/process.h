// Runs one program and waits for it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace run {

struct Command {
  std::string program;                             ///< path
  std::vector<std::string> arguments;              ///< without the program's name
  std::string folder;                              ///< working directory; empty: the caller's
  std::string logFile;                             ///< takes standard output and standard error
  std::map<std::string, std::string> environment;  ///< set in addition
  std::string inputFile = {};                      ///< standard input; empty: none
};

/// Runs the command and calls `tick` about ten times a second meanwhile. Returns the exit status, minus the
/// signal number when a signal ended it, 127 when it could not be started. A signal to this process
/// (caughtSignal()) ends the child, and so does the end of this process.
int execute(const Command& command, const std::function<void()>& tick);

}  // namespace run
