// Ways of losing a file by orbeln-run and orbeln-convert, and that none of them does.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include "run_support.h"

namespace {

namespace fs = std::filesystem;
using support::contains;
using support::ProgramRun;

class RunFiles : public support::RunFolder {};

/// Names and contents of everything in a folder.
std::map<std::string, std::string> contents(const fs::path& folder) {
  std::map<std::string, std::string> found;
  for (const auto& entry : fs::directory_iterator(folder)) {
    found[entry.path().filename()] = entry.is_regular_file() ? support::readFile(entry.path()) : "";
  }
  return found;
}

TEST_F(RunFiles, InputsAndForeignFilesStayAsTheyAre) {
  const struct {
    const char *what, *prepare, *words, *kept;
    int status;
    const char* message;  ///< part of the error
  } cases[] = {
      {"input is the table of the folder", "cp query.tab d/input.tab", "d/input.tab -o d", "d/input.tab", 0,
       ""},
      {"by another spelling", "cp query.tab d/input.tab", "d/../d/./input.tab -o d/", "d/input.tab", 0, ""},
      {"by a symbolic link", "cp query.tab d/input.tab; ln -s d/input.tab link", "link -o d", "d/input.tab",
       0, ""},
      {"by a hard link", "cp query.tab d/input.tab; ln d/input.tab other", "other -o d", "d/input.tab", 0,
       ""},
      {"the table in the folder leads to the input", "ln -s ../query.tab d/input.tab", "query.tab -o d",
       "query.tab", 0, ""},
      {"a misspelt input", "cp query.tab d/input.tab", "d/imput.tab -o d", "d/input.tab", 1, "No such file"},
      {"a table of the user's", "echo mine > d/input.tab", "query.tab -o d", "d/input.tab", 1, "not made by"},
      {"a link of the user's", "echo mine > mine; ln -s ../mine d/pred.tab", "query.tab -o d", "mine", 1,
       "not made by"},
      {"input named like a result", "cp query.tab d/pred.tab", "d/pred.tab -o d", "d/pred.tab", 1,
       "is an input"},
      {"sequence named like a result", "echo AAAA > d/report.html", "query.tab --sequence d/report.html -o d",
       "d/report.html", 1, "is an input"},
      {"reference in its place", "echo 'REMARK none' > d/reference.pdb",
       "query.tab --ref d/reference.pdb --no-report -o d", "d/reference.pdb", 0, ""},
      {"coordinates named like a result", "cp query.tab d/restraints.itp",
       "query.tab --restraints gromacs --coordinates d/restraints.itp -o d", "d/restraints.itp", 1,
       "is an input"},
      {"a list that is none", "echo mine > d/orbeln-run.list", "query.tab -o d", "d/orbeln-run.list", 1,
       "no list"},
      {"a list that leads elsewhere",
       "printf '# Files made by orbeln-run\\ncbf29ce484222325 0 ../gone\\n' > d/orbeln-run.list; : > gone; "
       "echo x > s",
       "query.tab -o d", "gone", 0, ""},
      {"results sent elsewhere", "cp query.tab mine", "query.tab -o d -- -sum ../../mine", "mine", 2, "-sum"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_EQ(shell("rm -rf d link other mine gone; mkdir d; " + std::string(c.prepare)).status, 0);
    const std::string before = text(c.kept);
    const ProgramRun result = run(c.words);
    EXPECT_EQ(result.status, c.status) << result.err;
    EXPECT_TRUE(contains(result.err, c.message)) << result.err;
    ASSERT_TRUE(exists(c.kept));
    EXPECT_EQ(text(c.kept), before);
    EXPECT_EQ(contains(result.out, "Results are in"), c.status == 0) << result.out;
    EXPECT_FALSE(exists("d/.orbeln-run.work") || exists("d/.orbeln-run.lock"));
  }
}

TEST_F(RunFiles, NothingIsMadeForATypoOrABrokenInput) {
  support::writeFile(dir / "broken.str", "save_ loop_ _a _b 1\n");
  for (const char* words : {"nothere.str", "nothere.str -o deep/er", "broken.str -o deep/er", ". -o deep"}) {
    SCOPED_TRACE(words);
    const auto before = contents(dir.path);
    EXPECT_EQ(run(words).status, 1);
    auto after = contents(dir.path);
    after["out.txt"] = before.count("out.txt") > 0 ? before.at("out.txt") : "";
    for (const auto& [name, content] : after) {
      EXPECT_TRUE(before.count(name) > 0 || name == "out.txt" || name == "err.txt") << name;
    }
  }
}

TEST_F(RunFiles, LaterRunsReplaceTheirOwnResultsWhenTheNewOnesAreWhole) {
  ASSERT_EQ(run("query.tab -o d --restraints nef").status, 0) << text("err.txt");
  const auto first = contents(dir / "d");
  support::writeFile(dir / "d/notes.txt", "mine");

  support::writeFile(dir / "broken.tab", "VARS RESID\n");
  EXPECT_EQ(run("broken.tab -o d").status, 1);
  replace("orbeln", "echo half > pred.tab\nexit 0\n");
  EXPECT_EQ(run("query.tab -o d").status, 1) << "status 0 without all tables is a failure";
  replace("orbeln", "exec '" ORBELN_BINARY "' \"$@\"\n");
  replace("orbeln-report", "exit 4\n");
  const ProgramRun failed = run("query.tab -o d");
  EXPECT_EQ(failed.status, 1);
  EXPECT_FALSE(contains(failed.out, "Results are in"));
  auto now = contents(dir / "d");
  EXPECT_EQ(now.erase("notes.txt"), 1U);
  EXPECT_EQ(now, first) << "three failed runs changed nothing";
  EXPECT_EQ(run("query.tab -o fresh").status, 1);
  EXPECT_TRUE(exists("fresh/pred.tab") && exists("fresh/restraints.tbl"))
      << "without a page, but not for nothing";

  fs::remove(dir / "bin/orbeln-report");
  fs::create_symlink(fs::path(ORBELN_RUN_BINARY).parent_path() / "orbeln-report", dir / "bin/orbeln-report");
  const ProgramRun again = run("query.tab -o d");
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_TRUE(contains(again.out, "Classes: ") && contains(again.out, "Referencing (CA/CB, HA, C'): ") &&
              contains(again.out, "d/report.html"));
  EXPECT_FALSE(exists("d/restraints.nef")) << "what this run did not make is no result of it";
  EXPECT_EQ(text("d/notes.txt"), "mine");
  EXPECT_TRUE(contains(text("d/restraints.tbl"), "prediction for query.tab"));

  support::writeFile(dir / "d/restraints.tbl", "edited");
  EXPECT_EQ(run("query.tab -o d").status, 1);
  EXPECT_EQ(run("query.tab -o d --restraints none").status, 0) << text("err.txt");
  EXPECT_EQ(text("d/restraints.tbl"), "edited");
}

TEST_F(RunFiles, OneRunAtATimeAndALockEndsWithItsOwner) {
  fs::create_directories(dir / "d/.orbeln-run.work/left");
  support::writeFile(dir / "d/.orbeln-run.lock", "12345");
  const int lock = open((dir / "d/.orbeln-run.lock").c_str(), O_RDWR);
  ASSERT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
  const ProgramRun refused = run("query.tab -o d");
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(contains(refused.err, "another orbeln-run (process 12345) works in this folder"))
      << refused.err;
  EXPECT_TRUE(exists("d/.orbeln-run.work/left"));
  close(lock);
  EXPECT_EQ(run("query.tab -o d").status, 0) << "what a killed run left is no obstacle";
  EXPECT_FALSE(exists("d/.orbeln-run.work") || exists("d/.orbeln-run.lock"));
}

TEST_F(RunFiles, SignalsEndTheChildAndLeaveNothing) {
  replace("orbeln", "echo $$ > '" + (dir / "pid").string() + "'\nexec sleep 100\n");
  for (const char* signal : {"INT", "TERM", "KILL"}) {
    SCOPED_TRACE(signal);
    fs::remove(dir / "pid");
    // A background job of a script ignores SIGINT; env gives it back.
    const ProgramRun result = shell(
        "env --default-signal=INT bin/orbeln-run query.tab -o d & run=$!; while [ ! -s pid ]; do "
        "sleep 0.02; done; kill -" +
        std::string(signal) + " $run; wait $run");
    EXPECT_EQ(result.status, signal == std::string("INT") ? 130 : signal == std::string("TERM") ? 143 : 137);
    EXPECT_FALSE(contains(result.out, "Results are in"));
    const int child = std::stoi(text("pid"));
    int waited = 0;
    while (kill(child, 0) == 0 && ++waited < 200) usleep(10000);
    EXPECT_NE(kill(child, 0), 0) << "the prediction goes on";
    EXPECT_EQ(exists("d"), signal == std::string("KILL"));
  }
}

TEST_F(RunFiles, ConversionNeverWritesItsInput) {
  const std::string shifts = "#NUM AA HA CA\n1 A 4.3 52.5\n2 A 4.2 52.1\n";
  ASSERT_EQ(shell("mkdir d; ln -s ../a.shifty d/link; : > a.shifty; ln a.shifty d/hard").status, 0);
  support::writeFile(dir / "a.shifty", shifts);
  for (const char* output : {"a.shifty", "d/../a.shifty", "d/link", "d/hard"}) {
    const ProgramRun result = shell(std::string("bin/orbeln-convert a.shifty -o ") + output);
    EXPECT_EQ(result.status, 1) << output;
    EXPECT_TRUE(contains(result.err, "would overwrite the input a.shifty")) << result.err;
    EXPECT_EQ(text("a.shifty"), shifts);
  }
}

}  // namespace
