// Whole runs on a synthetic installation with dense random networks, compared byte by byte with outputs that
// a second, independent computation has confirmed (tests/golden/README.md).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <set>
#include <sstream>

#include "support/process.h"

namespace {

namespace fs = std::filesystem;
using support::ProgramRun;

const fs::path kGolden = ORBELN_GOLDEN;  // holds installation/ and expected/, unpacked by the build

std::vector<std::string> lines(const fs::path& file) {
  std::vector<std::string> result;
  std::ifstream in(file, std::ios::binary);
  for (std::string line; std::getline(in, line);) result.push_back(line + (in.eof() ? "" : "\n"));
  return result;
}

/// The line without what another run or release may change: processor time, version number.
std::string comparable(const std::string& line) {
  for (const std::string lead : {" Running time: ", "ORBEL-N version "}) {
    const std::size_t at = line.find(lead);
    if (at == std::string::npos) continue;
    const std::size_t begin = at + lead.size();
    return line.substr(0, begin) + line.substr(std::min(line.find(' ', begin), line.size()));
  }
  return line;
}

/// "file:line: expected ... got ..." of the first line that differs; empty when the files are equal.
std::string firstDifference(const fs::path& expected, const fs::path& actual) {
  const auto want = lines(expected), got = lines(actual);
  static const std::string kEnd = "(end of file)";
  for (std::size_t i = 0; i < std::max(want.size(), got.size()); ++i) {
    const std::string& a = i < want.size() ? want[i] : kEnd;
    const std::string& b = i < got.size() ? got[i] : kEnd;
    if (a == b || comparable(a) == comparable(b)) continue;
    return actual.filename().string() + ":" + std::to_string(i + 1) + ":\n  expected " + a + "\n  got      " +
           b;
  }
  return {};
}

std::set<std::string> names(const fs::path& folder) {
  std::set<std::string> result;
  for (const auto& entry : fs::directory_iterator(folder)) result.insert(entry.path().filename().string());
  return result;
}

std::vector<std::string> argumentLines() {
  std::vector<std::string> result;
  std::ifstream in(ORBELN_GOLDEN_RUNS);
  for (std::string line; std::getline(in, line);) result.push_back(line);
  return result;
}

/// Runs line `line` of runs.txt with the installation `home` and compares every byte.
void expectGoldenRun(int line, const fs::path& home) {
  const std::string arguments = argumentLines().at(static_cast<std::size_t>(line) - 1);
  SCOPED_TRACE("orbeln " + arguments);
  const support::TempDir folder;
  // By a relative name, so that no path of this machine is printed.
  fs::create_directory_symlink(home, folder / "home");
  const fs::path run = folder / "run", inputs = kGolden / "installation/in";
  fs::copy(inputs, run);
  const ProgramRun result = support::runOrbeln(run, "../home", support::split(arguments));
  support::writeFile(run / "status.txt", std::to_string(result.status) + "\n");
  support::writeFile(run / "stdout.txt", result.out);
  support::writeFile(run / "stderr.txt", result.err);

  std::ostringstream number;
  number << std::setw(2) << std::setfill('0') << line;
  const fs::path expected = kGolden / "expected" / number.str();
  std::set<std::string> files = names(inputs);
  for (const std::string& name : files) EXPECT_EQ(firstDifference(inputs / name, run / name), "");
  for (const std::string& name : names(expected)) {
    files.insert(name);
    if (fs::exists(run / name)) {
      EXPECT_EQ(firstDifference(expected / name, run / name), "");
    } else {
      ADD_FAILURE() << name << " was not written";
    }
  }
  EXPECT_EQ(names(run), files) << "a file that nobody expects";
}

/// The golden tables in `folder`/tab: links, and a copy of the image that may be changed.
void linkTables(const fs::path& folder) {
  fs::create_directories(folder / "tab");
  for (const auto& entry : fs::directory_iterator(kGolden / "installation/tab")) {
    const fs::path name = entry.path().filename();
    if (name == "TABLES.image") {
      fs::copy_file(entry.path(), folder / "tab" / name);
    } else {
      fs::create_symlink(entry.path(), folder / "tab" / name);
    }
  }
}

class Golden : public testing::TestWithParam<int> {};

TEST_P(Golden, EveryByteOfARun) {
  ASSERT_TRUE(fs::exists(kGolden / "installation/tab/TABLES.image"));
  expectGoldenRun(GetParam(), kGolden / "installation");
}

INSTANTIATE_TEST_SUITE_P(Line, Golden, testing::Range(1, static_cast<int>(argumentLines().size()) + 1));

class GoldenText : public testing::TestWithParam<int> {};

/// Without the image of the tables the text gives the same bytes: lines that together read every table.
TEST_P(GoldenText, EveryByteOfARun) {
  const support::TempDir folder;
  linkTables(folder.path);
  fs::remove(folder / "tab/TABLES.image");
  expectGoldenRun(GetParam(), folder.path);
}

INSTANTIATE_TEST_SUITE_P(Line, GoldenText, testing::Values(1, 4, 10, 13, 24));

/// What may happen to an image changes no byte of a run, whether before it or all through it.
TEST(GoldenImage, DamagedOrRewrittenImagesChangeNothing) {
  const support::TempDir folder;
  linkTables(folder.path);
  const fs::path image = folder / "tab/TABLES.image";
  const auto size = std::to_string(fs::file_size(image));
  const auto patch = [](const std::string& place) {
    return "printf '\\377\\001' | dd of=tab/TABLES.image conv=notrunc bs=1 status=none seek=$((" + place +
           "))";
  };
  for (const std::string& damage :
       {patch("100"), patch(size + "/2"), patch(size + "/3*2"),
        std::string("truncate -s 300000 tab/TABLES.image"), std::string(": > tab/TABLES.image")}) {
    SCOPED_TRACE(damage);
    fs::copy_file(kGolden / "installation/tab/TABLES.image", image, fs::copy_options::overwrite_existing);
    ASSERT_EQ(support::runShell(folder.path, damage + " && sleep 0.03").status, 0);
    expectGoldenRun(1, folder.path);
  }
  // Cut off and written in place, again and again, while runs use it.
  const std::string good = (kGolden / "installation/tab/TABLES.image").string();
  const std::string loop = "touch going; (while test -e going; do cat '" + good +
                           "' > tab/TABLES.image; sleep 0.05; truncate -s 9000 tab/TABLES.image; done) "
                           ">/dev/null 2>&1 & echo started";
  ASSERT_EQ(support::runShell(folder.path, loop).status, 0);
  for (const int line : {1, 1, 4, 10, 24}) expectGoldenRun(line, folder.path);
  fs::remove(folder / "going");
  support::runShell(folder.path, "sleep 0.3");
}

}  // namespace
