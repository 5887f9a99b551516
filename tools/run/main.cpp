// orbeln-run: from a shift file to predictions, report and restraints in one command.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "run/plan.h"
#include "run/programs.h"
#include "run/run_plan.h"
#include "tables/programFrame.h"

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

int fail(const std::string& message) {
  std::fprintf(stderr, "orbeln-run: %s\n", message.c_str());
  return 1;
}

int runRun(int argc, char** argv) {
  const tools::Program self = run::runProgram();
  const tools::Arguments arguments =
      tools::parseArguments(self, std::vector<std::string>(argv + 1, argv + argc));
  if (arguments.error.empty() && tools::answeredHelp(self, arguments)) return 0;
  const run::Plan plan = run::makePlan(arguments);
  if (!plan.error.empty()) return tools::usageError(self, plan.error);

  const std::string folder = run::executableFolder();
  std::map<std::string, std::string> programs;
  for (const run::Step& step : plan.steps) {
    const std::string path = run::findProgram(step.program, folder, environment("PATH"));
    if (path.empty()) return fail(step.program + " is neither in " + folder + " nor in PATH");
    programs[step.program] = path;
  }
  const run::Installation installation = run::findInstallation(environment("ORBELN_DIR"), folder);
  if (!installation.error.empty()) return fail(installation.error);
  if (installation.guessed) std::printf("ORBELN_DIR is not set; using %s\n", installation.folder.c_str());
  return run::runPlan(plan, programs, installation.folder, isatty(STDOUT_FILENO) == 1);
}

}  // namespace

int main(int argc, char** argv) {
  return runProgramFrame("orbeln-run", [&] { return runRun(argc, argv); });
}
