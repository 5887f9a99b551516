// The checked writer: where a result lands, with which mode, and what is left when it cannot be written.
#include "tables/OutputFile.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <future>
#include <set>

#include "table_test.h"

namespace {

namespace fs = std::filesystem;
using State = WriteOutcome::State;

class OutputFileTest : public TableTest {
 protected:
  fs::path folder() const { return path(""); }
  /// Names in the folder, temporary ones included.
  std::set<std::string> names() const {
    std::set<std::string> found;
    for (const auto& entry : fs::directory_iterator(folder())) found.insert(entry.path().filename());
    return found;
  }
  unsigned mode(const std::string& name) const {
    struct stat status {};
    return stat(path(name).c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
  }
  /// Runs `body` in a child process, since limits, users and signals belong to a process. Its state as of
  /// waitpid.
  template <class Body>
  static int inChild(Body body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int state = 0;
    waitpid(child, &state, 0);
    return state;
  }
  static void limitFileSize(rlim_t bytes) {
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
};

TEST_F(OutputFileTest, ReplacesFilesAndKeepsTheirMode) {
  const mode_t before = umask(027);
  EXPECT_EQ(writeWholeFile(path("new"), "first").state, State::Whole);
  umask(before);
  EXPECT_EQ(mode("new"), 0640U) << "a new file obeys the umask";
  for (const unsigned kept : {0600U, 0664U, 0755U}) {
    fs::permissions(path("new"), fs::perms(kept));
    EXPECT_EQ(writeWholeFile(path("new"), "again").state, State::Whole);
    EXPECT_EQ(mode("new"), kept);
  }
  EXPECT_EQ(read("new"), "again");
  EXPECT_EQ(names(), std::set<std::string>{"new"});
}

TEST_F(OutputFileTest, ReplacesTheTargetOfALink) {
  fs::create_directory(path("far"));
  file("old", "far/target");
  const std::pair<const char*, const char*> links[] = {
      {"relative", "far/target"}, {"twice", "relative"}, {"dangling", "far/made"}};
  for (const auto& [link, target] : links) {
    fs::create_symlink(target, path(link));
    EXPECT_EQ(writeWholeFile(path(link), link).state, State::Whole);
    EXPECT_TRUE(fs::is_symlink(path(link)));
    EXPECT_EQ(read(link), link);
  }
  EXPECT_EQ(read("far/target"), "twice");
  EXPECT_EQ(read("far/made"), "dangling");
  fs::create_symlink("loop", path("loop"));
  EXPECT_EQ(writeWholeFile(path("loop"), "").reason, "Too many levels of symbolic links");
}

TEST_F(OutputFileTest, WritesPipesAndNamedDescriptorsDirectly) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  auto reader = std::async(std::launch::async, [&] { return read("pipe"); });
  EXPECT_EQ(writeWholeFile(path("pipe"), "through").state, State::Whole);
  EXPECT_EQ(reader.get(), "through");
  EXPECT_TRUE(fs::is_fifo(path("pipe")));

  // Redirected to a file, /dev/stdout continues it instead of replacing it.
  const auto printed = support::captured([] {
    std::printf("before ");
    EXPECT_EQ(writeWholeFile("/dev/stdout", "table").state, State::Whole);
    std::printf(" after");
  });
  EXPECT_EQ(printed.out, "before table after");
}

TEST_F(OutputFileTest, ReportsWhatCannotBeOpened) {
  fs::create_directory(path("folder"));
  file("", "plain");
  const std::pair<std::string, const char*> cases[] = {{"", "No such file or directory"},
                                                       {path("folder"), "Is a directory"},
                                                       {path("new/"), "Is a directory"},
                                                       {path("none/x"), "No such file or directory"},
                                                       {path("plain/x"), "Not a directory"}};
  for (const auto& [target, reason] : cases) {
    const WriteOutcome outcome = writeWholeFile(target, "text");
    EXPECT_EQ(outcome.state, State::NotOpened) << target;
    EXPECT_EQ(outcome.reason, reason) << target;
  }
  EXPECT_EQ(names(), (std::set<std::string>{"folder", "plain"}));
}

TEST_F(OutputFileTest, LeavesTheOlderFileWhenThereIsNoRoom) {
  const std::string large(100000, 'x');
  file("old", "kept");
  const int state = inChild([&] {
    limitFileSize(4096);
    const WriteOutcome replaced = writeWholeFile(path("kept"), large);
    const WriteOutcome made = writeWholeFile(path("new"), large);
    return replaced.state == State::Incomplete && replaced.reason == "File too large" &&
                   made.state == State::Incomplete
               ? 0
               : 1;
  });
  EXPECT_EQ(state, 0) << "SIGXFSZ must not end the process";
  EXPECT_EQ(read("kept"), "old");
  EXPECT_EQ(names(), std::set<std::string>{"kept"});
  EXPECT_EQ(writeWholeFile("/dev/full", "x").reason, "No space left on device");
}

/// As an ordinary user, whom a folder can keep out.
TEST_F(OutputFileTest, WritesInPlaceWhereTheFolderTakesNoNewFiles) {
  file("old content", "open");
  file("old", "closed");
  fs::permissions(path("open"), fs::perms(0666));
  fs::permissions(path("closed"), fs::perms(0444));
  fs::permissions(folder(), fs::perms(0555));
  const int state = inChild([&] {
    if (geteuid() == 0 && setuid(65534) != 0) return 9;
    if (writeWholeFile(path("open"), "new").state != State::Whole) return 1;
    if (writeWholeFile(path("closed"), "new").reason != "Permission denied") return 2;
    if (writeWholeFile(path("made"), "new").state != State::NotOpened) return 3;
    if (support::readFile(path("open")) != "new") return 4;
    limitFileSize(4096);
    return writeWholeFile(path("open"), std::string(5000, 'x')).state == State::Incomplete ? 0 : 5;
  });
  fs::permissions(folder(), fs::perms(0755));
  EXPECT_EQ(WEXITSTATUS(state), 0);
  EXPECT_EQ(read("open"), "") << "no half of a table";
  EXPECT_EQ(read("closed"), "old");
}

TEST_F(OutputFileTest, DoesNotFollowLinksOfOthersInASharedFolder) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a second user";
  support::TempDir victims;
  support::writeFile(victims / "victim", "precious");
  fs::create_symlink(victims / "victim", path("trap"));
  ASSERT_EQ(lchown(path("trap").c_str(), 65534, 65534), 0);
  fs::permissions(folder(), fs::perms(01777));
  EXPECT_EQ(writeWholeFile(path("trap"), "text").reason, "Permission denied");
  EXPECT_EQ(support::readFile(victims / "victim"), "precious");
}

TEST_F(OutputFileTest, ASignalTakesUnfinishedFilesAway) {
  file("old", "kept");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const int state = inChild([&] {
      std::signal(signal, SIG_DFL);
      const OutputFile replacing(path("kept")), making(path("new"));
      std::raise(signal);
      return 0;
    });
    EXPECT_TRUE(WIFSIGNALED(state) && WTERMSIG(state) == signal) << "the parent sees the signal";
    EXPECT_EQ(names(), std::set<std::string>{"kept"});
  }
  const int ignored = inChild([&] {
    std::signal(SIGHUP, SIG_IGN);  // nohup
    OutputFile made(path("made"));
    std::raise(SIGHUP);
    return made.finish("whole").empty() ? 0 : 1;
  });
  EXPECT_EQ(ignored, 0);
  EXPECT_EQ(read("made"), "whole");
  EXPECT_EQ(read("kept"), "old");
}

}  // namespace
