// Carries out a plan step by step.
#pragma once

#include <map>
#include <string>

#include "run/plan.h"

namespace run {

/// Runs the steps in the plan's folder; `programs` maps names to paths, `installation` becomes ORBELN_DIR.
/// Returns the exit status of the whole run.
int runPlan(const Plan& plan, const std::map<std::string, std::string>& programs,
            const std::string& installation, bool terminal);

}  // namespace run
