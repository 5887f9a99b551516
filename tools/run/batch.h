// Several runs, each in a folder of its own, and what compares them.
#pragma once

#include "common/arguments.h"
#include "run/jobs.h"
#include "run/run_plan.h"

namespace run {

/// Runs every job one after the other; a failed one does not stop the others. Returns the exit status.
int runBatch(const tools::Arguments& arguments, const Jobs& jobs, const Surroundings& surroundings,
             bool terminal);

}  // namespace run
