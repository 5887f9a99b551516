// Carries out a plan step by step.
#include "run/run_plan.h"

#include <cstdio>
#include <filesystem>
#include <vector>

#include "common/files.h"
#include "run/process.h"
#include "run/progress.h"
#include "tables/text.h"

namespace run {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kShownLines = 20;
constexpr int kFailed = 1, kChoiceNeeded = 3;

std::vector<std::string> logLines(const fs::path& file) {
  const tools::FileText log = tools::readTextFile(file.string());
  std::vector<std::string> lines;
  for (const std::string& line : text::split('\n', log.text)) {
    if (!text::trim(line).empty()) lines.push_back(line);
  }
  return lines;
}

/// The last messages of a failed step.
void showFailure(const Step& step, const fs::path& log, int status, bool productMissing) {
  const std::vector<std::string> lines = logLines(log);
  const std::size_t from = lines.size() > kShownLines ? lines.size() - kShownLines : 0;
  for (std::size_t i = from; i < lines.size(); ++i) std::fprintf(stderr, "    %s\n", lines[i].c_str());
  if (status < 0) std::fprintf(stderr, "    %s was ended by signal %d\n", step.program.c_str(), -status);
  if (status > 0) std::fprintf(stderr, "    %s ended with status %d\n", step.program.c_str(), status);
  if (status == 0 && productMissing) {
    std::fprintf(stderr, "    %s wrote no %s\n", step.program.c_str(), step.products.front().c_str());
  }
}

/// What of a successful step's messages a user should see at once.
void showAdvice(const fs::path& log) {
  for (const std::string& line : logLines(log)) {
    const bool advice =
        line.starts_with("Taken:") || line.starts_with("Hint:") || line.find("warning:") != std::string::npos;
    if (advice) std::printf("      %s\n", line.c_str());
  }
}

bool prepareFolder(const Plan& plan) {
  std::error_code error;
  fs::create_directories(plan.folder, error);
  if (!fs::is_directory(plan.folder, error)) {
    std::fprintf(stderr, "orbeln-run: %s: the folder cannot be made\n", plan.folder.c_str());
    return false;
  }
  if (plan.reference.empty()) return true;
  fs::copy_file(plan.reference, fs::path(plan.folder) / "reference.pdb", fs::copy_options::overwrite_existing,
                error);
  if (error) std::fprintf(stderr, "orbeln-run: %s: %s\n", plan.reference.c_str(), error.message().c_str());
  return !error;
}

int runStep(const Step& step, const Plan& plan, const std::string& program, const std::string& installation,
            Progress& progress) {
  const fs::path folder(plan.folder), log = folder / step.log;
  std::error_code error;
  for (const std::string& product : step.products) fs::remove(folder / product, error);
  progress.begin(step.title);
  const Command command{program,
                        step.arguments,
                        step.insideFolder ? plan.folder : "",
                        log.string(),
                        {{"ORBELN_DIR", installation}}};
  const int status = execute(command, [&] { progress.tick(); });
  const bool missing = !fs::is_regular_file(folder / step.products.front(), error);
  if (status == 0 && !missing) {
    progress.end("done");
    showAdvice(log);
    return 0;
  }
  progress.end("failed");
  showFailure(step, log, status, missing);
  return step.essential && status == kChoiceNeeded ? kChoiceNeeded : kFailed;
}

}  // namespace

int runPlan(const Plan& plan, const std::map<std::string, std::string>& programs,
            const std::string& installation, bool terminal) {
  if (!prepareFolder(plan)) return kFailed;
  Progress progress(plan.steps.size(), terminal);
  int result = 0;
  for (const Step& step : plan.steps) {
    const int status = runStep(step, plan, programs.at(step.program), installation, progress);
    if (status == 0) continue;
    result = status;
    if (step.essential) break;
  }
  std::printf("%s %s\n", result == 0 ? "Results are in" : "What was made is in", plan.folder.c_str());
  return result;
}

}  // namespace run
