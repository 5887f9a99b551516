// Every restraint format read back by a small reader of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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

ReadBack fromBounds(const std::string& atoms, double lower, double upper) {
  EXPECT_LT(lower, upper) << atoms;
  return {atoms, wrapped((lower + upper) / 2), (upper - lower) / 2};
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

std::vector<ReadBack> readXplor(const std::string& text) {
  std::vector<ReadBack> found;
  for (const std::string& line : linesOf(text)) {
    if (line.starts_with("!")) continue;
    const auto words = wordsWithout(line, "()");  // assign, 4 x (resid n and name a), K centre range exponent
    EXPECT_EQ(words.size(), 25U) << line;
    if (words.size() != 25 || words[0] != "assign" || words[24] != "2") continue;
    std::string atoms;
    for (std::size_t k = 0; k < 4; ++k) {
      atoms += (k > 0 ? " " : "") + words[2 + 5 * k] + ":" + words[5 + 5 * k];
    }
    found.push_back({atoms, std::stod(words[22]), std::stod(words[23])});
  }
  return found;
}

std::vector<ReadBack> readCyana(const std::string& text) {
  std::vector<ReadBack> found;
  for (const std::string& line : linesOf(text)) {
    const auto words = support::split(line);
    if (words.empty() || words[0][0] == '#') continue;
    EXPECT_EQ(words.size(), 6U) << line;
    if (words.size() != 6) continue;
    found.push_back(fromBounds(words[0] + " " + words[2], std::stod(words[3]), std::stod(words[4])));
  }
  return found;
}

/// The restraint loop of a NEF file, columns found by their tags.
std::vector<ReadBack> readNef(const std::string& text) {
  std::map<std::string, std::size_t> column;
  std::vector<ReadBack> found;
  const std::string lead = "_nef_dihedral_restraint.";
  for (const std::string& line : linesOf(text)) {
    const auto words = support::split(line);
    if (!words.empty() && words[0].starts_with(lead)) {
      const std::size_t next = column.size();
      column[words[0].substr(lead.size())] = next;
    } else if (column.size() > 5 && !words.empty() && words[0] == "stop_") {
      break;
    } else if (column.size() > 5) {
      EXPECT_EQ(words.size(), column.size()) << line;
      if (words.size() != column.size()) continue;
      std::string atoms;
      for (const std::string k : {"_1", "_2", "_3", "_4"}) {
        atoms += (k == "_1" ? "" : " ") + words[column["sequence_code" + k]] + ":" +
                 words[column["atom_name" + k]];
        EXPECT_EQ(words[column["chain_code" + k]], "A");
      }
      found.push_back(fromBounds(atoms, std::stod(words[column["lower_limit"]]),
                                 std::stod(words[column["upper_limit"]])));
      EXPECT_NEAR(std::stod(words[column["target_value"]]), found.back().centre, 0.051) << line;
    }
  }
  return found;
}

std::string numberedAtoms(const std::vector<std::string>& words, std::size_t from,
                          const std::vector<std::string>& names) {
  std::string atoms;
  for (std::size_t k = from; k < from + 4; ++k) {
    const auto number = static_cast<std::size_t>(std::stoi(words[k]));
    atoms += (k > from ? " " : "") + (number <= names.size() ? names[number - 1] : std::string("?"));
  }
  return atoms;
}

std::vector<ReadBack> readGromacs(const std::string& text, const std::vector<std::string>& names) {
  std::vector<ReadBack> found;
  bool inside = false;
  for (const std::string& line : linesOf(text)) {
    const auto words = support::split(line.substr(0, line.find(';')));
    if (words.empty()) continue;
    if (words[0] == "[") {
      inside = words[1] == "dihedral_restraints";
      continue;
    }
    EXPECT_TRUE(inside && words.size() == 8 && words[4] == "1") << line;
    found.push_back({numberedAtoms(words, 0, names), std::stod(words[5]), std::stod(words[6])});
  }
  return found;
}

std::vector<ReadBack> readAmber(const std::string& text, const std::vector<std::string>& names) {
  std::vector<ReadBack> found;
  for (const std::string& line : linesOf(text)) {
    if (line.starts_with("#")) continue;
    const auto words = wordsWithout(line, "=,");  // &rst iat a b c d r1 v r2 v r3 v r4 v rk2 v rk3 v &end
    EXPECT_EQ(words.size(), 19U) << line;
    if (words.size() != 19) continue;
    EXPECT_EQ(words[8] + words[10], "r2r3");
    found.push_back(fromBounds(numberedAtoms(words, 2, names), std::stod(words[9]), std::stod(words[11])));
    EXPECT_NEAR(std::stod(words[7]), std::stod(words[9]) - 90, 0.01);
    EXPECT_NEAR(std::stod(words[13]), std::stod(words[11]) + 90, 0.01);
  }
  return found;
}

/// One residue's atom names in a structure with hydrogens.
std::vector<std::string> atomsOf(char code) {
  std::vector<std::string> atoms = {"N", "H", "CA", "HA"};
  if (code != 'G') atoms.push_back("CB");
  if (code == 'V') atoms.insert(atoms.end(), {"CG1", "CG2"});
  if (code == 'T') atoms.insert(atoms.end(), {"OG1", "CG2"});
  if (code == 'L') atoms.insert(atoms.end(), {"CG", "CD1", "CD2"});
  atoms.insert(atoms.end(), {"C", "O"});
  return atoms;
}

std::string longName(char code) {
  const std::map<char, std::string> names = {{'G', "GLY"}, {'A', "ALA"}, {'V', "VAL"},
                                             {'T', "THR"}, {'L', "LEU"}, {'H', "HIE"}};
  return names.at(code);
}

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
    for (const std::string& atom : atomsOf(sequence[i])) {
      s.names.push_back(std::to_string(resid) + ":" + atom);
      const int number = static_cast<int>(s.names.size());
      s.pdb +=
          tool_tables::line("ATOM  %5d  %-3s %3s %c%4d    %8.3f%8.3f%8.3f  1.00  0.00\n", 500 + 2 * number,
                            atom.c_str(), longName(sequence[i]).c_str(), chain, resid, 1.0, 2.0, 3.0);
      rows += tool_tables::line("%5d%-5s%5s%5d%8.3f%8.3f%8.3f\n", resid, longName(sequence[i]).c_str(),
                                atom.c_str(), number, 0.1, 0.2, 0.3);
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
    {"4:C 5:N 5:CA 5:C", "5 PHI", -95.0, 20},     {"5:N 5:CA 5:C 6:N", "5 PSI", 128.3, 24},
    {"5:C 6:N 6:CA 6:C", "6 PHI", 175, 20},       {"6:N 6:CA 6:C 7:N", "6 PSI", -175, 23},
    {"6:N 6:CA 6:CB 6:CG", "6 CHI1", -65.4, 30},  {"6:C 7:N 7:CA 7:C", "7 PHI", 180, 20},
    {"7:N 7:CA 7:C 8:N", "7 PSI", 180, 20},       {"7:N 7:CA 7:CB 7:CG1", "7 CHI1", -175, 40},
    {"7:C 8:N 8:CA 8:C", "8 PHI", 180, 90},       {"8:N 8:CA 8:C 9:N", "8 PSI", 180, 120},
    {"8:N 8:CA 8:CB 8:OG1", "8 CHI1", -178, 30},  {"8:C 9:N 9:CA 9:C", "9 PHI", 0, 20},
    {"9:N 9:CA 9:C 10:N", "9 PSI", 0, 20},        {"9:C 10:N 10:CA 10:C", "10 PHI", 57.3, 60},
    {"10:N 10:CA 10:C 11:N", "10 PSI", 44.9, 34},
};

class RestraintFormats : public testing::Test {
 protected:
  RestraintFormats() {
    support::writeFile(dir / "pred.tab", tool_tables::torsionTable("x", kFirst, kSequence, kTorsions));
    support::writeFile(dir / "predChi1.tab", tool_tables::chi1Table(kChi1));
    support::writeFile(dir / "s.pdb", structure.pdb);
    support::writeFile(dir / "s.gro", structure.gro);
  }

  std::string run(const std::string& format, const std::string& coordinates = {}) {
    std::vector<std::string> words = {
        (dir / "pred.tab").string(), "--chi1", (dir / "predChi1.tab").string(), "--format", format, "-o",
        (dir / "out").string()};
    if (!coordinates.empty()) words.insert(words.end(), {"--coordinates", (dir / coordinates).string()});
    std::ostringstream out, err;
    EXPECT_EQ(restraints::runProgram(words, out, err), 0) << err.str();
    return support::readFile(dir / "out");
  }

  static void expectAll(const std::vector<ReadBack>& found, bool named) {
    ASSERT_EQ(found.size(), kExpected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
      const Expected& e = kExpected[i];
      EXPECT_EQ(found[i].atoms, named ? e.named : e.atoms);
      EXPECT_NEAR(std::fabs(wrapped(found[i].centre - e.centre)), 0, 0.1001) << e.named;
      EXPECT_NEAR(found[i].halfWidth, e.halfWidth, 0.1001) << e.named;
      EXPECT_TRUE(found[i].centre > -180 && found[i].centre <= 180) << e.named << " " << found[i].centre;
    }
  }

  support::TempDir dir;
  Structure structure = makeStructure(kSequence, kFirst);
};

TEST_F(RestraintFormats, EveryFormatCarriesTheSameCentresAndWidths) {
  expectAll(readXplor(run("xplor")), false);
  expectAll(readCyana(run("cyana")), true);
  expectAll(readNef(run("nef")), false);
  for (const char* coordinates : {"s.pdb", "s.gro"}) {
    SCOPED_TRACE(coordinates);
    expectAll(readGromacs(run("gromacs", coordinates), structure.names), false);
    expectAll(readAmber(run("amber", coordinates), structure.names), false);
  }
}

TEST_F(RestraintFormats, NoFileHoldsANegativeZero) {
  for (const char* format : {"xplor", "cyana", "nef"}) {
    const auto words = wordsWithout(run(format), ",=");
    EXPECT_EQ(std::count(words.begin(), words.end(), "-0.0"), 0) << format;
  }
}

TEST_F(RestraintFormats, NefNamesTheWholeChain) {
  const std::string text = run("nef");
  EXPECT_NE(text.find("1 A 4 GLY start . ."), std::string::npos);
  EXPECT_NE(text.find("9 A 12 GLY end . ."), std::string::npos);
  EXPECT_NE(text.find("save_nef_chemical_shift_list_"), std::string::npos);
  EXPECT_NE(text.find("data_nef_"), std::string::npos);
}

TEST_F(RestraintFormats, SegmentNamesAndStatementsAroundXplorLines) {
  std::ostringstream out, err;
  ASSERT_EQ(restraints::runProgram({(dir / "pred.tab").string(), "--format=xplor", "-o", "-", "--chain", "A",
                                    "--wrap", "--quiet"},
                                   out, err),
            0);
  EXPECT_NE(out.str().find("and segid \"A   \")"), std::string::npos);
  EXPECT_NE(out.str().find("nassign=12\n"), std::string::npos);
  EXPECT_TRUE(out.str().ends_with("end\n"));
  EXPECT_EQ(err.str(), "");
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
  struct Case {
    const char* name;
    std::string content, message;
  };
  const std::vector<Case> cases = {
      {"atom missing", without(" CG  LEU A   6"), "residue 6 atom CG (LEU) is not there"},
      {"two molecules", structure.pdb + "TER\n" + structure.pdb, "occurs 2 times"},
      {"other residue type", otherType, "belongs to MET, the prediction has LEU"},
      {"no structure", "hello\nworld\n", "neither a PDB file"},
      {"cut .gro", structure.gro.substr(0, structure.gro.size() / 2), "neither a PDB file"},
      {"broken number", "ATOM      1  N   GLY A  xx      1.0     2.0     3.0\n", ":1: an atom record"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    support::writeFile(dir / "bad", c.content);
    support::writeFile(dir / "out", "earlier");
    std::ostringstream out, err;
    EXPECT_EQ(restraints::runProgram(
                  {(dir / "pred.tab").string(), "--chi1", (dir / "predChi1.tab").string(), "--format",
                   "gromacs", "-o", (dir / "out").string(), "--coordinates", (dir / "bad").string()},
                  out, err),
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
  const auto first = [&](const std::string& format) {
    std::ostringstream out, err;
    EXPECT_EQ(
        restraints::runProgram({(dir / "pred.tab").string(), "--format", format, "-o", "-", "--coordinates",
                                (dir / "two.pdb").string(), "--chain", "B", "--residue-offset", "100"},
                               out, err),
        0)
        << err.str();
    const auto found = format == "amber" ? readAmber(out.str(), all) : readGromacs(out.str(), second.names);
    return found.empty() ? std::string() : found[0].atoms;
  };
  EXPECT_EQ(first("amber"), "104:C 105:N 105:CA 105:C");
  EXPECT_EQ(first("gromacs"), "104:C 105:N 105:CA 105:C");
}

}  // namespace
