// Sparky and POKY resonance lists: Group Atom Nuc Shift SDev Assignments.
#include <cctype>

#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

struct Group {
  std::string chain, name, number;
};

bool isLetter(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

std::string withoutPunctuation(std::string_view s) {
  std::string result;
  for (const char c : s) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) result += c;
  }
  return result;
}

/// "T7", "Thr7", "T7.A", "A:T7": residue letters, number, chain before a colon or after the number.
bool parseGroup(std::string_view text, Group& group) {
  const std::size_t mark = text.find_first_of(":.|");
  if (mark != std::string_view::npos && mark + 1 < text.size() && isLetter(text[mark + 1]) &&
      text.find_first_of("0123456789", mark) != std::string_view::npos) {
    group.chain = withoutPunctuation(text.substr(0, mark));
    text.remove_prefix(mark + 1);
  }
  std::size_t letters = 0;
  while (letters < text.size() && isLetter(text[letters])) ++letters;
  if (letters != 1 && letters != 3) return false;
  std::size_t end = letters;
  if (end < text.size() && text[end] == '-') ++end;
  const std::size_t digits = end;
  while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end])) != 0) ++end;
  if (end == digits) return false;
  group.name = text.substr(0, letters);
  group.number = text.substr(letters, end - letters);
  if (end < text.size()) group.chain = withoutPunctuation(text.substr(end));
  return true;
}

std::string chainFor(const std::string& name, Entry& entry) {
  const std::string id = name.empty() ? "A" : name;
  if (entry.findChain(id) == nullptr) entry.chains.push_back({id, {}, "", {}, true, false, ""});
  return id;
}

bool readRow(int number, const std::vector<std::string_view>& words, Entry& entry, Log& log) {
  if (words.size() < 4) {
    return log.error(
        number, "expected Group, Atom, Nuc and Shift, found " + std::to_string(words.size()) + " columns");
  }
  Group group;
  if (words[0].starts_with('?') || !parseGroup(words[0], group)) {
    ++entry.unassigned;
    return true;
  }
  Shift shift;
  shift.line = number;
  shift.list = "1";
  shift.residue = std::to_string(wholeInteger(group.number).value_or(0));
  shift.name = group.name;
  shift.atom = words[1];
  shift.text = words[3];
  shift.chain = chainFor(group.chain, entry);
  entry.shifts.push_back(std::move(shift));
  return true;
}

}  // namespace

bool readSparky(std::string_view text, Entry& entry, Log& log) {
  entry.format = "Sparky resonance list";
  entry.needsSequence = true;
  entry.lists.push_back({"1", "", ""});
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty() || words[0][0] == '#' || text::upper(words[0]) == "GROUP") return true;
    return readRow(number, words, entry, log);
  });
  if (!read) return false;
  if (entry.shifts.empty()) return log.error(0, "no row names a residue in the first column (as in T7)");
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
