// CSV, TSV and blank-separated lists with a header line that names the columns.
#include <array>

#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

enum Column { kChain, kNumber, kType, kAtom, kShift, kColumns };

constexpr std::array<std::string_view, kColumns> kColumnNames = {"chain", "residue number", "residue type",
                                                                 "atom", "shift"};

/// The names a column may have, each between blanks.
constexpr std::array<std::string_view, kColumns> kAliases = {
    " chain chain_id chain_code asym_id auth_asym_id segid ",
    " resid seq_id residue residue_number res_num resnum resi comp_index_id sequence_code seq number num ",
    " resname comp_id residue_name residue_type res_name aa type res ",
    " atom atom_id atom_name atomname name ", " shift value ppm val cs chemical_shift "};

/// Cells of a line; a cell may stand in double quotes.
std::vector<std::string> splitLine(std::string_view line, char separator) {
  std::vector<std::string> cells;
  if (separator == ' ') {
    for (const std::string_view word : text::split_WhiteSpace(line)) cells.emplace_back(word);
    return cells;
  }
  std::string cell;
  bool quoted = false;
  for (const char c : line) {
    if (c == '"') {
      quoted = !quoted;
    } else if (c == separator && !quoted) {
      cells.emplace_back(text::trim(cell));
      cell.clear();
    } else {
      cell += c;
    }
  }
  cells.emplace_back(text::trim(cell));
  return cells;
}

char separatorOf(std::string_view header) {
  for (const char candidate : {'\t', ',', ';'}) {
    if (header.find(candidate) != std::string_view::npos) return candidate;
  }
  return ' ';
}

struct Header {
  char separator = ' ';
  std::size_t width = 0;
  std::array<int, kColumns> columns{};
};

bool readHeader(int number, std::string_view line, Header& header, Log& log) {
  while (line.starts_with('#') || line.starts_with(' ')) line.remove_prefix(1);
  header.separator = separatorOf(line);
  header.columns.fill(-1);
  const std::vector<std::string> cells = splitLine(line, header.separator);
  header.width = cells.size();
  for (std::size_t i = 0; i < cells.size(); ++i) {
    std::string name = " ";
    for (const char c : cells[i]) name += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    name += ' ';
    for (std::size_t column = 0; column < kColumns; ++column) {
      const bool named = kAliases[column].find(name) != std::string_view::npos;
      if (named && header.columns[column] < 0) header.columns[column] = static_cast<int>(i);
    }
  }
  for (const Column needed : {kNumber, kAtom, kShift}) {
    if (header.columns[needed] >= 0) continue;
    return log.error(number, "no known shift list, or the header line names no column for the " +
                                 std::string(kColumnNames[needed]) + " (resid, resname, atom, shift)");
  }
  return true;
}

std::string cellOf(const std::vector<std::string>& cells, const Header& header, Column column) {
  return header.columns[column] < 0 ? "" : cells[static_cast<std::size_t>(header.columns[column])];
}

bool readRow(int number, std::string_view line, const Header& header, Entry& entry, Log& log) {
  const std::vector<std::string> cells = splitLine(line, header.separator);
  if (cells.size() != header.width) {
    return log.error(number, "expected " + std::to_string(header.width) +
                                 " columns as in the header, found " + std::to_string(cells.size()));
  }
  Shift shift;
  shift.line = number;
  shift.list = "1";
  shift.chain = cellOf(cells, header, kChain);
  if (shift.chain.empty()) shift.chain = "A";
  shift.residue = cellOf(cells, header, kNumber);
  shift.name = cellOf(cells, header, kType);
  shift.atom = cellOf(cells, header, kAtom);
  shift.text = cellOf(cells, header, kShift);
  const std::string raised = text::upper(shift.text);
  shift.missing = raised.empty() || raised == "." || raised == "?" || raised == "NA" || raised == "-";
  const auto residue = wholeInteger(shift.residue);
  if (!residue) {
    return log.error(number, "the residue number '" + shift.residue +
                                 "' is no integer; are the columns in another order?");
  }
  shift.residue = std::to_string(*residue);
  if (entry.findChain(shift.chain) == nullptr) {
    entry.chains.push_back({shift.chain, {}, "", {}, true, false, ""});
  }
  entry.shifts.push_back(std::move(shift));
  return true;
}

}  // namespace

bool readDelimited(std::string_view text, Entry& entry, Log& log) {
  entry.lists.push_back({"1", "", ""});
  Header header;
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    if (text::trim(line).empty()) return true;
    if (header.width == 0) return readHeader(number, line, header, log);
    return line[0] == '#' || readRow(number, line, header, entry, log);
  });
  if (!read) return false;
  if (entry.shifts.empty()) return log.error(0, "the file holds no rows");
  entry.format = header.separator == '\t' ? "TSV" : header.separator == ' ' ? "column list" : "CSV";
  entry.needsSequence = header.columns[kType] < 0;
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
