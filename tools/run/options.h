// The command line of orbeln-run.
#pragma once

#include "common/arguments.h"

namespace run {

tools::Program runProgram();

/// What is wrong with the words behind "--", which go to orbeln; empty when nothing is.
std::string predictionOptionProblem(const std::vector<std::string>& words);

/// True for options of orbeln that name a file or folder, without their hyphen.
bool namesFile(std::string_view option);

}  // namespace run
