// Input that cannot be converted: one message with file and line, an exit status, and no output.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "convert_support.h"
#include "run/process.h"
#include "support/process.h"

namespace {

using support::Converted;
using support::convertString;
using support::replaced;
using support::with;

const std::string kStar =                                                   // line
    "data_1\nsave_protein\n_Entity.ID 1\nloop_\n_Entity_poly_seq.Num\n"     // 1-5
    "_Entity_poly_seq.Mon_ID\n1 GLY\n2 ALA\n3 LEU\n4 LYS\n5 GLU\n6 VAL\n"   // 6-12
    "stop_\nsave_\nsave_shifts\nloop_\n_Atom_chem_shift.Entity_ID\n"        // 13-17
    "_Atom_chem_shift.Comp_index_ID\n_Atom_chem_shift.Comp_ID\n"            // 18-19
    "_Atom_chem_shift.Atom_ID\n_Atom_chem_shift.Val\n"                      // 20-21
    "1 1 GLY CA 45.1\n1 2 ALA CA 52.4\n1 3 LEU CA 55.1\n1 4 LYS CA 56.2\n"  // 22-25
    "1 5 GLU CA 56.9\n1 6 VAL CA 62.1\nstop_\nsave_\n";                     // 26-29

struct BadCase {
  const char* name;
  std::string text;
  int line;
  const char* message;
};

TEST(ConvertBadInput, OneMessageWithTheLine) {
  ASSERT_TRUE(convertString(kStar).ok) << convertString(kStar).report();
  const std::string csv =
      "resid,resname,atom,shift\n1,GLY,CA,45.1\n2,ALA,CA,52.4\n3,LEU,CA,55.1\n3,LEU,CB,42.0\n";
  std::string otherChain = kStar;
  for (const char* name : {"GLY CA", "ALA CA", "LEU CA", "LYS CA", "GLU CA"})
    otherChain = replaced(otherChain, name, "TRP CA");
  const std::vector<BadCase> cases = {
      {"many other types", otherChain, 22, "residue 1 is GLY in the sequence, TRP in the shift list"},
      {"cut off between rows", kStar.substr(0, kStar.find("1 5 GLU")), 26, "cut off"},
      {"cut off in a row", kStar.substr(0, kStar.find(" 56.2")), 25, "5 columns"},
      {"cut off before the shifts", kStar.substr(0, kStar.find("4 LYS")), 10, "cut off"},
      {"no shifts", "data_x\nloop_\n_Peak.ID\n1\n", 0, "its loops are _Peak"},
      {"open text block", replaced(kStar, "_Entity.ID 1", "_Entity.ID 1\n_Entity.Details\n;text"), 5,
       "never ends"},
      {"open quote", replaced(kStar, "2 ALA\n", "2 'ALA\n"), 8, "closing '"},
      {"missing value", replaced(kStar, "1 3 LEU CA 55.1", "1 3 LEU 55.1"), 24, "line 24 has 4"},
      {"nucleic acid",
       replaced(replaced(kStar.substr(kStar.find("save_shifts")), "GLY CA", "G H1'"),
                "1 2 ALA CA 52.4\n1 3 LEU CA 55.1\n1 4 LYS CA 56.2\n1 5 GLU CA 56.9\n1 6 VAL CA 62.1\n", ""),
       0, "no protein"},
      {"atom twice", replaced(kStar, "1 3 LEU", "1 2 ALA CA 52.9\n1 3 LEU"), 24, "line 23 (52.4)"},
      {"residue outside", replaced(kStar, "1 6 VAL", "1 7 VAL"), 27, "not in the sequence"},
      {"swapped columns",
       replaced(replaced(kStar, "_Atom_chem_shift.Val", "_x"), "shift.Atom_ID\n_x",
                "shift.Val\n_Atom_chem_shift.Atom_ID"),
       22, "is no number"},
      {"word for a number", replaced(kStar, "56.2", "56,2"), 25, "'56,2'"},
      {"shift and error swapped",
       "resid,resname,atom,shift,error\n1,GLY,CA,0.2,45.1\n2,ALA,CA,0.2,52.4\n3,LEU,CA,0.2,55.1\n", 2,
       "no protein has such shifts"},
      {"short row", replaced(csv, "ALA,CA,52.4", "ALA,52.4"), 3, "found 3"},
      {"no residue number", replaced(csv, ",GLY", "x,GLY"), 2, "'1x' is no integer"},
      {"no columns at all", "some words\nand others\n", 1, "--columns"},
      {"open quote in a table", replaced(csv, ",LEU,CA", ",\"LEU,CA"), 4, "never ends"},
      {"peak list", "Assignment w1 w2\nM1N-H 120.1 8.2\n", 0, "peak list"},
      {"coordinates", "data_x\nloop_\n_atom_site.id\n1\n", 0, "mmCIF"},
      {"compressed", std::string("\x1F\x8B\x08\x00", 4), 0, "gunzip"},
      {"nothing", " \r\n\n", 0, "empty"},
      {"only missing values", "resid,resname,atom,shift\n1,GLY,CA,999\n", 0, "backbone shift"}};
  for (const BadCase& c : cases) {
    const Converted result = convertString(c.text);
    EXPECT_FALSE(result.ok) << c.name;
    EXPECT_EQ(result.error().line, c.line) << c.name << ": " << result.report();
    EXPECT_NE(result.error().text.find(c.message), std::string::npos) << c.name << ": " << result.report();
    EXPECT_EQ(result.error().file, "input.txt") << c.name;
  }
}

TEST(ConvertBadInput, DoubtfulRowsAreTakenOrSkippedWithAWarning) {
  const struct {
    const char* name;
    std::string text;
    std::size_t rows;
    const char* warning;
  } cases[] = {
      {"one residue of another type", replaced(kStar, "1 3 LEU CA", "1 3 ILE CA"), 5,
       "input.txt:24: warning: residue types differ"},
      {"tag without value", replaced(kStar, "_Entity.ID 1", "_Entity.ID"), 6, "_Entity.ID has no value"},
      {"frame inside a frame", replaced(kStar, "stop_\nsave_\nsave_shifts", "stop_\nsave_shifts"), 6,
       "before the save frame 'protein'"},
      {"last frame not ended", kStar.substr(0, kStar.rfind("save_")), 6, "its end is taken as complete"},
      {"stray value", kStar + "}\n", 6, "follows no tag"},
      {"broken row in a loop that is not read", kStar + "loop_\n_Peak.ID\n_Peak.Val\n1 2 3\n", 6,
       "not needed"},
      {"old placeholders", replaced(replaced(kStar, "55.1", "@"), "56.2", "****"), 4, nullptr},
      {"zero", replaced(kStar, "55.1", "0.000"), 5, "input.txt:24: warning: a shift of 0"},
      {"999", replaced(kStar, "55.1", "999.000"), 5, nullptr},
      {"no number after all", replaced(kStar, "55.1", "nan"), 5, nullptr},
      {"the same value twice", replaced(kStar, "1 3 LEU", "1 2 ALA CA 52.40\n1 3 LEU"), 6,
       "input.txt:24: warning: A2 CA"},
      {"one impossible shift", replaced(kStar, "55.1", "155.1"), 6, "input.txt:24: warning: no protein has"}};
  for (const auto& c : cases) {
    const Converted result = convertString(c.text);
    EXPECT_TRUE(result.ok) << c.name << result.report();
    EXPECT_EQ(result.rows().size(), c.rows) << c.name << result.report();
    const bool warned = result.log.count(tools::Severity::Warning) > 0;
    EXPECT_EQ(warned, c.warning != nullptr) << c.name << result.report();
    if (c.warning != nullptr) {
      EXPECT_NE(result.report().find(c.warning), std::string::npos) << result.report();
    }
  }
  const Converted first = convertString(replaced(kStar, "1 3 LEU", "1 2 ALA CA 52.9\n1 3 LEU"),
                                        with(&convert::Settings::keepFirst, true));
  EXPECT_EQ(first.rows()[1], "2 A CA 52.4");
}

int convertProgram(const support::TempDir& folder, const std::vector<std::string>& arguments,
                   std::string& said) {
  const int status = run::execute(
      {ORBELN_CONVERT_BINARY, arguments, folder.path.string(), (folder / "log").string(), {}}, [] {});
  said = support::readFile(folder / "log");
  return status;
}

std::size_t filesIn(const support::TempDir& folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder.path), {}));
}

TEST(ConvertBadInput, ProgramLeavesNoHalfWrittenFile) {
  const support::TempDir folder;
  std::string said;
  support::writeFile(folder / "good.str", "\xEF\xBB\xBF" + replaced(kStar, "\n", "\r\n"));
  support::writeFile(folder / "bad.str", kStar.substr(0, kStar.find("1 5 GLU")));
  EXPECT_EQ(convertProgram(folder, {"good.str", "-o", "kept.tab"}, said), 0) << said;
  const std::string before = support::readFile(folder / "kept.tab");
  const std::size_t files = filesIn(folder);
  EXPECT_EQ(convertProgram(folder, {"bad.str", "-o", "kept.tab"}, said), 1);
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_NE(said.find("bad.str:"), std::string::npos) << said;
  EXPECT_EQ(support::readFile(folder / "kept.tab"), before) << "an older result survives a failure";
  EXPECT_EQ(convertProgram(folder, {"good.str", "-o", "missing/out.tab"}, said), 1) << said;
  EXPECT_EQ(convertProgram(folder, {"good.str", "-o", "x.tab", "--chain", "Z"}, said), 1) << said;
  EXPECT_NE(said.find("no chain 'Z'"), std::string::npos) << said;
  EXPECT_EQ(filesIn(folder), files);
}

TEST(ConvertBadInput, CommandLine) {
  const support::TempDir folder;
  std::string said;
  const std::pair<const char*, const char*> wrong[] = {{"", "which file"},
                                                       {"a b -o c", "one input file"},
                                                       {"a", "-o"},
                                                       {"a -o", "needs a value"},
                                                       {"a -o c --chian A", "did you mean --chain?"},
                                                       {"a -o c --strict=yes", "takes no value"},
                                                       {"a -o c --format pdb", "unknown format"}};
  for (const auto& [arguments, message] : wrong) {
    EXPECT_EQ(convertProgram(folder, support::split(arguments), said), 2) << said;
    EXPECT_NE(said.find(message), std::string::npos) << said;
  }
  EXPECT_EQ(convertProgram(folder, {"absent.str", "-o", "c"}, said), 1) << said;
  EXPECT_EQ(convertProgram(folder, {"--help"}, said), 0);
  EXPECT_NE(said.find("Exit status"), std::string::npos);
  support::writeFile(folder / "good.str", kStar);
  EXPECT_EQ(convertProgram(folder, {"good.str", "--output=-", "-q"}, said), 0);
  EXPECT_NE(said.find("DATA SEQUENCE GALKEV"), std::string::npos) << said;
}

}  // namespace
