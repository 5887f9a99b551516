// Sparky and POKY resonance lists: Group Atom Nuc Shift SDev Assignments.
#include "convert/assignment.h"
#include "convert/cells.h"
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

/// The part of a row that names the residue: T7, Thr7, T7.A, A:T7. A list whose groups all have a dash behind
/// the letters (Thr-7) means no negative numbers.
bool dashesJoin(std::string_view text) {
  std::size_t dashes = 0, others = 0;
  forEachLine(text, [&](int, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.size() < 4 || words[0].starts_with('?') ||
        words[0].find_first_of("0123456789") == std::string::npos)
      return true;
    const std::size_t dash = words[0].find('-');
    ++(dash == 1 || dash == 3 ? dashes : others);
    return true;
  });
  return dashes > 1 && others == 0;
}

std::string chainFor(const std::string& name, Entry& entry) {
  const std::string id = name.empty() ? "A" : name;
  if (entry.findChain(id) == nullptr) entry.chains.push_back({id, {}, "", {}, true, false, ""});
  return id;
}

bool readRow(int number, const std::vector<std::string_view>& words, bool dashJoins, Entry& entry, Log& log) {
  if (words.size() < 4) {
    return log.error(
        number, "expected Group, Atom, Nuc and Shift, found " + std::to_string(words.size()) + " columns");
  }
  Assignment group;
  if (words[0].starts_with('?') || !parseAssignment(words[0], dashJoins, group) || group.name.empty()) {
    ++entry.unassigned;
    return true;
  }
  if (group.chain.empty()) group.chain = group.atom;  // T7.C is chain C: the atom has a column of its own
  Shift shift;
  shift.line = number;
  shift.list = "1";
  shift.residue = std::to_string(wholeInteger(group.number).value_or(0));
  shift.name = group.name;
  shift.atom = words[1];
  shift.text = words[3];
  shift.missing = isMissing(shift.text);
  shift.chain = chainFor(group.chain, entry);
  entry.shifts.push_back(std::move(shift));
  return true;
}

}  // namespace

bool readSparky(std::string_view text, Entry& entry, Log& log) {
  entry.format = "Sparky resonance list";
  entry.lists.push_back({"1", "", ""});
  const bool dashJoins = dashesJoin(text);
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty() || words[0][0] == '#' || text::upper(words[0]) == "GROUP") return true;
    return readRow(number, words, dashJoins, entry, log);
  });
  if (!read) return false;
  if (entry.shifts.empty()) return log.error(0, "no row names a residue in the first column (as in T7)");
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
