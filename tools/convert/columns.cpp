// Headings of tables of shifts, and what the cells below them look like.
#include "convert/columns.h"

#include <algorithm>

#include "convert/assignment.h"
#include "convert/names.h"
#include "tables/text.h"

namespace convert {

namespace {

struct Headings {
  std::string_view sure, possible;  ///< as plainHeading() makes them, each between blanks
};

constexpr std::array<Headings, kRoles> kHeadings = {{
    {" chain chainid chaincode asymid authasymid segid segment molecule entityassemblyid "
     "entityassemblyasymid "
     "subunit ",
     " mol entity entityid "},
    {" assignedchemshiftlistid shiftlist shiftlistid chemicalshiftlist listid ", " list "},
    {" resid seqid residuenumber residueno residuenum residuenr residueid residueindex resno resnum resnr "
     "resi "
     "reseq resseq compindexid sequencecode sequencenumber seqcode seqnum seqno residueseqcode aanum aano "
     "aaid "
     "residuenumpos respos ",
     " residue res seq number num nr no id index position pos i aa authseqid authseqcode "
     "residueauthorseqcode "
     "authorresidue "},
    {" resname compid residuename residuetype restype resn aminoacid monid residuelabel aatype aacode "
     "compname "
     "restype3 aminoacidtype residuecode ",
     " residue res aa type code name authcompid group monomer "},
    {" assignment nmratom assign assigned group label peakassignment nmrresidue spinsystem resonance ",
     " residue res aa name atom id seq resid residueid assignname assignf1 "},
    {" atom atomid atomname nmratomname nuclei ",
     " name atm authatomid atomtype nucleus type resonance atomnucleus pdbatomname "},
    {" shift chemicalshift chemshift chemshiftval chemshiftvalue csvalue shiftppm shiftvalue shifts cshift "
     "chemicalshifts chemicalshiftvalue assignedshift ",
     " value val ppm cs delta deltappm d obs observed exp experimental expt w1 frequency mean avg average "
     "averageshift valueppm ppmvalue shiftavg position "},
    {" authseqid authseqcode residueauthorseqcode authorresidue ", ""},
    {" ambiguitycode ambiguity chemshiftambiguitycode ", " ambig "},
}};

bool isIn(std::string_view list, const std::string& heading) {
  return !heading.empty() && list.find(" " + heading + " ") != std::string_view::npos;
}

/// 43, -2, and what assignment programs write for residues that are not assigned: 43-1, @12.
bool isSequenceCode(const std::string& cell) {
  if (residueNumber(cell)) return true;
  if (cell.starts_with('@')) return true;
  const std::size_t sign = cell.find_first_of("+-", 1);
  return sign != std::string::npos && wholeInteger(cell.substr(0, sign)) &&
         wholeInteger(cell.substr(sign + 1));
}

void lookAt(const std::string& cell, bool dashJoins, ColumnFacts& facts) {
  constexpr std::size_t kMostDistinct = 40;
  ++facts.rows;
  if (isMissing(cell)) return;
  ++facts.filled;
  facts.integers += residueNumber(cell) ? 1 : 0;
  facts.codes += isSequenceCode(cell) ? 1 : 0;
  facts.numbers += wholeNumber(cell) ? 1 : 0;
  const bool named = residueCode(cell) != 'X';
  facts.names += named ? 1 : 0;
  facts.longNames += named && cell.size() >= 3 ? 1 : 0;
  facts.atoms += looksLikeAtom(cell) ? 1 : 0;
  Assignment assignment;
  const bool plain = wholeNumber(cell).has_value();
  if (!plain && parseAssignment(cell, dashJoins, assignment)) {
    ++facts.labels;
    facts.labelAtoms += assignment.atom.empty() ? 0 : 1;
  }
  const bool seen = std::find(facts.distinct.begin(), facts.distinct.end(), cell) != facts.distinct.end();
  if (!seen && facts.distinct.size() < kMostDistinct) facts.distinct.push_back(cell);
}

/// Every label of the column has its number behind a dash: "Met-1" is no residue of number -1.
bool dashesEverywhere(const Cells& cells, const Columns& columns, std::size_t column) {
  std::size_t dashes = 0, others = 0;
  for (std::size_t r = columns.firstRow; r < cells.rows.size(); ++r) {
    const auto& row = cells.rows[r].cells;
    if (column >= row.size() || isMissing(row[column]) || wholeNumber(row[column])) continue;
    const std::size_t dash = row[column].find('-');
    const bool joins = dash != std::string::npos && dash > 0 && row[column][dash - 1] > '9';
    ++(joins ? dashes : others);
  }
  return dashes > 1 && others == 0;
}

}  // namespace

std::optional<int> residueNumber(const std::string& cell) {
  if (cell.ends_with(".0")) return wholeInteger(std::string_view(cell).substr(0, cell.size() - 2));
  return wholeInteger(cell);
}

int headingFit(Role role, const std::string& heading) {
  if (isIn(kHeadings[role].sure, heading)) return 2;
  return isIn(kHeadings[role].possible, heading) ? 1 : 0;
}

bool isNeverShift(const std::string& heading) {
  if (heading.find("err") != std::string::npos || heading.find("uncert") != std::string::npos) return true;
  return isIn(
      " sd sdev std stdev sigma dev deviation rms ambiguity ambiguitycode fom figureofmerit merit occupancy "
      "count "
      "peakcount totalpeakcount shiftpeakcount assignments volume height intensity isotope isotopenumber "
      "atomisotopenumber ph temperature predicted pred calc calculated difference diff randomcoil rc index ",
      heading);
}

std::string describeColumn(const Columns& columns, int column) {
  const auto at = static_cast<std::size_t>(column);
  const std::string number = "column " + std::to_string(column + 1);
  if (at >= columns.headings.size() || columns.headings[at].empty()) return number;
  return "'" + columns.headings[at] + "'";
}

std::vector<ColumnFacts> columnFacts(const Cells& cells, Columns& columns) {
  std::vector<ColumnFacts> facts(columns.width);
  for (std::size_t column = 0; column < columns.width; ++column) {
    const bool dashJoins = dashesEverywhere(cells, columns, column);
    for (std::size_t r = columns.firstRow; r < cells.rows.size(); ++r) {
      const auto& row = cells.rows[r].cells;
      if (column < row.size()) lookAt(row[column], dashJoins, facts[column]);
    }
    columns.dashJoins = columns.dashJoins || (dashJoins && facts[column].mostly(facts[column].labels));
  }
  return facts;
}

}  // namespace convert
