// PIPP shift tables: a block per residue from RES_ID to END_RES_DEF, in it one atom and its shift a line.
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

struct Block {
  std::string number, name;
  int line = 0;
};

void addShift(int line, const Block& block, std::string_view atom, std::string_view value, Entry& entry) {
  Shift shift;
  shift.line = line;
  shift.chain = "A";
  shift.list = "1";
  shift.residue = block.number;
  shift.name = block.name;
  // HB1|HB2 is one value for both protons.
  const std::size_t bar = atom.find('|');
  shift.atom = bar == std::string_view::npos ? std::string(atom) : std::string(atom.substr(0, bar));
  if (bar != std::string_view::npos && text::upper(shift.atom).starts_with("HA")) shift.atom = "HA#";
  shift.text = value;
  entry.shifts.push_back(std::move(shift));
}

bool readLine(int number, const std::vector<std::string_view>& words, Block& block, Entry& entry, Log& log) {
  const std::string key = text::upper(words[0]);
  if (key == "RES_ID") {
    const auto residue = words.size() > 1 ? wholeInteger(words[1]) : std::nullopt;
    if (!residue) return log.error(number, "RES_ID has no integer");
    block = {std::to_string(*residue), "", number};
    return true;
  }
  if (key == "END_RES_DEF") {
    // A residue without a shift still tells its type.
    if (!block.number.empty()) addShift(block.line, block, "CA", "999", entry);
    if (!block.number.empty()) entry.shifts.back().missing = true;
    block = {};
    return true;
  }
  if (block.number.empty()) return true;  // file format, experiment and dimension lines
  if (key == "RES_TYPE") {
    block.name = words.size() > 1 ? std::string(words[1]) : "";
    return true;
  }
  if (key == "SPIN_SYSTEM_ID" || key == "HETEROGENEITY" || key == "RES_COMMENT" || words.size() < 2)
    return true;
  if (!wholeNumber(words[1])) {
    return log.error(number,
                     "expected an atom and its shift, found '" + std::string(words[1]) + "' for the shift");
  }
  addShift(number, block, words[0], words[1], entry);
  return true;
}

}  // namespace

bool readPipp(std::string_view text, Entry& entry, Log& log) {
  entry.format = "PIPP shift table";
  entry.chains.push_back({"A", {}, "", {}, true, false, ""});
  entry.lists.push_back({"1", "", ""});
  Block block;
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    return words.empty() || words[0][0] == '#' || readLine(number, words, block, entry, log);
  });
  if (!read) return false;
  if (!block.number.empty())
    return log.error(block.line, "the residue has no END_RES_DEF; is the file cut off?");
  if (entry.shifts.empty()) return log.error(0, "the file holds no residues");
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
