// A table given by option acts as the same table in the installation would.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>

#include "support/process.h"

namespace {

namespace fs = std::filesystem;
const fs::path kInstallation = fs::path(ORBELN_GOLDEN) / "installation";

/// Every table that a run in `folder` leaves, by name.
std::map<std::string, std::string> outputs(const fs::path& folder, const fs::path& install,
                                           std::string words) {
  words = "-in ../query.tab " + words;
  fs::create_directory(folder);
  std::map<std::string, std::string> result;
  const support::ProgramRun run = support::runOrbeln(folder, install, support::split(words));
  EXPECT_EQ(run.status, 0) << run.err;
  for (const auto& file : fs::directory_iterator(folder))
    result[file.path().filename().string()] = support::readFile(file.path());
  result["outliers"] = run.out.substr(0, run.out.find(" Running time"));
  return result;
}

/// The table with the rows of `a` and `b` exchanged, so that every number stays a sensible one.
std::string exchanged(const std::string& table, const std::string& a, const std::string& b) {
  std::string text = std::regex_replace(table, std::regex("\n( +)" + a + " "), "\n$1@ ");
  text = std::regex_replace(text, std::regex("\n( +)" + b + " "), "\n$1" + a + " ");
  return std::regex_replace(text, std::regex("\n( +)@ "), "\n$1" + b + " ");
}

TEST(TableOptions, ActAsTheTablesOfTheInstallation) {
  const support::TempDir dir;
  fs::copy(kInstallation / "in/gaps.tab", dir / "query.tab");
  const auto usual = outputs(dir / "usual", kInstallation, "");
  const struct {
    const char *option, *table, *a, *b;
  } cases[] = {{"w", "weight.tab", "R1", "AVG"},    {"homo", "homology.tab", "A", "W"},
               {"limits", "sslimit.tab", "A", "G"}, {"rand", "randcoil.tab", "A", "L"},
               {"adj", "rcadj.tab", "A", "L"},      {"prev", "rcprev.tab", "A", "L"},
               {"next", "rcnext.tab", "A", "L"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.option);
    const std::string option = c.option, name = c.table;
    const fs::path other = dir / ("with_" + option);
    fs::create_directories(other / "tab");
    for (const auto& file : fs::directory_iterator(kInstallation / "tab"))
      fs::create_symlink(file.path(), other / "tab" / file.path().filename());
    fs::remove(other / "tab" / name);
    support::writeFile(other / "tab" / name,
                       exchanged(support::readFile(kInstallation / "tab" / name), c.a, c.b));

    const auto installed = outputs(dir / (option + "_installed"), other, "");
    const auto given = outputs(dir / (option + "_given"), kInstallation,
                               "-" + option + " ../with_" + option + "/tab/" + name);
    EXPECT_EQ(given.size(), installed.size());
    for (const auto& [file, text] : installed) EXPECT_TRUE(given.at(file) == text) << file << " differs";
    EXPECT_TRUE(given != usual) << "the option changed nothing";
  }
}

}  // namespace
