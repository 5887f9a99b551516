// Which residues become restraints, how wide, and what is said about the others.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <tuple>

#include "predictions/names.h"
#include "restraints/options.h"
#include "restraints/program.h"
#include "restraints/select.h"
#include "support/process.h"
#include "tools/prediction_tables.h"

namespace {

using predictions::Chi1Row;
using predictions::TorsionRow;
using predictions::TorsionTable;
using restraints::Angle;
using restraints::Options;
using restraints::Restraint;
using restraints::RestraintList;

TorsionRow row(int resid, char code, const char* className, double sd = 15, double phi = -60,
               double psi = -40) {
  return {
      .resid = resid, .code = code, .phi = phi, .psi = psi, .dphi = sd, .dpsi = sd, .className = className};
}

TorsionTable table(const std::string& sequence, std::vector<TorsionRow> rows) {
  TorsionTable t;
  for (std::size_t i = 0; i < sequence.size(); ++i) t.sequence[static_cast<int>(i) + 1] = sequence[i];
  t.rows = std::move(rows);
  return t;
}

Chi1Row chi1(int resid, char code, const char* className, double probability, double angle, double sd = 10) {
  Chi1Row r;
  std::tie(r.resid, r.code, r.className) = std::tie(resid, code, className);
  std::tie(r.chi1, r.dchi1) = std::tie(angle, sd);
  (r.className == "g-" ? r.gm : r.className == "g+" ? r.gp : r.t) = probability;
  return r;
}

std::string names(const RestraintList& list) {
  std::string text;
  for (const Restraint& r : list.restraints) {
    text += (text.empty() ? "" : " ") + std::to_string(r.resid) + r.angleName();
  }
  return text;
}

/// Whether the report has a statement with `part` in it.
bool reports(const RestraintList& list, const std::string& part) {
  return std::any_of(list.report.begin(), list.report.end(),
                     [&](const std::string& statement) { return statement.find(part) != std::string::npos; });
}

TEST(RestraintSelection, ReliableClassesChainEndsAndMissingAngles) {
  const TorsionTable classes =
      table("AAAAAAAA", {row(2, 'A', "Strong"), row(3, 'A', "Generous"), row(4, 'A', "Warn"),
                         row(5, 'A', "Dyn"), row(6, 'A', "Bad"), row(7, 'A', "None", 0, 9999, 9999)});
  const TorsionTable ends = table("AAA", {row(1, 'A', "Strong"), row(2, 'A', "Strong", 10, 9999, -40),
                                          row(3, 'A', "Strong", 10, -60, 999)});
  Options strong, asked, dropped, bad;
  strong.classes = {"Strong"};
  asked.classes = {"Warn", "Dyn"};
  dropped.dropBad = true;
  bad.classes = {"Bad"};
  const struct {
    const TorsionTable& rows;
    Options options;
    const char* names;
    std::vector<const char*> reports;
  } cases[] = {
      {classes,
       {},
       "2PHI 2PSI 3PHI 3PSI 6PHI 6PSI",
       {"skipped, class Warn: 1 (residues 4)", "skipped, class None: 1 (residues 7)",
        "class Bad, far from the reference structure: 1 (residues 6); the class without it decides"}},
      {classes, dropped, "2PHI 2PSI 3PHI 3PSI", {"(residues 6); left out", "skipped, class Bad: 1"}},
      {classes, bad, "6PHI 6PSI", {"as a class of their own", "class Bad was asked for"}},
      {classes, strong, "2PHI 2PSI", {}},
      {classes, asked, "4PHI 4PSI 5PHI 5PSI", {"class Dyn was asked for"}},
      {ends,
       {},
       "1PSI 2PSI 3PHI",
       {"PHI of the first residue: 1 (residues 1)", "PSI of the last residue: 1 (residues 3)",
        "PHI: no angle: 1 (residues 2)"}}};
  for (const auto& c : cases) {
    const RestraintList list = selectRestraints(c.rows, {}, c.options);
    EXPECT_EQ(names(list), c.names);
    for (const char* part : c.reports) EXPECT_TRUE(reports(list, part)) << part;
  }
}

TEST(RestraintSelection, WidthRule) {
  const struct {
    double sd, factor, floor, cap, width;  // width 0: no restraint
  } cases[] = {{15, 2, 20, 179, 30}, {4, 2, 20, 179, 20},      {0, 2, 20, 179, 20},     {15, 3, 20, 179, 45},
               {4, 1, 10, 179, 10},  {60, 2, 20, 90, 90},      {89.9, 2, 20, 179, 179}, {90, 2, 20, 179, 0},
               {180, 2, 20, 60, 0},  {7.774, 2, 10, 179, 15.5}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.sd << " x " << c.factor << ", " << c.floor << " to " << c.cap);
    Options options;
    std::tie(options.factor, options.floor, options.cap) = std::tie(c.factor, c.floor, c.cap);
    const RestraintList list = selectRestraints(table("AAA", {row(2, 'A', "Strong", c.sd)}), {}, options);
    ASSERT_EQ(list.restraints.size(), c.width > 0 ? 2U : 0U);
    EXPECT_EQ(reports(list, "full circle"), c.width == 0);
    for (const Restraint& r : list.restraints) EXPECT_NEAR(r.halfWidth, c.width, 1e-9);
  }
}

TEST(RestraintSelection, SideChains) {
  const TorsionTable t =
      table("LLVVIAGL",
            {row(1, 'L', "Strong"), row(2, 'L', "Warn"), row(3, 'V', "Strong"), row(4, 'V', "Strong"),
             row(5, 'I', "Strong"), row(6, 'A', "Strong"), row(7, 'G', "Strong"), row(8, 'L', "Strong")});
  const std::vector<Chi1Row> rotamers = {chi1(1, 'L', "t", 0.95, 178, 20), chi1(2, 'L', "t", 0.99, 178),
                                         chi1(3, 'V', "g-", 0.95, -60, 3), chi1(4, 'V', "t", 0.93, 175),
                                         chi1(5, 'I', "g-", 0.89, -60),    chi1(6, 'A', "t", 1, 60),
                                         chi1(7, 'G', "t", 1, 60),         chi1(8, 'L', "na", 0, 9999, 9999)};
  const RestraintList list = selectRestraints(t, rotamers, Options{});
  std::string found;
  for (const Restraint& r : list.restraints) {
    if (r.angle != Angle::Chi1) continue;
    found += std::to_string(r.resid) + ":" + r.atoms[3].name +
             tool_tables::line("=%g+-%g ", r.centre, r.halfWidth);
  }
  EXPECT_EQ(found, "1:CG=178+-40 3:CG1=60+-30 4:CG1=-65+-30 ");
  for (const char* part :
       {"valine chi1: 120 degrees added back to the table's value for N-CA-CB-CG1: residues 3, 4",
        "CHI1: backbone class Warn: 1 (residues 2)", "CHI1: rotamer probability below 0.9: 1 (residues 5)",
        "CHI1: no rotamer predicted: 1 (residues 8)"})
    EXPECT_TRUE(reports(list, part)) << part;
}

TEST(RestraintSelection, ResidueRanges) {
  EXPECT_EQ(predictions::residueRanges({}), "");
  EXPECT_EQ(predictions::residueRanges({-2, -1, 0, 4, 6, 7, 9, 10, 11}), "-2 to 0, 4, 6, 7, 9-11");
}

class RestraintProgram : public testing::Test {
 protected:
  /// Status of a run on `table`; messages stay in `err`.
  int run(const std::string& table, const char* target, const std::string& options) {
    support::writeFile(dir / "pred.tab", table);
    std::vector<std::string> words = {(dir / "pred.tab").string(), "-o", (dir / target).string()};
    for (const std::string& word : support::split(options)) words.push_back(word);
    err.str("");
    return restraints::runProgram(words, out, err);
  }
  const support::TempDir dir;
  const std::string good = tool_tables::torsionTable(
      "x", 1, "AAA", {{2, 'A', -60, -40, 5, 5, "Strong"}, {3, 'A', -60, -40, 5, 5, "Warn"}});
  std::ostringstream out, err;
};

/// Faulty tables and command lines: one message, the right status, no output.
TEST_F(RestraintProgram, FaultsAreNamed) {
  const auto changed = [&](const std::string& from, const std::string& to) {
    std::string text = good;
    text.replace(text.find(from), from.size(), to);
    return text;
  };
  const std::string xplor = "--format xplor";
  const struct {
    const char* name;
    std::string content, options;
    int status;
    std::string message;
  } cases[] = {
      {"value missing", changed("  -40.000", ""), xplor, 1, "pred.tab:10: expected 11 values, found 10"},
      {"no number", changed("  -60.000", "  minus60"), xplor, 1, "pred.tab:10: PHI is 'minus60'"},
      {"not a number", changed("  -60.000", "      nan"), xplor, 1, "pred.tab:10: PHI is 'nan'"},
      {"unknown class", changed("Warn", "Good"), xplor, 1, "pred.tab:11: CLASS is 'Good'"},
      {"residue twice", changed("    3 A", "    2 A"), xplor, 1, "pred.tab:11: residue 2 does not follow"},
      {"column missing", changed(" DPHI", " XPHI"), xplor, 1, "no column DPHI"},
      {"bad format", changed("%2d %2d %s", "%2d %2x %s"), xplor, 1, "pred.tab:8: bad field format"},
      {"no rows", good.substr(0, good.find("    2 A")), xplor, 1, "no rows"},
      {"other file", "HEADER\nATOM\n", xplor, 1, "no VARS and FORMAT lines"},
      {"zero byte", good + std::string(1, '\0'), xplor, 1, "a zero byte"},
      {"nothing reliable", changed("Strong", "Dyn"), xplor, 1, "no residue gives a restraint"},
      {"no format", good, "", 2, "--format is missing"},
      {"unknown format", good, "--format pdb", 2, "unknown format 'pdb'"},
      {"unknown option", good, "--format xplor --wide", 2, "unknown option --wide"},
      {"no value", good, "--format", 2, "--format needs a value"},
      {"odd number", good, "--format xplor --factor 2x", 2, "--factor needs a number"},
      {"class None", good, "--format xplor --classes None", 2, "None has no angles"},
      {"no structure", good, "--format amber", 2, "--coordinates"},
      {"Bad in and out", good, "--format xplor --drop-bad --classes bad", 2, "exclude each other"},
      {"odd numbering", good, "--format xplor --numbers mine", 2, "original or table, not 'mine'"},
      {"input table missing", good, "--format xplor --input-table none.tab", 1, "none.tab: cannot be opened"},
      {"no NEF file", good, "--into none.nef", 1, "none.nef"},
      {"into another format", good, "--into none.nef --format cyana", 2, "--into is for the format nef"},
      {"flag with value", good, "--format xplor --wrap=1", 2, "takes no value"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(run(c.content, "out", c.options), c.status);
    EXPECT_NE(err.str().find(c.message), std::string::npos) << err.str();
    EXPECT_FALSE(std::filesystem::exists(dir / "out"));
  }
}

TEST_F(RestraintProgram, UnwritableOutputLeavesNothingBehind) {
  std::filesystem::create_directory(dir / "taken");
  for (const char* target : {"taken", "no/such/file"}) {
    EXPECT_EQ(run(good, target, "--format cyana"), 1);
    EXPECT_NE(err.str().find("cannot write"), std::string::npos);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path), {}), 2);
}

TEST_F(RestraintProgram, LineEndsOfOtherSystems) {
  std::string text = good;
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.insert(at, "\r");
  EXPECT_EQ(run(text, "out", "--format cyana"), 0) << err.str();
  const std::string written = support::readFile(dir / "out");
  EXPECT_NE(written.find("2 ALA   PHI      -80.0    -40.0   1.00"), std::string::npos) << written;
}

}  // namespace
