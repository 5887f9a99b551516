// The program's own input table, so that a table can be checked and brought to its usual layout.
#include <algorithm>

#include "convert/names.h"
#include "convert/readers.h"
#include "convert/table_check.h"
#include "tables/text.h"

namespace convert {

namespace {

struct TableState {
  std::string sequence;
  std::string first;
  std::vector<std::string> vars;
  int sequenceLine = 0;
  TableCheck check;

  int column(std::string_view name) const {
    const auto it = std::find(vars.begin(), vars.end(), name);
    return it == vars.end() ? -1 : static_cast<int>(it - vars.begin());
  }
};

void readData(int number, const std::vector<std::string_view>& words, TableState& state) {
  if (words.size() < 3) return;
  const std::string key = text::upper(words[1]);
  if (key == "FIRST_RESID") {
    if (state.first.empty()) {
      state.first = words[2];
    } else if (state.first != words[2]) {
      state.check.repeatedFirstResid(number, words[2]);
    }
  }
  if (key != "SEQUENCE") return;
  if (state.sequenceLine == 0) state.sequenceLine = number;
  for (std::size_t i = 2; i < words.size(); ++i) state.sequence += words[i];
}

/// Residue name of a letter that is none of the 20: the amino acids that have a letter of their own, and what
/// other programs write for a cis proline (p) and a charged histidine (h). Empty for all others.
std::string_view foreignName(char letter) {
  switch (letter) {
    case 'U':
      return "SEC";
    case 'O':
      return "PYL";
    case 'p':
      return "PRO";
    case 'h':
      return "HIS";
    default:
      return "";
  }
}

bool readRow(int number, const std::vector<std::string_view>& words, TableState& state, Entry& entry,
             Log& log) {
  if (words.size() != state.vars.size()) {
    state.check.wrongLength(number, words.size());
    return true;
  }
  state.check.goodRow();
  const auto cell = [&](std::string_view name) {
    const int column = state.column(name);
    return column < 0 ? std::string() : std::string(words[static_cast<std::size_t>(column)]);
  };
  Shift shift;
  shift.line = number;
  shift.chain = "A";
  shift.list = "1";
  const auto residue = wholeInteger(cell("RESID"));
  if (!residue)
    return log.error(number,
                     "the RESID '" + cell("RESID") + "' is no integer; are the columns in another order?");
  shift.residue = std::to_string(*residue);
  shift.name = cell("RESNAME");
  if (shift.name.size() == 1 && !foreignName(shift.name[0]).empty()) shift.name = foreignName(shift.name[0]);
  shift.atom = cell("ATOMNAME");
  shift.text = cell("SHIFT");
  if (hasDecimalComma(shift.text)) state.check.decimalComma(number, shift.text);
  entry.shifts.push_back(std::move(shift));
  return true;
}

/// Every character of the sequence is a residue, as for the prediction, known or not.
std::vector<Residue> tableResidues(TableState& state, int first) {
  std::vector<Residue> residues;
  for (const char letter : state.sequence) {
    Residue residue;
    residue.key = residue.author = std::to_string(first + static_cast<int>(residues.size()));
    const std::string_view foreign = foreignName(letter);
    residue.name = foreign.empty() ? std::string(1, letter) : std::string(foreign);
    residue.code = residueCode(residue.name);
    residue.line = state.sequenceLine;
    if (residue.code != letter && letter != 'X') {
      state.check.foreignLetter(state.sequenceLine, first + static_cast<int>(residues.size()), letter,
                                residue.code);
    }
    residues.push_back(std::move(residue));
  }
  return residues;
}

/// Residues of the DATA SEQUENCE lines, numbered from FIRST_RESID.
bool makeChain(TableState& state, Entry& entry, Log& log) {
  const auto first = wholeInteger(state.first.empty() ? "1" : state.first);
  if (!first) return log.error(0, "DATA FIRST_RESID '" + state.first + "' is no integer");
  Chain& chain = entry.chains.front();
  chain.residues = tableResidues(state, *first);
  chain.sequenceGiven = !chain.residues.empty();
  return state.check.report(state.vars.size(), log) && sequenceFromShifts(entry, log);
}

}  // namespace

bool readTable(std::string_view text, Entry& entry, Log& log) {
  entry.format = "table";
  entry.chains.push_back({"A", {}, "", {}, true, false, ""});
  entry.lists.push_back({"1", "", ""});
  TableState state;
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty() || words[0][0] == '#') return true;
    const std::string keyword = text::upper(words[0]);
    if (keyword == "REMARK" || keyword == "FORMAT") return true;
    if (keyword == "DATA") {
      readData(number, words, state);
      return true;
    }
    if (keyword == "VARS") {
      state.vars.assign(words.begin() + 1, words.end());
      for (const std::string_view needed : {"RESID", "RESNAME", "ATOMNAME", "SHIFT"}) {
        if (state.column(needed) < 0) return log.error(number, "the VARS line lacks " + std::string(needed));
      }
      return true;
    }
    if (state.vars.empty()) return log.error(number, "a row before the VARS line");
    return readRow(number, words, state, entry, log);
  });
  if (!read) return false;
  if (entry.shifts.empty()) {
    return state.check.report(state.vars.size(), log) && log.error(0, "the table holds no rows");
  }
  return makeChain(state, entry, log);
}

}  // namespace convert
