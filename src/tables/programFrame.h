// What every program does around its own work: standard streams, memory, uncaught errors.
#pragma once

#include <functional>

/// Runs `body` and returns its exit status, or 1 with one line on standard error when
///  - memory runs out,
///  - standard output could not be written (full, closed) although `body` returned 0,
///  - an error of the standard library reaches the end of `body`.
/// `name`, the program's, must live as long as the process.
int runProgramFrame(const char* name, const std::function<int()>& body);
