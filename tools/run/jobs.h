// What a command line asks for: one run, or one for every input file, chain and shift list.
#pragma once

#include <string>
#include <vector>

#include "common/arguments.h"
#include "run/plan.h"

namespace run {

struct Jobs {
  bool batch = false;  ///< several folders inside `folder`, with a page that compares them
  std::string folder;  ///< absolute
  std::vector<Job> jobs;
  std::vector<std::string> failed;  ///< inputs of a batch that cannot be read, with the reason
  std::string error;                ///< not empty: nothing can be run
};

/// Looks at every input, before anything is made. Standard input and pipes are read here.
Jobs findJobs(const tools::Arguments& arguments);

}  // namespace run
