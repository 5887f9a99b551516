// The program orbeln-restraints without its process: command line in, exit status out.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace restraints {

/// Runs with the words of the command line; the report and every message go to `err`, help and version to
/// `out`. Exit status 0 done, 1 bad input or output, 2 wrong command line.
int runProgram(const std::vector<std::string>& words, std::ostream& out, std::ostream& err);

}  // namespace restraints
