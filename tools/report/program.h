// The program orbeln-report without its process: command line in, exit status out.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace report {

/// Runs with the words of the command line; messages go to `err`, help and version to `out`. Exit status
/// 0 done, 1 bad input or output, 2 wrong command line.
int runProgram(const std::vector<std::string>& words, std::ostream& out, std::ostream& err);

}  // namespace report
