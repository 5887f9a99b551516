// Carries out a plan step by step.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "run/plan.h"
#include "run/progress.h"

namespace run {

enum Status : int { kDone = 0, kFailed = 1, kWrongCommandLine = 2, kChoiceNeeded = 3 };

struct Surroundings {
  std::map<std::string, std::string> programs;  ///< name -> path
  std::string installation;                     ///< becomes ORBELN_DIR
  std::vector<std::string> comments;            ///< for the list that stays with the results
};

struct Run {
  int status = kFailed;
  bool published = false;  ///< the results are in the job's folder
  std::string problem;     ///< why not everything was made, in one line
  bool told = false;       ///< the problem and its messages were already shown
};

/// Runs the steps of the plan; messages of failed steps go to standard error.
Run runPlan(const Plan& plan, const Surroundings& surroundings, Progress& progress);

}  // namespace run
