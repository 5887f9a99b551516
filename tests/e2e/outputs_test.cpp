// Nothing is lost in silence: full disks, failing standard output, interruption, lack of memory, damaged
// tables.
#include <sys/resource.h>

#include "support/helix_run.h"

namespace {

namespace fs = std::filesystem;
using support::contains;
using support::ProgramRun;

/// A limit for this process and what it starts, until the end of the scope.
class SoftLimit {
 public:
  SoftLimit(int kind, rlim_t value) : resource(kind) {
    getrlimit(static_cast<__rlimit_resource_t>(resource), &before);
    const rlimit limited{value, before.rlim_max};
    setrlimit(static_cast<__rlimit_resource_t>(resource), &limited);
  }
  ~SoftLimit() { setrlimit(static_cast<__rlimit_resource_t>(resource), &before); }
  SoftLimit(const SoftLimit&) = delete;
  SoftLimit& operator=(const SoftLimit&) = delete;

 private:
  int resource;
  rlimit before{};
};

class Outputs : public support::HelixRun {
 protected:
  Outputs() {
    const std::string tools = fs::path(ORBELN_BINARY).parent_path().string() + "/orbeln";
    environment = "export ORBELN_DIR=" ORBELN_SYNTHETIC "; O='" + tools + "'; ";
  }
  ProgramRun shell(const std::string& line) const { return support::runShell(dir.path, environment + line); }
  std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::directory_iterator(dir.path)) {
      found[entry.path().filename()] = support::readFile(entry.path());
    }
    return found;
  }
  /// No name but those of a complete run, and no content but theirs.
  void expectWholeFilesOnly(const std::map<std::string, std::string>& complete) const {
    for (const auto& [name, content] : files()) {
      const auto whole = complete.find(name);
      ASSERT_TRUE(whole != complete.end()) << name << " was left behind";
      EXPECT_EQ(content, whole->second) << name;
    }
  }
  void removeTables() const {
    for (const auto& [name, content] : files()) {
      if (name.starts_with("pred")) fs::remove(dir / name);
    }
  }

  std::string environment;
};

TEST_F(Outputs, FullDisk) {
  EXPECT_EQ(run().status, 0);
  const auto complete = files();
  ASSERT_EQ(complete.size(), 8U) << "the query and seven tables";
  removeTables();
  const std::uintmax_t limit = 4096;
  ProgramRun full;
  {
    const SoftLimit size(RLIMIT_FSIZE, limit);
    full = run();
  }
  EXPECT_EQ(full.status, 1);
  EXPECT_TRUE(contains(full.out, " Running time: ")) << "the run goes on";
  expectWholeFilesOnly(complete);
  int lost = 0;
  for (const auto& [name, content] : complete) {
    if (content.size() <= limit) continue;
    ++lost;
    EXPECT_TRUE(contains(full.err, "\tCan't save file " + name + " completely: File too large\n"))
        << full.err;
  }
  EXPECT_GE(lost, 2);
}

TEST_F(Outputs, StandardOutputThatFails) {
  ASSERT_EQ(run().status, 0);
  const struct {
    const char *line, *message;
    int status;
  } cases[] = {
      {"$O -in query.tab -noproton >/dev/full", "orbeln: standard output: No space left on device\n", 1},
      {"$O -in query.tab -noproton >&-", "orbeln: standard output: Bad file descriptor\n", 1},
      {"$O -in query.tab -check >/dev/full", "orbeln: standard output: No space left on device\n", 255},
      {"$O-convert query.tab -o - >/dev/full",
       "orbeln-convert: cannot write standard output: No space left on device\n", 1},
      {"$O-convert query.tab -o - >&-", "orbeln-convert: cannot write standard output: Bad file descriptor\n",
       1},
      {"$O-convert query.tab -o new.tab >/dev/full",
       "orbeln-convert: standard output: No space left on device\n", 1},
      {"$O-convert query.tab -o /dev/full", "cannot write /dev/full: No space left on device\n", 1},
      {"$O-restraints pred.tab --format xplor -o - >/dev/full",
       "orbeln-restraints: standard output: No space left on device\n", 1},
      {"$O-restraints pred.tab --format xplor -o - >&-",
       "orbeln-restraints: standard output: Bad file descriptor\n", 1},
      {"$O-report . --tsv - >/dev/full", "orbeln-report: standard output: No space left on device\n", 1},
      {"$O-report . --tsv - >&-", "orbeln-report: standard output: Bad file descriptor\n", 1},
      {"$O-run --help >/dev/full", "orbeln-run: standard output: No space left on device\n", 1}};
  for (const auto& c : cases) {
    const ProgramRun failing = shell(c.line);
    EXPECT_EQ(failing.status, c.status) << c.line;
    EXPECT_TRUE(contains(failing.err, c.message)) << c.line << '\n' << failing.err;
  }
}

TEST_F(Outputs, InterruptedAtAnyMoment) {
  ASSERT_EQ(run().status, 0);
  const auto complete = files();
  int interrupted = 0;
  for (int moment = 1; moment <= 10; ++moment) {
    removeTables();
    const ProgramRun ended = shell("timeout -s " + std::string(moment % 2 == 0 ? "INT" : "TERM") + " 0.0" +
                                   std::to_string(moment % 10) + "5 $O -in query.tab -noproton");
    if (ended.status != 0) ++interrupted;
    expectWholeFilesOnly(complete);
  }
  EXPECT_GE(interrupted, 1);
}

TEST_F(Outputs, DirectoriesAreFilesThatCannotBeOpened) {
  const struct {
    const char *line, *message;
    int status;
  } cases[] = {{"$O -seqSS -blast_check . 2>&1", "Unable to open file", 255},
               {"$O -in . 2>&1", "\tCan't open file . for reading\n", 0},
               {"$O -in query.tab -db . 2>&1", "\tCan't open database file . for reading\n", 0},
               {"$O -in query.tab -check -ref . 2>&1", "Can't open PDB file . for reading\n", 255},
               {"$O-convert . -o x.tab", "orbeln-convert: .: error: Is a directory\n", 1},
               {"$O-restraints . --format xplor -o -", ".: cannot be opened\n", 1}};
  for (const auto& c : cases) {
    const ProgramRun failing = shell(c.line);
    EXPECT_EQ(failing.status, c.status) << c.line;
    EXPECT_TRUE(contains(failing.out + failing.err, c.message)) << c.line << '\n'
                                                                << failing.out << failing.err;
  }
}

TEST_F(Outputs, OutOfMemory) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer reserves more than any limit";
#endif
  support::writeFile(dir / "large.tab", std::string(std::size_t{40} << 20, '\n'));
  for (const char* line : {"$O -in query.tab", "$O-convert large.tab -o x.tab"}) {
    const ProgramRun poor = shell("ulimit -v 50000; " + std::string(line));
    EXPECT_EQ(poor.status, 1) << line;
    EXPECT_TRUE(contains(poor.err, ": out of memory: ")) << line << '\n' << poor.err;
  }
  EXPECT_FALSE(exists("pred.tab") || exists("x.tab"));
}

TEST_F(Outputs, DamagedTablesAreNamed) {
  const support::TempDir copy;
  const fs::path install = support::linkInstallation(copy, {});
  const std::string sum(64, '0'), list = (install / "tab" / "TABLES.sha256").string();
  support::writeFile(list,
                     "# comment\n" + sum + " 1 orbel.tab\n" + sum + " 7 gone.tab\n" + sum + " orbel.tab\n");
  const ProgramRun warned = run({"-check"}, install);
  for (const char* part : {"Warning:: Table ", "orbel.tab is damaged or of another installation: ",
                           ", 1 expected\n", "gone.tab is missing\n", "TABLES.sha256:4: damaged line"}) {
    EXPECT_TRUE(contains(warned.err, part)) << part << '\n' << warned.err;
  }
  const ProgramRun given = run({"-check", "-db", "other.tab"}, install);
  EXPECT_FALSE(contains(given.err, "orbel.tab is damaged")) << "a table given by option is not concerned";
  EXPECT_FALSE(contains(run({"-check"}).err, "Warning:: Table")) << "no list, no warning";
}

}  // namespace
