// The steps of the one-command run, with small scripts in place of the programs.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "run/plan.h"
#include "run/programs.h"
#include "run/run_plan.h"
#include "support/process.h"

namespace {

namespace fs = std::filesystem;

run::Plan planFor(const std::string& words) {
  return run::makePlan(tools::parseArguments(run::runProgram(), support::split(words)));
}

void writeProgram(const fs::path& path, const std::string& script) {
  support::writeFile(path, "#!/bin/sh\n" + script);
  fs::permissions(path, fs::perms::owner_all);
}

/// Stand-ins that write what the real programs would, and keep their arguments.
std::map<std::string, std::string> standIns(const support::TempDir& folder) {
  std::map<std::string, std::string> programs;
  const auto add = [&](const std::string& name, const std::string& script) {
    writeProgram(folder / name, script);
    programs[name] = (folder / name).string();
  };
  add("orbeln-convert", "echo Taken: 3 shifts\necho table > \"$2\"\n");
  add("orbeln",
      "echo \"$@\" > arguments\npwd > folder\necho \"$ORBELN_DIR\" > tables\ntouch pred.tab predChi1.tab\n");
  add("orbeln-report", "touch report.html\n");
  add("orbeln-restraints", "touch restraints.tbl restraints.aco\n");
  return programs;
}

TEST(RunPlan, EveryStepWorksInTheResultFolder) {
  const support::TempDir folder;
  const auto programs = standIns(folder);
  // Hyphens in the path must not reach the prediction's command line.
  const std::string results = (folder / "my-results").string();
  const run::Plan plan = planFor("shifts.str -o " + results + " -iso -- -excl 1UBQ");
  ASSERT_EQ(plan.error, "");
  EXPECT_EQ(run::runPlan(plan, programs, "/some/where", false), 0);
  EXPECT_EQ(support::readFile(fs::path(results) / "arguments"), "-in input.tab -iso -excl 1UBQ\n");
  EXPECT_EQ(support::readFile(fs::path(results) / "folder"), fs::canonical(results).string() + "\n");
  EXPECT_EQ(support::readFile(fs::path(results) / "tables"), "/some/where\n");
  for (const char* product : {"input.tab", "pred.tab", "report.html", "restraints.tbl", "restraints.aco"}) {
    EXPECT_TRUE(fs::exists(fs::path(results) / product)) << product;
  }
}

TEST(RunPlan, FailuresStopWhereNothingCanFollow) {
  const support::TempDir folder;
  auto programs = standIns(folder);
  const fs::path results = folder / "results";
  const run::Plan plan = planFor("shifts.str -o " + results.string());
  ASSERT_EQ(run::runPlan(plan, programs, "/x", false), 0);

  writeProgram(folder / "orbeln-report", "echo no luck\nexit 4\n");
  EXPECT_EQ(run::runPlan(plan, programs, "/x", false), 1) << "a failed report is a failure";
  EXPECT_TRUE(fs::exists(results / "restraints.tbl")) << "but restraints can still be written";
  EXPECT_FALSE(fs::exists(results / "report.html")) << "an older report is no result of this run";

  writeProgram(folder / "orbeln", "echo cannot open a table\nexit 0\n");
  EXPECT_EQ(run::runPlan(plan, programs, "/x", false), 1) << "status 0 without a prediction is a failure";
  EXPECT_FALSE(fs::exists(results / "pred.tab"));

  writeProgram(folder / "orbeln-convert", "echo choose one\nexit 3\n");
  EXPECT_EQ(run::runPlan(plan, programs, "/x", false), 3);
}

TEST(RunPlan, OptionsReachTheStepTheyAreFor) {
  const run::Plan plan = planFor(
      "a/b.nef --chain B --strict --restraints nef,amber --coordinates /s.pdb --factor 3 --no-report "
      "--ref x-y.pdb");
  ASSERT_EQ(plan.error, "");
  EXPECT_EQ(fs::path(plan.folder).filename(), "b_orbeln");
  ASSERT_EQ(plan.steps.size(), 4U);
  const auto has = [&](std::size_t step, const std::vector<std::string>& words) {
    const auto& all = plan.steps[step].arguments;
    return std::search(all.begin(), all.end(), words.begin(), words.end()) != all.end();
  };
  EXPECT_TRUE(has(0, {"--chain", "B"}) && has(0, {"--strict"}) && has(0, {"--", "a/b.nef"}));
  EXPECT_TRUE(has(1, {"-ref", "reference.pdb"}));
  EXPECT_TRUE(has(2, {"--format", "nef", "-o", "restraints.nef"}) && has(2, {"--factor", "3"}));
  EXPECT_TRUE(has(3, {"--coordinates", "/s.pdb"}));
  for (const char* words : {"", "a b", "a --restraints pdb", "a --restraints gromacs", "a --bogus"})
    EXPECT_NE(planFor(words).error, "") << words;
}

TEST(RunPrograms, AreFoundBesideTheExecutableThenInPath) {
  const support::TempDir beside, path;
  writeProgram(beside / "orbeln", "");
  writeProgram(path / "orbeln", "");
  writeProgram(path / "orbeln-report", "");
  support::writeFile(beside / "orbeln-report", "no program");
  fs::permissions(beside / "orbeln-report", fs::perms::owner_read | fs::perms::owner_write);
  const std::string search = "/nowhere:" + path.path.string();
  EXPECT_EQ(run::findProgram("orbeln", beside.path.string(), search), (beside / "orbeln").string());
  EXPECT_EQ(run::findProgram("orbeln", "", search), (path / "orbeln").string());
  EXPECT_EQ(run::findProgram("orbeln-convert", beside.path.string(), search), "");
}

TEST(RunPrograms, InstallationFromTheEnvironmentOrBesideThePrograms) {
  const support::TempDir root;
  const std::string bin = (root / "bin").string(), mine = (root / "mine").string();
  for (const char* made : {"share/orbeln/tab", "bin", "mine/tab"}) fs::create_directories(root / made);
  const run::Installation found = run::findInstallation("", bin);
  EXPECT_EQ(found.folder, fs::canonical(root / "share/orbeln").string());
  EXPECT_TRUE(found.guessed);
  fs::create_directories(root / "bin/install/tab");
  EXPECT_EQ(run::findInstallation("", bin).folder, fs::canonical(root / "bin/install").string());
  EXPECT_EQ(run::findInstallation(mine, bin).folder, mine);
  EXPECT_NE(run::findInstallation(bin, bin).error, "") << "a wrong ORBELN_DIR is not replaced in silence";
  EXPECT_NE(run::findInstallation("", mine + "/tab").error, "");
}

}  // namespace
