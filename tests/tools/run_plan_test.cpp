// What orbeln-run makes of its command line, and where it finds programs and tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "run/options.h"
#include "run/plan.h"
#include "run/programs.h"
#include "support/process.h"

namespace {

namespace fs = std::filesystem;

tools::Arguments parsed(const std::string& words) {
  return tools::parseArguments(run::runProgram(), support::split(words));
}

void writeProgram(const fs::path& path, const std::string& script) {
  support::writeFile(path, "#!/bin/sh\n" + script);
  fs::permissions(path, fs::perms::owner_all);
}

TEST(RunPlan, OptionsReachTheStepTheyAreFor) {
  const support::TempDir folder;
  support::writeFile(folder / "my-db.tab", "");
  const tools::Arguments arguments = parsed(
      "a/b.nef --chain B --strict --restraints nef,amber,nef --coordinates /s.pdb --factor 3 --no-report "
      "--ref x-y.pdb -- -excl 1UBQ -db " +
      (folder / "my-db.tab").string());
  ASSERT_EQ(run::usageProblem(arguments), "");
  const run::Plan plan =
      run::makePlan(arguments, {"a/b.nef", "b-1.nef, chain B", "/r/my-results", "", "2", nullptr});
  ASSERT_EQ(plan.steps.size(), 4U) << "a format named twice is written once";
  const auto has = [&](std::size_t step, const std::vector<std::string>& words) {
    const auto& all = plan.steps[step].arguments;
    return std::search(all.begin(), all.end(), words.begin(), words.end()) != all.end();
  };
  EXPECT_TRUE(has(0, {"--chain", "B"}) && has(0, {"--list", "2"}) && has(0, {"--strict"}) &&
              has(0, {"--", "a/b.nef"}));
  EXPECT_TRUE(has(1, {"-inTitle", "b_1.nef, chain B"})) << "the prediction cuts its command line at hyphens";
  EXPECT_TRUE(has(1, {"-ref", "reference.pdb", "-refTitle", "x_y.pdb"}));
  EXPECT_TRUE(has(1, {"-excl", "1UBQ", "-db", "given_db"}));
  ASSERT_EQ(plan.links.size(), 1U);
  EXPECT_EQ(plan.links[0].second, (folder / "my-db.tab").string());
  EXPECT_TRUE(has(2, {"--format", "nef", "-o", "restraints.nef"}) && has(2, {"--factor", "3"}));
  EXPECT_TRUE(has(3, {"--coordinates", "/s.pdb"}));
  for (const char* words :
       {"", "- -", "a --restraints pdb", "a --restraints gromacs", "a --bogus", "a -- -check"})
    EXPECT_NE(run::usageProblem(parsed(words)), "") << words;
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
