// Inputs that once showed a fault, through the harness of their reader. Each runs in a process of its own,
// since some readers end theirs; the two statuses are those of the readers, a sanitizer's is another.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "fuzz/harness.h"
#include "support/process.h"

namespace {

constexpr unsigned kSeconds = 20;

/// Status of a reader that was given `input`; minus the signal that ended it, SIGALRM for one that hangs.
int replay(const fuzz::Harness& harness, const std::string& input) {
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    alarm(kSeconds);
    harness.run(harness.name, input);
    std::exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(Fuzz, RegressionInputs) {
  const std::vector<fuzz::Harness> harnesses = fuzz::harnesses();
  int inputs = 0;
  for (const auto& folder : std::filesystem::directory_iterator(ORBELN_FUZZ_REGRESSIONS)) {
    const std::string name = folder.path().filename().string();
    const auto harness = std::find_if(harnesses.begin(), harnesses.end(),
                                      [&](const fuzz::Harness& known) { return known.name == name; });
    ASSERT_NE(harness, harnesses.end()) << name << ": no harness of this name";
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
      const int status = replay(*harness, support::readFile(file.path()));
      EXPECT_TRUE(status == 0 || status == 255) << file.path() << ": status " << status;
      ++inputs;
    }
  }
  EXPECT_GT(inputs, 0);
}

}  // namespace
