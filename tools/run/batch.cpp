// Several runs, each in a folder of its own, and what compares them.
#include "run/batch.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "common/files.h"
#include "run/comparison.h"
#include "run/interrupt.h"
#include "run/result_folder.h"

namespace run {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPage = "index.html";
constexpr const char* kTable = "comparison.tsv";

void complain(const std::string& problem) {
  std::fprintf(stderr, "orbeln-run: %s\n", printable(problem).c_str());
}

std::string shortOutcome(const Outcome& outcome) {
  std::string text = std::to_string(outcome.reliable()) + " of " + std::to_string(outcome.sequence.size()) +
                     " residues Strong or Generous";
  if (outcome.referencingDoubtful) text += "; referencing: " + outcome.referencing;
  return text;
}

Compared runJob(const tools::Arguments& arguments, const Job& job, const Surroundings& surroundings,
                Progress& progress, int& status) {
  progress.beginJob(job.title);
  const Run run = runPlan(makePlan(arguments, job), surroundings, progress);
  status = run.status;
  Compared compared{job, fs::path(job.folder).filename().string(), std::nullopt, run.problem,
                    !arguments.has("--no-report")};
  Outcome outcome;
  std::string problem = run.problem;
  if (run.published && readOutcome(job.folder, "orbeln.log", outcome, problem)) {
    std::error_code error;
    compared.report = fs::exists(fs::path(job.folder) / "report.html", error);
    progress.endJob(shortOutcome(outcome));
    compared.outcome = std::move(outcome);
  } else {
    compared.problem = problem;
    progress.endJob("failed");
    if (!run.told) complain(problem);
    if (status == kDone) status = kFailed;
  }
  return compared;
}

/// Writes page and table by way of the working folder. Empty text, or what went wrong.
std::string writeComparison(ResultFolder& folder, const Jobs& jobs, const std::vector<Compared>& runs,
                            const std::vector<std::string>& inputs,
                            const std::vector<std::string>& comments) {
  const std::string title = fs::path(jobs.folder).filename().string();
  std::string problem = tools::writeTextFile((folder.work() / kPage).string(),
                                             comparisonPage(title, runs, jobs.failed, comments));
  if (problem.empty())
    problem = tools::writeTextFile((folder.work() / kTable).string(), comparisonTable(runs));
  return problem.empty() ? folder.publish({kPage, kTable}, inputs, comments) : problem;
}

}  // namespace

int runBatch(const tools::Arguments& arguments, const Jobs& jobs, const Surroundings& surroundings,
             bool terminal) {
  ResultFolder folder(jobs.folder);
  const std::vector<std::string> inputs = namedInputs(arguments);
  std::string problem = folder.open();
  if (problem.empty()) problem = folder.conflict({kPage, kTable}, inputs);
  if (!problem.empty()) {
    complain(problem);
    return kFailed;
  }
  for (const std::string& failure : jobs.failed) complain(failure);
  Progress progress(jobs.jobs.size(), terminal, true);
  std::vector<Compared> runs;
  int result = jobs.failed.empty() ? kDone : kFailed;
  for (const Job& job : jobs.jobs) {
    int status = kDone;
    runs.push_back(runJob(arguments, job, surroundings, progress, status));
    if (caughtSignal() != 0) return kFailed;
    if (status != kDone && result != kFailed) result = status;
  }
  const auto good =
      std::count_if(runs.begin(), runs.end(), [](const Compared& run) { return run.outcome.has_value(); });
  if (good == 0) {
    complain("nothing was made");
    return result;
  }
  problem = writeComparison(folder, jobs, runs, inputs, surroundings.comments);
  if (!problem.empty()) {
    complain(problem);
    return kFailed;
  }
  std::printf("%zu of %zu runs gave results\n", static_cast<std::size_t>(good), runs.size());
  std::printf("Page: %s\n", (fs::path(jobs.folder) / kPage).c_str());
  std::printf("%s %s\n", result == kDone ? "Results are in" : "What was made is in", jobs.folder.c_str());
  return result;
}

}  // namespace run
