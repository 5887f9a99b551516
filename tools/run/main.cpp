// orbeln-run: from a shift file to predictions, report and restraints in one command.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "run/batch.h"
#include "run/interrupt.h"
#include "run/jobs.h"
#include "run/options.h"
#include "run/outcome.h"
#include "run/programs.h"
#include "run/result_folder.h"
#include "run/run_plan.h"
#include "tables/programFrame.h"

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

int fail(const std::string& message) {
  std::fprintf(stderr, "orbeln-run: %s\n", message.c_str());
  return run::kFailed;
}

/// The programs of the plan and the tables they need. Empty text, or what is missing.
std::string findSurroundings(const run::Plan& plan, run::Surroundings& found) {
  const std::string folder = run::executableFolder();
  for (const run::Step& step : plan.steps) {
    const std::string path = run::findProgram(step.program, folder, environment("PATH"));
    if (path.empty()) return step.program + " is neither in " + folder + " nor in PATH";
    found.programs[step.program] = path;
  }
  const run::Installation installation = run::findInstallation(environment("ORBELN_DIR"), folder);
  if (!installation.error.empty()) return installation.error;
  if (installation.guessed) std::printf("ORBELN_DIR is not set; using %s\n", installation.folder.c_str());
  found.installation = installation.folder;
  found.comments = {run::describeMaker(installation.folder)};
  return "";
}

int runOne(const run::Plan& plan, const run::Surroundings& surroundings, bool terminal) {
  run::Progress progress(plan.steps.size(), terminal, false);
  const run::Run run = runPlan(plan, surroundings, progress);
  std::error_code error;
  const std::filesystem::path folder(plan.job.folder);
  if (run::caughtSignal() != 0) return run.status;
  if (!run.published) {
    if (!run.told) fail(run.problem);
    const bool earlier = std::filesystem::exists(folder / run::kManifestName, error);
    std::fprintf(stderr, "orbeln-run: %s%s\n",
                 earlier ? "the earlier results are unchanged in " : "nothing was made",
                 earlier ? folder.c_str() : "");
    return run.status;
  }
  run::Outcome outcome;
  std::string problem;
  if (!readOutcome(plan.job.folder, "orbeln.log", outcome, problem)) return fail(problem);
  for (const std::string& line : outcomeLines(outcome)) std::printf("%s\n", run::printable(line).c_str());
  std::printf("Made by: %s\n", surroundings.comments.front().c_str());
  if (std::filesystem::exists(folder / "report.html", error))
    std::printf("Page: %s\n", (folder / "report.html").c_str());
  std::printf("%s %s\n", run.status == run::kDone ? "Results are in" : "What was made is in", folder.c_str());
  return run.status;
}

int runAll(const tools::Arguments& arguments) {
  const run::Jobs jobs = run::findJobs(arguments);
  if (!jobs.error.empty()) return fail(jobs.error);
  run::Surroundings surroundings;
  const run::Plan plan = run::makePlan(arguments, jobs.jobs.front());
  if (const std::string problem = findSurroundings(plan, surroundings); !problem.empty())
    return fail(problem);
  run::watchSignals();
  const bool terminal = isatty(STDOUT_FILENO) == 1;
  return jobs.batch ? run::runBatch(arguments, jobs, surroundings, terminal)
                    : runOne(plan, surroundings, terminal);
}

int runRun(int argc, char** argv) {
  const tools::Program self = run::runProgram();
  const tools::Arguments arguments =
      tools::parseArguments(self, std::vector<std::string>(argv + 1, argv + argc));
  if (arguments.error.empty() && tools::answerHelp(self, arguments)) return 0;
  if (const std::string problem = run::usageProblem(arguments); !problem.empty()) {
    return tools::usageError(self, problem);
  }
  const int status = runAll(arguments);
  if (const int signal = run::caughtSignal(); signal != 0) {
    fail("interrupted; nothing half made was left");
    run::endBySignal(signal);
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  return runProgramFrame("orbeln-run", [&] { return runRun(argc, argv); });
}
