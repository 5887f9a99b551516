// The installed layout: what users call as orbeln finds the tables that came with it.
#include "run_support.h"

namespace {

namespace fs = std::filesystem;
using support::contains;
using support::ProgramRun;

class RunInstalled : public support::RunFolder {};

TEST_F(RunInstalled, TablesOfTheInstallationUnlessOthersAreNamed) {
  for (const char* folder : {"usr/bin", "usr/libexec/orbeln", "usr/share", "own/tab", "work-place"})
    fs::create_directories(dir / folder);
  fs::copy_file(ORBELN_WRAPPER, dir / "usr/bin/orbeln");
  fs::create_symlink("usr/bin/orbeln", dir / "called");
  fs::create_symlink(ORBELN_BINARY, dir / "usr/libexec/orbeln/orbeln");
  fs::create_symlink(ORBELN_SYNTHETIC, dir / "usr/share/orbeln");
  const struct {
    const char *command, *err;
    bool predicted;
  } cases[] = {
      {"unset ORBELN_DIR; cd work-place; ../called -in ../query.tab -noproton", "", true},
      {"ORBELN_DIR=/nowhere usr/bin/orbeln -in query.tab", "Can't open file /nowhere/tab/", false},
      {"unset ORBELN_DIR; cd own; ../usr/bin/orbeln -in ../query.tab", "Can't open file ./tab/", false}};
  for (const auto& c : cases) {
    const ProgramRun result = shell(c.command);
    EXPECT_EQ(result.status, 0) << c.command;
    EXPECT_TRUE(contains(result.err, c.err)) << c.command << result.err;
    EXPECT_EQ(contains(result.out, "Running time"), c.predicted) << c.command << result.err;
  }
  EXPECT_TRUE(exists("work-place/pred.tab"));
}

}  // namespace
