// The header line of a table, the columns a user names, or neither.
#include <algorithm>
#include <map>

#include "convert/assignment.h"
#include "convert/columns.h"
#include "convert/names.h"
#include "tables/text.h"

namespace convert {

namespace {

constexpr std::size_t kHeaderRows = 40;  // titles and remarks that may stand before the header

/// Words only, and at least two of them name a column or an atom.
bool looksLikeHeader(const CellRow& row) {
  std::size_t known = 0;
  for (const std::string& cell : row.cells) {
    if (wholeNumber(cell)) return false;
    const std::string plain = plainHeading(cell);
    bool fits = !atomOfHeading(cell).empty();
    for (int role = 0; role < kRoles; ++role) fits = fits || headingFit(static_cast<Role>(role), plain) > 0;
    known += fits ? 1 : 0;
  }
  return known >= 2;
}

/// The number of cells that most rows from `first` on have.
std::size_t usualWidth(const Cells& cells, std::size_t first) {
  std::map<std::size_t, std::size_t> counts;
  std::size_t usual = 0, most = 0;
  for (std::size_t r = first; r < cells.rows.size(); ++r) {
    if (cells.rows[r].comment) continue;
    const std::size_t count = ++counts[cells.rows[r].cells.size()];
    if (count > most) {
      most = count;
      usual = cells.rows[r].cells.size();
    }
  }
  return usual;
}

std::size_t nextDataRow(const Cells& cells, std::size_t row) {
  while (row < cells.rows.size() && cells.rows[row].comment) ++row;
  return row;
}

/// Layout with the headings of row `header`; a table printed with a row index has one heading less than
/// cells.
Columns underHeader(const Cells& cells, std::size_t header) {
  Columns columns;
  columns.at.fill(-1);
  columns.headings = cells.rows[header].cells;
  columns.firstRow = nextDataRow(cells, header + 1);
  const std::size_t usual = usualWidth(cells, columns.firstRow);
  const bool blanks = cells.separator == ' ';
  if (blanks && usual == columns.headings.size() + 1) columns.headings.insert(columns.headings.begin(), "");
  columns.width = columns.headings.size();
  return columns;
}

Columns withoutHeader(const Cells& cells) {
  Columns columns;
  columns.at.fill(-1);
  columns.firstRow = nextDataRow(cells, 0);
  columns.width = usualWidth(cells, columns.firstRow);
  // Titles in front of the rows have another width.
  while (columns.firstRow < cells.rows.size() && cells.rows[columns.firstRow].cells.size() != columns.width) {
    columns.firstRow = nextDataRow(cells, columns.firstRow + 1);
  }
  return columns;
}

struct GivenColumn {
  std::string key, value;
};

bool splitGiven(const std::string& given, std::vector<GivenColumn>& list, Log& log) {
  std::string_view rest = given;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    const std::string_view part = rest.substr(0, end);
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos || equals == 0 || equals + 1 == part.size()) {
      return log.error(0, "--columns: '" + std::string(part) + "' is not of the form resid=2 or shift=ppm");
    }
    list.push_back(
        {std::string(text::trim(part.substr(0, equals))), std::string(text::trim(part.substr(equals + 1)))});
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return true;
}

/// The column of that heading, else of that position.
int findColumn(const std::vector<std::string>& headings, const std::string& value) {
  const auto exact = std::find(headings.begin(), headings.end(), value);
  if (exact != headings.end()) return static_cast<int>(exact - headings.begin());
  for (std::size_t c = 0; c < headings.size(); ++c) {
    if (!headings[c].empty() && plainHeading(headings[c]) == plainHeading(value)) return static_cast<int>(c);
  }
  return -1;
}

std::optional<Role> roleNamed(const std::string& key) {
  static const std::map<std::string, Role> kKeys = {
      {"resid", kNumber},  {"resname", kName},     {"atom", kAtom},
      {"shift", kShift},   {"chain", kChain},      {"list", kList},
      {"residue", kLabel}, {"assignment", kLabel}, {"ambiguity", kAmbiguity}};
  const auto it = kKeys.find(key);
  return it == kKeys.end() ? std::nullopt : std::optional<Role>(it->second);
}

/// The header row that holds every heading the user named; none is needed for positions alone.
bool findGivenHeader(const Cells& cells, const std::vector<GivenColumn>& given, Columns& columns, Log& log) {
  std::vector<std::string> names;
  for (const GivenColumn& one : given) {
    if (!wholeInteger(one.value)) names.push_back(one.value);
  }
  for (std::size_t r = 0; !names.empty() && r < std::min(cells.rows.size(), kHeaderRows); ++r) {
    const bool all = std::all_of(names.begin(), names.end(), [&](const std::string& name) {
      return findColumn(cells.rows[r].cells, name) >= 0;
    });
    if (!all) continue;
    columns = underHeader(cells, r);
    return true;
  }
  for (const std::string& name : names) {
    const bool known = std::any_of(cells.rows.begin(), cells.rows.end(),
                                   [&](const CellRow& row) { return findColumn(row.cells, name) >= 0; });
    if (!known) return log.error(0, "--columns: no header line has the heading '" + name + "'");
  }
  if (!names.empty()) return log.error(0, "--columns: no line has all of the headings");
  const auto header = std::find_if(cells.rows.begin(), cells.rows.end(), looksLikeHeader);
  columns =
      header != cells.rows.end() && header - cells.rows.begin() < static_cast<std::ptrdiff_t>(kHeaderRows)
          ? underHeader(cells, static_cast<std::size_t>(header - cells.rows.begin()))
          : withoutHeader(cells);
  return true;
}

bool takeGiven(const Cells& cells, const std::string& text, Columns& columns, Log& log) {
  std::vector<GivenColumn> given;
  if (!splitGiven(text, given, log) || !findGivenHeader(cells, given, columns, log)) return false;
  for (const GivenColumn& one : given) {
    int column = findColumn(columns.headings, one.value);
    if (const auto position = wholeInteger(one.value); column < 0 && position) column = *position - 1;
    if (column < 0 || column >= static_cast<int>(columns.width)) {
      return log.error(0, "--columns: there is no column " + one.value + "; the table has " +
                              std::to_string(columns.width));
    }
    if (const auto role = roleNamed(one.key)) {
      columns.at[*role] = column;
    } else if (const std::string atom = atomOfHeading(one.key); !atom.empty()) {
      columns.atoms.emplace_back(column, atom);
    } else {
      return log.error(
          0, "--columns: '" + one.key +
                 "' is none of resid, resname, residue, assignment, atom, shift, chain, list, ambiguity "
                 "and no atom");
    }
  }
  // "resid" of a column with M1, M2 ... is the residue with its type.
  if (columns.has(kNumber) && !columns.has(kLabel)) {
    const auto facts = columnFacts(cells, columns)[static_cast<std::size_t>(columns.at[kNumber])];
    if (facts.mostly(facts.labels)) std::swap(columns.at[kNumber], columns.at[kLabel]);
  }
  return true;
}

bool reportLacking(int line, const std::string& lacking, Log& log) {
  return log.error(line, "no known shift list, or the header line names no column for the " + lacking +
                             "; --columns says which is which (resid=1,resname=2,atom=3,shift=4)");
}

}  // namespace

bool chooseColumns(const Cells& cells, const std::string& given, Columns& columns, Log& log) {
  std::string lacking, lackingUnderHeader;
  if (!given.empty()) {
    if (!takeGiven(cells, given, columns, log)) return false;
    if (!chooseByContent(cells, columns, lacking)) return reportLacking(0, lacking, log);
    columns.guess.clear();
    return true;
  }
  int headerLine = 0;
  for (std::size_t r = 0; r < std::min(cells.rows.size(), kHeaderRows); ++r) {
    if (!looksLikeHeader(cells.rows[r])) continue;
    columns = underHeader(cells, r);
    lacking.clear();
    if (columns.firstRow < cells.rows.size() && chooseByContent(cells, columns, lacking)) return true;
    if (headerLine == 0) {
      headerLine = cells.rows[r].line;
      lackingUnderHeader = lacking;
    }
  }
  columns = withoutHeader(cells);
  lacking.clear();
  if (columns.firstRow < cells.rows.size() && chooseByContent(cells, columns, lacking)) return true;
  if (headerLine > 0)
    return reportLacking(headerLine, lackingUnderHeader.empty() ? "shift" : lackingUnderHeader, log);
  return reportLacking(cells.rows.empty() ? 0 : cells.rows.front().line, lacking.empty() ? "shift" : lacking,
                       log);
}

}  // namespace convert
