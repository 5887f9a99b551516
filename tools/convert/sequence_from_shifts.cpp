// The sequence of a file that has none: residues of its shift rows, gaps filled with unknown ones.
#include <map>

#include "convert/names.h"
#include "convert/readers.h"

namespace convert {

namespace {

constexpr int kLongestChain = 5000;  // more residues than any chain with assigned shifts

bool addResidues(const Entry& entry, Chain& chain, Log& log) {
  std::map<int, const Shift*> first;
  for (const Shift& shift : entry.shifts) {
    if (shift.chain != chain.id) continue;
    const auto number = wholeInteger(shift.residue);
    if (!number) {
      return log.error(shift.line, "the residue number '" + shift.residue +
                                       "' is no integer; are the columns in another order?");
    }
    const auto [known, added] = first.emplace(*number, &shift);
    if (!added && known->second->name.empty()) known->second = &shift;
  }
  if (first.empty()) return true;
  const int low = first.begin()->first, high = first.rbegin()->first;
  if (high - low >= kLongestChain) {
    return log.error(first.rbegin()->second->line, "the residue numbers run from " + std::to_string(low) +
                                                       " to " + std::to_string(high) +
                                                       "; are the columns in another order?");
  }
  for (int number = low; number <= high; ++number) {
    Residue residue;
    residue.key = std::to_string(number);
    if (const auto it = first.find(number); it != first.end()) {
      residue.name = it->second->name;
      residue.line = it->second->line;
    }
    residue.code = residueCode(residue.name);
    chain.residues.push_back(residue);
  }
  return true;
}

}  // namespace

bool sequenceFromShifts(Entry& entry, Log& log) {
  for (Chain& chain : entry.chains) {
    if (!chain.residues.empty()) continue;
    if (!addResidues(entry, chain, log)) return false;
  }
  return true;
}

}  // namespace convert
