// The steps from a shift file to the report: which program, with which arguments, leaving which file.
#pragma once

#include <string>
#include <vector>

#include "common/arguments.h"

namespace run {

struct Step {
  std::string title;                   ///< for the progress line
  std::string program;                 ///< name of the program
  std::vector<std::string> arguments;  ///< file names relative to `insideFolder`
  bool insideFolder = false;           ///< run with the result folder as working directory
  std::string log;                     ///< in the result folder
  std::vector<std::string> products;   ///< in the result folder; the first one must be there afterwards
  bool essential = true;               ///< without it the later steps make no sense
};

struct Plan {
  std::string input;
  std::string folder;     ///< absolute path of the result folder
  std::string reference;  ///< structure to compare with, copied into the folder; empty: none
  std::vector<Step> steps;
  std::string error;  ///< not empty: the command line cannot be used
};

tools::Program runProgram();

/// The plan for a command line.
Plan makePlan(const tools::Arguments& arguments);

}  // namespace run
