// XEASY/CYANA .prot: number, shift, error, atom, residue number; the sequence stands in a second file.
#include "base/missing.h"
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

constexpr double kUnassigned = kMissingLimit;

/// Chain whose .seq holds that residue number.
const Chain* chainWithResidue(const Entry& entry, const std::string& key) {
  for (const Chain& chain : entry.chains) {
    if (entry.findResidue(chain, key) != nullptr) return &chain;
  }
  return nullptr;
}

bool readRow(int number, const std::vector<std::string_view>& words, bool numbered, Entry& entry, Log& log) {
  if (words.size() < 5) {
    return log.error(number, "expected number, shift, error, atom and residue number, found " +
                                 std::to_string(words.size()) + " columns");
  }
  if (!wholeNumber(words[1]) || !wholeInteger(words[4])) {
    return log.error(
        number, "expected number, shift, error, atom and residue number; are the columns in another order?");
  }
  Shift shift;
  shift.line = number;
  shift.text = words[1];
  shift.missing = *wholeNumber(words[1]) >= kUnassigned;
  shift.atom = words[3];
  shift.residue = std::to_string(*wholeInteger(words[4]));
  shift.list = "1";
  if (words.size() > 5 && residueCode(words[5]) != 'X') shift.name = words[5];
  if (!numbered) {
    shift.chain = entry.chains.front().id;
  } else if (const Chain* chain = chainWithResidue(entry, shift.residue)) {
    shift.chain = chain->id;
  } else if (shift.missing) {
    ++entry.unassigned;
    return true;
  } else {
    return log.error(number, "residue " + shift.residue + " is not in the sequence");
  }
  entry.shifts.push_back(std::move(shift));
  return true;
}

}  // namespace

bool readXeasy(std::string_view text, const std::vector<Chain>& sequence, Entry& entry, Log& log) {
  entry.format = "XEASY";
  entry.chains = sequence;
  entry.lists.push_back({"1", "", ""});
  // A .seq numbers its residues; a FASTA text does not and is matched to the shifts later.
  const bool numbered = !sequence.empty() && !sequence.front().residues.front().author.empty();
  if (!numbered) entry.chains.assign(1, {"A", {}, "", {}, true, false, ""});
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty() || words[0][0] == '#' || words[0][0] == '!') return true;
    return readRow(number, words, numbered, entry, log);
  });
  if (!read) return false;
  bool named = false;
  for (const Shift& shift : entry.shifts) named = named || !shift.name.empty();
  entry.needsSequence = !numbered && !named;
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
