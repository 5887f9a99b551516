// CSV, TSV and blank-separated lists, one shift a row or one residue a row, with or without a header line.
#include "convert/assignment.h"
#include "convert/cells.h"
#include "convert/columns.h"
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

class DelimitedReader {
 public:
  DelimitedReader(const Cells& cells, const Columns& columns, Entry& entry, Log& log)
      : cells_(cells), columns_(columns), entry_(entry), log_(log) {}

  bool run() {
    for (std::size_t r = columns_.firstRow; r < cells_.rows.size(); ++r) {
      const CellRow& row = cells_.rows[r];
      const bool loopEnd = row.cells.size() == 1 && text::upper(row.cells[0]).starts_with("STOP_");
      if (!row.comment && !loopEnd && !readRow(row)) return false;
    }
    return true;
  }

 private:
  std::string cell(const CellRow& row, int column) const {
    const auto at = static_cast<std::size_t>(column);
    return column < 0 || at >= row.cells.size() ? "" : row.cells[at];
  }

  /// Cells behind the last column are empty, those that are not there are none that is read.
  bool hasItsCells(const CellRow& row) {
    std::size_t count = row.cells.size();
    while (count > columns_.width && row.cells[count - 1].empty()) --count;
    std::size_t needed = 0;
    for (const int column : columns_.at) needed = std::max(needed, static_cast<std::size_t>(column + 1));
    for (const auto& [column, atom] : columns_.atoms)
      needed = std::max(needed, static_cast<std::size_t>(column + 1));
    const bool blanks = cells_.separator == ' ';
    if (count == columns_.width ||
        (count >= needed && count < columns_.width && (!blanks || columns_.headings.empty())))
      return true;
    return log_.error(row.line, "expected " + std::to_string(columns_.width) +
                                    (columns_.headings.empty() ? " columns as in the other rows, found "
                                                               : " columns as in the header, found ") +
                                    std::to_string(count));
  }

  bool readRow(const CellRow& row) {
    if (!hasItsCells(row)) return false;
    Shift shift;
    shift.line = row.line;
    shift.list = cell(row, columns_.at[kList]);
    if (isMissing(shift.list)) shift.list = "1";
    shift.chain = cell(row, columns_.at[kChain]);
    shift.name = cell(row, columns_.at[kName]);
    shift.atom = cell(row, columns_.at[kAtom]);
    bool assigned = true;
    if (!readResidue(row, shift, assigned)) return false;
    if (isMissing(shift.name)) shift.name.clear();
    if (isMissing(shift.chain)) shift.chain = "A";
    if (!assigned) {
      entry_.unassigned += columns_.atoms.empty() ? 1 : columns_.atoms.size();
      return true;
    }
    if (const auto author = residueNumber(cell(row, columns_.at[kAuthor])))
      shift.author = std::to_string(*author);
    shift.ambiguity = residueNumber(cell(row, columns_.at[kAmbiguity])).value_or(0);
    if (columns_.atoms.empty()) {
      addShift(shift, cell(row, columns_.at[kShift]));
    } else {
      for (const auto& [column, atom] : columns_.atoms) {
        shift.atom = atom;
        addValues(shift, cell(row, column));
      }
    }
    return true;
  }

  /// The residue number, and from a label also type, chain and atom.
  bool readResidue(const CellRow& row, Shift& shift, bool& assigned) {
    std::string number = cell(row, columns_.at[kNumber]);
    if (columns_.has(kLabel)) {
      Assignment assignment;
      assigned = parseAssignment(cell(row, columns_.at[kLabel]), columns_.dashJoins, assignment);
      if (!assigned) return true;
      number = assignment.number;
      if (shift.name.empty()) shift.name = assignment.name;
      // T7.C is chain C where the atom stands in a column of its own.
      const bool atomElsewhere = !shift.atom.empty() || !columns_.atoms.empty();
      const bool letter = assignment.name.empty() && assignment.atom.size() == 1;  // 12N is asparagine there
      if (atomElsewhere && letter && shift.name.empty()) {
        shift.name = assignment.atom;
      } else if (atomElsewhere && assignment.chain.empty()) {
        assignment.chain = assignment.atom;
      }
      if (shift.chain.empty()) shift.chain = assignment.chain;
      if (!atomElsewhere) shift.atom = assignment.atom;
    }
    // 43-1 is the residue before 43, which the program that wrote it does not know; @12 is none at all.
    const std::size_t sign = number.find_first_of("+-", 1);
    const bool relative = sign != std::string::npos && wholeInteger(number.substr(0, sign));
    assigned = !isMissing(number) && !relative && !number.starts_with('@');
    if (!assigned) return true;
    const auto residue = residueNumber(number);
    if (!residue) {
      return log_.error(
          row.line, "the residue number '" + number + "' is no integer; are the columns in another order?");
    }
    shift.residue = std::to_string(*residue);
    return true;
  }

  /// One cell of a wide table: a value, or those of both alpha protons of glycine as in 3.95/4.02.
  void addValues(Shift shift, const std::string& text) {
    const std::size_t mark = text.find_first_of("/;&");
    if (mark == std::string::npos || text::upper(shift.atom) != "HA" || residueCode(shift.name) != 'G') {
      addShift(shift, text);
      return;
    }
    shift.atom = "HA2";
    addShift(shift, std::string(text::trim(std::string_view(text).substr(0, mark))));
    shift.atom = "HA3";
    addShift(shift, std::string(text::trim(std::string_view(text).substr(mark + 1))));
  }

  void addShift(Shift shift, const std::string& text) {
    shift.text = text;
    shift.missing = isMissing(text);
    if (entry_.findChain(shift.chain) == nullptr) {
      entry_.chains.push_back({shift.chain, {}, "", {}, true, false, ""});
    }
    bool listed = false;
    for (const ShiftList& list : entry_.lists) listed = listed || list.id == shift.list;
    if (!listed) entry_.lists.push_back({shift.list, "", ""});
    entry_.shifts.push_back(std::move(shift));
  }

  const Cells& cells_;
  const Columns& columns_;
  Entry& entry_;
  Log& log_;
};

const char* formatName(const Cells& cells) {
  if (cells.separator == ' ') return "column list";
  return cells.separator == '\t' ? "TSV" : "CSV";
}

}  // namespace

bool readDelimited(std::string_view text, const std::string& given, Entry& entry, Log& log) {
  Cells cells;
  Columns columns;
  if (!splitCells(text, cells, log) || !chooseColumns(cells, given, columns, log)) return false;
  if (!DelimitedReader(cells, columns, entry, log).run()) return false;
  if (entry.shifts.empty()) return log.error(0, "the file holds no rows");
  entry.format = formatName(cells);
  if (cells.decimalComma) entry.format += " with decimal commas";
  entry.facts.push_back(columns.said);
  if (!columns.guess.empty())
    log.warn(cells.rows[columns.firstRow].line, columns.guess + "; --columns says otherwise");
  bool named = false;
  for (const Shift& shift : entry.shifts) named = named || !shift.name.empty();
  entry.needsSequence = !named;
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
