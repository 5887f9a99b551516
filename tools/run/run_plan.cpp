// Carries out a plan step by step.
#include "run/run_plan.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "common/files.h"
#include "run/interrupt.h"
#include "run/process.h"
#include "run/result_folder.h"
#include "tables/text.h"

namespace run {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kShownLines = 20;
constexpr const char* kSpool = "given_input";

std::vector<std::string> logLines(const fs::path& file) {
  const tools::FileText log = tools::readTextFile(file.string());
  std::vector<std::string> lines;
  for (const std::string& line : text::split('\n', log.text)) {
    if (!text::trim(line).empty()) lines.push_back(printable(line));
  }
  return lines;
}

class PlanRunner {
 public:
  PlanRunner(const Plan& plan, const Surroundings& surroundings, Progress& progress)
      : plan_(plan), surroundings_(surroundings), progress_(progress), folder_(plan.job.folder) {}

  Run run() {
    result_.problem = folder_.open();
    if (result_.problem.empty()) result_.problem = folder_.conflict(plan_.products(), plan_.inputs);
    if (result_.problem.empty()) result_.problem = prepare();
    if (!result_.problem.empty()) return result_;
    result_.status = kDone;
    for (const Step& step : plan_.steps) {
      const int status = runStep(step);
      if (status == kDone) continue;
      if (caughtSignal() != 0) {
        result_.problem = "interrupted";
        result_.status = kFailed;
        return result_;
      }
      result_.status = status;
      if (step.essential) return result_;
    }
    publish();
    return result_;
  }

 private:
  /// Fills the working folder; the reason when that fails.
  std::string prepare() {
    const fs::path& work = folder_.work();
    std::error_code error;
    if (!plan_.reference.empty()) {
      fs::copy_file(plan_.reference, work / "reference.pdb", error);
      if (error) return plan_.reference + ": " + error.message();
    }
    for (const auto& [name, target] : plan_.links) {
      fs::create_symlink(target, work / name, error);
      if (error) return target + ": " + error.message();
    }
    if (!plan_.job.text) return "";
    return tools::writeTextFile((work / kSpool).string(), *plan_.job.text);
  }

  bool isThere(const std::string& name) const {
    std::error_code error;
    const fs::path file = folder_.work() / name;
    return fs::is_regular_file(file, error) && fs::file_size(file, error) > 0;
  }

  int runStep(const Step& step) {
    progress_.beginStep(step.title);
    const std::string work = folder_.work().string();
    const bool spooled = plan_.job.text && step.program == "orbeln-convert";
    const Command command{surroundings_.programs.at(step.program),
                          step.arguments,
                          step.inside ? work : "",
                          (folder_.work() / step.log).string(),
                          {{"ORBELN_DIR", surroundings_.installation}},
                          spooled ? (folder_.work() / kSpool).string() : ""};
    const int status = execute(command, [&] { progress_.tick(); });
    const auto missing = std::find_if(step.products.begin(), step.products.end(),
                                      [&](const std::string& name) { return !isThere(name); });
    if (status == 0 && missing == step.products.end()) {
      progress_.endStep("done");
      if (!progress_.batch()) showAdvice(step);
      return kDone;
    }
    if (caughtSignal() != 0) {
      progress_.endStep("interrupted");
      return kFailed;
    }
    progress_.endStep("failed");
    showFailure(step, status, missing == step.products.end() ? "" : *missing);
    return step.essential && status == kChoiceNeeded ? kChoiceNeeded : kFailed;
  }

  /// The last messages of a failed step; all of them when they are a list to choose from.
  void showFailure(const Step& step, int status, const std::string& missing) {
    const std::vector<std::string> lines = logLines(folder_.work() / step.log);
    const bool all = status == kChoiceNeeded || lines.size() <= kShownLines;
    for (std::size_t i = all ? 0 : lines.size() - kShownLines; i < lines.size(); ++i) {
      std::fprintf(stderr, "    %s\n", lines[i].c_str());
    }
    std::string why = step.program;
    if (status < 0) why += " was ended by signal " + std::to_string(-status);
    if (status > 0) why += " ended with status " + std::to_string(status);
    if (status == 0) why += " wrote no " + missing;
    if (status == kChoiceNeeded && step.essential)
      why = "choose with --chain and --list, or take --all of them";
    std::fprintf(stderr, "    %s\n", why.c_str());
    result_.told = true;
    const std::string first = progress_.batch() && !lines.empty() ? lines.back() : why;
    result_.problem += (result_.problem.empty() ? "" : "; ") + first;
  }

  /// What of a successful step's messages a user should see at once.
  void showAdvice(const Step& step) const {
    for (const std::string& line : logLines(folder_.work() / step.log)) {
      const bool advice = line.starts_with("Taken:") || line.starts_with("Hint:") ||
                          line.find("warning:") != std::string::npos;
      if (advice) std::printf("      %s\n", line.c_str());
    }
  }

  void publish() {
    std::vector<std::string> made;
    std::error_code error;
    for (const std::string& name : plan_.products()) {
      if (fs::is_regular_file(folder_.work() / name, error)) made.push_back(name);
    }
    // Half of a run in place of a whole one would be a loss.
    if (result_.status != kDone && folder_.holdsResults()) return;
    std::vector<std::string> comments = surroundings_.comments;
    comments.insert(comments.begin(), "input " + plan_.job.title + " (" + plan_.job.input + ")");
    const std::string problem = folder_.publish(made, plan_.inputs, comments);
    result_.published = problem.empty();
    if (result_.published) return;
    result_.problem = problem;
    result_.told = false;
    result_.status = kFailed;
  }

  const Plan& plan_;
  const Surroundings& surroundings_;
  Progress& progress_;
  ResultFolder folder_;
  Run result_;
};

}  // namespace

Run runPlan(const Plan& plan, const Surroundings& surroundings, Progress& progress) {
  return PlanRunner(plan, surroundings, progress).run();
}

}  // namespace run
