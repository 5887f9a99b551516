// Every restraint format read back by a small reader of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

#include "restraints/program.h"
#include "support/process.h"
#include "tools/prediction_tables.h"

namespace {

using tool_tables::Chi1;
using tool_tables::Torsion;

/// A restraint as a file states it.
struct ReadBack {
  std::string atoms;  ///< "5:C 6:N 6:CA 6:C", or "6 PHI" where the file names the angle
  double centre = 0, halfWidth = 0;
};

double wrapped(double angle) {
  while (angle > 180) angle -= 360;
  while (angle <= -180) angle += 360;
  return angle;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

/// `text` with brackets, commas and the like made blanks.
std::vector<std::string> wordsWithout(std::string text, const std::string& marks) {
  for (char& c : text) {
    if (marks.find(c) != std::string::npos) c = ' ';
  }
  return support::split(text);
}

/// Where the words of a restraint line stand, brackets and commas made blanks.
struct Layout {
  const char* format;
  const char* marks;
  std::size_t words;                         ///< lines of any other length hold no restraint
  std::size_t atom, step, name;              ///< first atom, words between atoms, its name behind its number
  std::size_t first, second;                 ///< bounds, or centre and half width
  bool bounds, numbered;                     ///< numbered: atoms by their number in the coordinate file
  std::map<std::size_t, std::string> fixed;  ///< words that every line repeats
};
const std::vector<Layout> kLayouts = {
    {"xplor", "()", 25, 2, 5, 3, 22, 23, false, false, {{0, "assign"}, {24, "2"}}},
    {"cyana", "", 6, 0, 0, 2, 3, 4, true, false, {}},
    {"nef", "", 27, 4, 4, 2, 23, 24, true, false, {{2, "."}, {3, "A"}, {7, "A"}, {15, "A"}}},
    {"gromacs", "", 8, 0, 1, 0, 5, 6, false, true, {{4, "1"}}},
    {"amber", "=,", 19, 2, 1, 0, 9, 11, true, true, {{0, "&rst"}, {8, "r2"}, {10, "r3"}, {18, "&end"}}}};

std::vector<ReadBack> readBack(const std::string& text, const Layout& l,
                               const std::vector<std::string>& names = {}) {
  std::vector<ReadBack> found;
  for (const std::string& line : linesOf(text)) {
    const auto words = wordsWithout(line.substr(0, line.find(';')), l.marks);
    if (words.size() != l.words || std::string("#!").find(words[0]) != std::string::npos) continue;
    for (const auto& [at, word] : l.fixed) EXPECT_EQ(words[at], word) << line;
    std::string atoms = l.step == 0 ? words[0] + " " + words[l.name] : "";
    for (std::size_t k = 0; k < 4 && l.step > 0; ++k) {
      const std::string& number = words[l.atom + k * l.step];
      atoms += (k > 0 ? " " : "") + (l.numbered ? names.at(std::stoul(number) - 1)
                                                : number + ":" + words[l.atom + k * l.step + l.name]);
    }
    const double a = std::stod(words[l.first]), b = std::stod(words[l.second]);
    EXPECT_TRUE(!l.bounds || a < b) << line;
    found.push_back(l.bounds ? ReadBack{atoms, wrapped((a + b) / 2), (b - a) / 2} : ReadBack{atoms, a, b});
    if (l.words == 27) {  // NEF states the centre too
      EXPECT_NEAR(std::stod(words[20]), found.back().centre, 0.051) << line;
    } else if (l.words == 19) {  // Amber's walls
      EXPECT_NEAR(std::stod(words[7]), a - 90, 0.01);
      EXPECT_NEAR(std::stod(words[13]), b + 90, 0.01);
    }
  }
  return found;
}

/// Three-letter name and atom names of a residue in a structure with hydrogens.
const std::map<char, std::pair<const char*, const char*>> kResidues = {
    {'G', {"GLY", "N H CA HA C O"}},
    {'A', {"ALA", "N H CA HA CB C O"}},
    {'V', {"VAL", "N H CA HA CB CG1 CG2 C O"}},
    {'T', {"THR", "N H CA HA CB OG1 CG2 C O"}},
    {'L', {"LEU", "N H CA HA CB CG CD1 CD2 C O"}},
    {'H', {"HIE", "N H CA HA CB C O"}}};

struct Structure {
  std::string pdb, gro;
  std::vector<std::string> names;  ///< "6:CA" at number - 1
};

/// PDB serials start at 501 and skip numbers, so that only counting gives the right ones.
Structure makeStructure(const std::string& sequence, int firstResid, char chain = 'A') {
  Structure s;
  std::string rows;
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    const int resid = firstResid + static_cast<int>(i);
    const auto& [name, atoms] = kResidues.at(sequence[i]);
    for (const std::string& atom : support::split(atoms)) {
      s.names.push_back(std::to_string(resid) + ":" + atom);
      const int number = static_cast<int>(s.names.size());
      s.pdb += tool_tables::line("ATOM  %5d  %-3s %3s %c%4d       1.000   2.000   3.000  1.00  0.00\n",
                                 500 + 2 * number, atom.c_str(), name, chain, resid);
      rows += tool_tables::line("%5d%-5s%5s%5d   0.100   0.200   0.300\n", resid, name, atom.c_str(), number);
    }
  }
  s.gro = "title\n" + std::to_string(s.names.size()) + "\n" + rows + "   1.0   1.0   1.0\n";
  return s;
}

constexpr const char* kSequence = "GALVTHLAG";
constexpr int kFirst = 4;

/// Angles on both sides of the seam, on it, and rounded onto it.
const std::vector<Torsion> kTorsions = {
    {4, 'G', 9999, 9999, 0, 0, "None", 0},        {5, 'A', -95.04, 128.26, 5, 12, "Strong"},
    {6, 'L', 175, -175, 3, 11.5, "Strong"},       {7, 'V', -180, 180, 10, 10, "Generous"},
    {8, 'T', -179.98, 179.98, 45, 60, "Strong"},  {9, 'H', 0.02, -0.04, 8, 8, "Strong"},
    {10, 'L', 57.3, 44.9, 30.02, 17, "Generous"}, {11, 'A', -60, -40, 4, 4, "Warn"},
    {12, 'G', 9999, 9999, 0, 0, "None", 0}};

const std::vector<Chi1> kChi1 = {{6, 'L', 0.95, 0.03, 0.02, "g-", -65.4, 8},
                                 {7, 'V', 0.02, 0.95, 0.03, "g+", 65.0, 20},
                                 {8, 'T', 0.0, 0.0, 1.0, "t", -178.0, 10}};

struct Expected {
  const char* atoms;
  const char* named;
  double centre, halfWidth;
};
const std::vector<Expected> kExpected = {
    {"4:C 5:N 5:CA 5:C", "5 PHI", -95.0, 20},    {"5:N 5:CA 5:C 6:N", "5 PSI", 128.3, 24},
    {"5:C 6:N 6:CA 6:C", "6 PHI", 175, 20},      {"6:N 6:CA 6:C 7:N", "6 PSI", -175, 23},
    {"6:N 6:CA 6:CB 6:CG", "6 CHI1", -65.4, 30}, {"6:C 7:N 7:CA 7:C", "7 PHI", 180, 20},
    {"7:N 7:CA 7:C 8:N", "7 PSI", 180, 20},      {"7:N 7:CA 7:CB 7:CG1", "7 CHI1", -175, 40},
    {"7:C 8:N 8:CA 8:C", "8 PHI", 180, 90},      {"8:N 8:CA 8:C 9:N", "8 PSI", 180, 120},
    {"8:N 8:CA 8:CB 8:OG1", "8 CHI1", -178, 30}, {"8:C 9:N 9:CA 9:C", "9 PHI", 0, 20},
    {"9:N 9:CA 9:C 10:N", "9 PSI", 0, 20},       {"9:C 10:N 10:CA 10:C", "10 PHI", 57.3, 60},
    {"10:N 10:CA 10:C 11:N", "10 PSI", 44.9, 34}};

class RestraintFormats : public testing::Test {
 protected:
  RestraintFormats() {
    support::writeFile(dir / "pred.tab", tool_tables::torsionTable("x", kFirst, kSequence, kTorsions));
    support::writeFile(dir / "predChi1.tab", tool_tables::chi1Table(kChi1));
    support::writeFile(dir / "s.pdb", structure.pdb);
    support::writeFile(dir / "s.gro", structure.gro);
  }

  /// Status of a run with predictions, chi1 predictions and further arguments; output stays in `out`.
  int run(std::vector<std::string> words) {
    words.insert(words.begin(), {(dir / "pred.tab").string(), "--chi1", (dir / "predChi1.tab").string()});
    out.str("");
    err.str("");
    return restraints::runProgram(words, out, err);
  }

  support::TempDir dir;
  Structure structure = makeStructure(kSequence, kFirst);
  std::ostringstream out, err;
};

TEST_F(RestraintFormats, EveryFormatCarriesTheSameCentresAndWidths) {
  for (const Layout& layout : kLayouts) {
    for (const char* coordinates : {"s.pdb", "s.gro"}) {
      SCOPED_TRACE(std::string(layout.format) + " " + coordinates);
      ASSERT_EQ(run({"--format", layout.format, "-o", "-", "--coordinates", (dir / coordinates).string()}), 0)
          << err.str();
      const auto found = readBack(out.str(), layout, structure.names);
      ASSERT_EQ(found.size(), kExpected.size()) << out.str();
      for (std::size_t i = 0; i < found.size(); ++i) {
        const Expected& e = kExpected[i];
        EXPECT_EQ(found[i].atoms, layout.step == 0 ? e.named : e.atoms);
        EXPECT_NEAR(std::fabs(wrapped(found[i].centre - e.centre)), 0, 0.1001) << e.named;
        EXPECT_NEAR(found[i].halfWidth, e.halfWidth, 0.1001) << e.named;
        EXPECT_TRUE(found[i].centre > -180 && found[i].centre <= 180) << e.named << " " << found[i].centre;
      }
      const auto words = wordsWithout(out.str(), ",=");
      EXPECT_EQ(std::count(words.begin(), words.end(), "-0.0"), 0) << "a negative zero";
    }
  }
}

TEST_F(RestraintFormats, PartsAroundTheRestraints) {
  struct Case {
    std::vector<std::string> options;
    std::vector<std::string> parts;
  };
  for (const Case& c :
       {Case{{"nef"},
             {"1 A 4 GLY start . .", "9 A 12 GLY end . .", "save_nef_chemical_shift_list_", "data_nef_"}},
        Case{{"xplor", "--chain", "A", "--wrap"}, {"and segid \"A   \")", "nassign=15\n", "\nend\n"}}}) {
    std::vector<std::string> words = {"-o", "-", "--quiet", "--format"};
    words.insert(words.end(), c.options.begin(), c.options.end());
    ASSERT_EQ(run(words), 0);
    for (const std::string& part : c.parts) EXPECT_NE(out.str().find(part), std::string::npos) << part;
    EXPECT_EQ(err.str(), "");
  }
}

/// Coordinate files that do not fit are refused, and a file of an earlier run stays as it is.
TEST_F(RestraintFormats, UnfitCoordinateFilesAreRefused) {
  const auto without = [&](const std::string& part) {
    std::string kept;
    for (const std::string& line : linesOf(structure.pdb)) {
      if (line.find(part) == std::string::npos) kept += line + "\n";
    }
    return kept;
  };
  std::string otherType = structure.pdb;
  for (std::size_t at; (at = otherType.find("LEU A   6")) != std::string::npos;)
    otherType.replace(at, 3, "MET");
  const struct {
    const char* name;
    std::string content, message;
  } cases[] = {
      {"atom missing", without(" CG  LEU A   6"), "residue 6 atom CG (LEU) is not there"},
      {"two molecules", structure.pdb + "TER\n" + structure.pdb, "occurs 2 times"},
      {"other residue type", otherType, "belongs to MET, the prediction has LEU"},
      {"no structure", "hello\nworld\n", "neither a PDB file"},
      {"cut .gro", structure.gro.substr(0, structure.gro.size() / 2), "neither a PDB file"},
      {"broken number", "ATOM      1  N   GLY A  xx      1.0     2.0     3.0\n", ":1: an atom record"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    support::writeFile(dir / "bad", c.content);
    support::writeFile(dir / "out", "earlier");
    EXPECT_EQ(
        run({"--format", "gromacs", "-o", (dir / "out").string(), "--coordinates", (dir / "bad").string()}),
        1);
    EXPECT_NE(err.str().find(c.message), std::string::npos) << err.str();
    EXPECT_EQ(support::readFile(dir / "out"), "earlier");
  }
}

/// GROMACS counts inside the molecule, Amber over the whole system.
TEST_F(RestraintFormats, ChainAndOffsetChooseTheAtoms) {
  const Structure second = makeStructure(kSequence, 104, 'B');
  support::writeFile(dir / "two.pdb", structure.pdb + "TER\n" + second.pdb);
  std::vector<std::string> all = structure.names;
  all.insert(all.end(), second.names.begin(), second.names.end());
  const std::vector<std::string>* const names[] = {&second.names, &all};  // gromacs, amber
  for (std::size_t k : {0U, 1U}) {
    ASSERT_EQ(run({"--format", kLayouts[3 + k].format, "-o", "-", "--coordinates", (dir / "two.pdb").string(),
                   "--chain", "B", "--residue-offset", "100"}),
              0)
        << err.str();
    EXPECT_EQ(readBack(out.str(), kLayouts[3 + k], *names[k]).at(0).atoms, "104:C 105:N 105:CA 105:C");
  }
}

}  // namespace
