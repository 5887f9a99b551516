// The tables and the fragment database of the synthetic installation, and the query that fits them.
#include "support/synthetic.h"

#include <array>
#include <cstdio>

#include "support/synthetic_networks.h"

namespace support {

namespace fs = std::filesystem;

namespace {

const std::string kTypes = "ARNDCQEGHILKMFPSTWYV";
const std::array<const char*, 6> kAtoms{"N", "HA", "C", "CA", "CB", "HN"};

/// A residue name or source, then numbers.
std::string header(const std::string& columns) {
  std::string format = "FORMAT %s";
  for (std::size_t i = 1; i < split(columns).size(); ++i) format += " %f";
  return "REMARK Synthetic table for the tests.\n\nVARS " + columns + '\n' + format + "\n\n";
}

std::string atomTable(const std::string& rows) {
  return header("RESNAME N HA C CA CB HN") + rows;
}

/// One row a residue type, oxidised cysteine included, all with the same `cells`.
std::string everyType(const std::string& cells) {
  std::string rows;
  for (const char code : kTypes + 'c') rows += std::string(1, code) + ' ' + cells + '\n';
  return rows;
}

std::string similarityTable(double same, double alanineLeucine, double other) {
  std::string columns = "RESNAME", rows;
  for (const char code : kTypes) {
    columns += std::string(" ") + code;
    rows += code;
    for (const char column : kTypes) {
      const bool aliphatic = (code == 'A' && column == 'L') || (code == 'L' && column == 'A');
      rows += ' ' + std::to_string(code == column ? same : aliphatic ? alanineLeucine : other);
    }
    rows += '\n';
  }
  return header(columns) + rows;
}

/// Twelve equal triplets of alanine whose shifts are the query's own secondary shifts.
std::string tripletLibrary() {
  std::string columns = "VARS SOURCE", format = "FORMAT %s", row = "library";
  for (const std::string position : {"_R1", "_R2", "_R3"}) {
    columns += " RESNAME" + position;
    for (const char* atom : kAtoms) columns += ' ' + (atom + position);
    format += " %s %f %f %f %f %f %f";
    row += " A -2.0 -0.3 2.0 2.4 -0.4 -0.2";
  }
  std::string text = columns + '\n' + format + "\n\n";
  for (int i = 0; i < 12; ++i) text += row + '\n';
  return text;
}

std::string limitTable() {
  std::string columns = "RESNAME", cells;
  for (const char* atom : kAtoms) {
    columns += std::string(" ") + atom + "_MIN " + atom + "_MAX";
    cells += std::string(atom) == "N" ? " -20 20" : " -6 6";
  }
  return header(columns) + everyType(cells);
}

struct FragmentCentre {
  char code;
  double phi, psi, chi1;
  int box;
};

/// Seven records of one source. Boxes `before` and `after` lie three before and two after the centre; other
/// neighbours are helical alanines. `phiAfter` is the phi of the residue after the centre, and `gap` a jump
/// in the residue numbers behind the centre.
std::string fragment(const std::string& source, const FragmentCentre& centre, int before, int after,
                     double phiAfter = -63.0, int gap = 0) {
  std::string records;
  for (int k = -3; k <= 3; ++k) {
    const bool middle = k == 0;
    const int box = middle ? centre.box : k == -3 ? before : k == 2 ? after : 96;
    char record[160];
    std::snprintf(record, sizeof record, "%s %c %d %.1f %.1f %.1f %d -1 1 0.7 1 3 1 3.4 1 0.6 0 0.8 1\n",
                  source.c_str(), middle ? centre.code : 'A', 10 + k + (k > 0 ? gap : 0),
                  middle   ? centre.phi
                  : k == 1 ? phiAfter
                           : -63.0,
                  middle ? centre.psi : -42.0, middle ? centre.chi1 : 9999.0, box);
    records += record;
  }
  return records;
}

/// 25 helical fragments, i = 0 to 24, with centres phi -75 + i (mean -63), psi -36 - i / 2 (mean -42); box
/// scores fall by 0.04 with i / 5 three before and with i % 5 two after the centre. Centres 8 to 16 are
/// leucine (chi1 -70 to -50 and around 180), the others alanine. Four left-handed glycines follow, the last
/// of them with an extended neighbour, then a fragment with a gap, which must never match, and in the last
/// source the only tryptophan.
std::string database() {
  static const std::array boxes{96, 95, 97, 78, 114};
  static const std::array chi1{-70.0, -65.0, -60.0, -55.0, -50.0, 170.0, 175.0, -175.0, -170.0};
  std::string text = "# synthetic fragments\n\n";
  for (int i = 0; i < 25; ++i) {
    const bool leucine = i >= 8 && i <= 16;
    text += fragment(
        "helix" + std::to_string(i),
        {leucine ? 'L' : 'A', -75.0 + i, -36.0 - 0.5 * i, leucine ? chi1[std::size_t(i - 8)] : 9999.0, 96},
        boxes[std::size_t(i / 5)], boxes[std::size_t(i % 5)]);
  }
  text += fragment("gly0", {'G', 55, 40, 9999, 209}, 96, 96);
  text += fragment("gly1", {'G', 57, 44, 9999, 209}, 95, 96);
  text += fragment("gly2", {'G', 62, 48, 9999, 209}, 97, 96);
  text += fragment("gly3", {'G', 90, 47, 9999, 209}, 78, 96, 120.0);
  text += fragment("gap", {'A', 100, 100, 9999, 96}, 96, 96, -63.0, 1);
  text += fragment("last", {'W', -68, -40, -60, 96}, 96, 96);
  return text;
}

}  // namespace

void writeInstallation(const fs::path& directory) {
  const fs::path tab = directory / "tab";
  fs::create_directories(tab);
  writeFile(tab / "randcoil.tab", atomTable(everyType("124.33 4.27 177.53 52.88 19.30 8.16")));
  writeFile(tab / "rcadj.tab", atomTable("A 0 0 0 0 0 0.10\n"));
  writeFile(tab / "rcprev.tab", atomTable("A -0.50 0 0 0 0 0\n"));
  writeFile(tab / "rcnext.tab", atomTable("A 0 0 0 -0.20 0 0\n"));
  writeFile(tab / "isoadj.tab", header("RESNAME CA CB") + everyType("-0.40 -0.60"));
  writeFile(tab / "sslimit.tab", limitTable());
  writeFile(tab / "homology.tab", similarityTable(0, 0, 0.1));
  writeFile(tab / "weight.tab",
            header("RESNAME N HA C CA CB HN W") +
                "R1 1 1 1 1 1 1 1\nR2 1 1 1 1 1 1 1\nR3 1 1 1 1 1 1 1\nAVG 1 1 1 1 1 1 1\n");
  writeFile(tab / "BLOSUM62.tab", similarityTable(4, 0, -1));
  writeFile(tab / "orbel_obsCS.tab", tripletLibrary());
  writeFile(tab / "chi1.tab", header("RESNAME 0 1 2 3 4 5 6 7 8 9 10") +
                                  "L 0 0 0.90 0 0 0.06 0 0 0 0 0.04\nW 0 0 0 0 0 0 0 0 0 0 0\n");
  writeFile(tab / "orbel.tab", database());
  writeNetworks(tab);
}

fs::path linkInstallation(const TempDir& dir, const std::set<std::string>& leftOut) {
  const fs::path tab = dir / "install" / "tab";
  fs::create_directories(tab);
  for (const fs::directory_entry& table : fs::directory_iterator(fs::path(ORBELN_SYNTHETIC) / "tab"))
    if (const fs::path name = table.path().filename(); !leftOut.contains(name.string()))
      fs::create_symlink(table.path(), tab / name);
  return dir / "install";
}

void Query::removeResidue(int resid) {
  std::erase_if(shifts, [&](const auto& shift) { return shift.first.first == resid; });
}

std::string Query::table(bool threeLetterNames) const {
  static const std::map<char, std::string> names{{'A', "ALA"}, {'C', "CYS"}, {'G', "GLY"},
                                                 {'L', "LEU"}, {'P', "PRO"}, {'W', "TRP"}};
  std::string text = "REMARK test input\n\nDATA FIRST_RESID " + std::to_string(firstResid) +
                     "\nDATA SEQUENCE " + sequence +
                     "\n\nVARS RESID RESNAME ATOMNAME SHIFT\nFORMAT %4d %s %4s %8.3f\n\n";
  for (const auto& [key, ppm] : shifts) {
    const char code = sequence.at(std::size_t(key.first - firstResid));
    char value[64];
    std::snprintf(value, sizeof value, "%s %.3f\n", key.second.c_str(), ppm);
    text += std::to_string(key.first) + ' ' + (threeLetterNames ? names.at(code) : std::string(1, code)) +
            ' ' + value;
  }
  return text;
}

Query helixQuery(int firstResid) {
  Query query{firstResid, "AAAAAAAAAAALAAAAAGAAAWAAAA", {}};
  for (std::size_t i = 0; i < query.sequence.size(); ++i) {
    const int r = firstResid + int(i);
    query.shifts[{r, "N"}] = 121.83;
    query.shifts[{r, "C"}] = 179.53;
    query.shifts[{r, "CA"}] = 55.08;
    query.shifts[{r, "HN"}] = 8.06;
    if (query.sequence[i] == 'G') {
      query.shifts[{r, "HA2"}] = 3.87;
      query.shifts[{r, "HA3"}] = 4.07;
    } else {
      query.shifts[{r, "HA"}] = 3.97;
      query.shifts[{r, "CB"}] = 18.90;
    }
  }
  return query;
}

}  // namespace support
