// The sequence of a file that has none: residues of its shift rows, gaps filled with unknown ones.
#include <map>
#include <unordered_map>
#include <utility>

#include "convert/names.h"
#include "convert/readers.h"

namespace convert {

namespace {

constexpr int kLongestChain = 5000;   // more residues than any chain with assigned shifts
constexpr int kMostUnknown = 20'000;  // residues that stand for gaps, in all chains of a file

/// A residue number with its insertion code, in the order of the chain.
using Place = std::pair<int, std::string>;
using Places = std::map<Place, const Shift*>;

bool placeOf(const Shift& shift, Place& place, Log& log) {
  const std::size_t digits = shift.residue.find_last_of("0123456789");
  const std::size_t behind = digits == std::string::npos ? 0 : digits + 1;
  const auto number = wholeInteger(std::string_view(shift.residue).substr(0, behind));
  if (!number || shift.residue.size() > behind + 1) {
    return log.error(shift.line, "the residue number '" + shift.residue +
                                     "' is no integer; are the columns in another order?");
  }
  place = {*number, shift.residue.substr(behind)};
  return true;
}

bool addResidues(const Places& places, Chain& chain, int& unknown, Log& log) {
  const int low = places.begin()->first.first, high = places.rbegin()->first.first;
  const int missing = high - low + 1 - static_cast<int>(places.size());
  if (high - low >= kLongestChain || (missing > 0 && (unknown += missing) > kMostUnknown)) {
    return log.error(places.rbegin()->second->line, "the residue numbers run from " + std::to_string(low) +
                                                        " to " + std::to_string(high) +
                                                        "; are the columns in another order?");
  }
  int next = low;
  for (const auto& [place, shift] : places) {
    for (; next < place.first; ++next) {
      Residue gap;
      gap.key = std::to_string(next);
      chain.residues.push_back(gap);
    }
    Residue residue;
    residue.key = shift->residue;
    residue.name = shift->name;
    residue.line = shift->line;
    residue.code = residueCode(residue.name);
    chain.residues.push_back(residue);
    next = place.first + 1;
  }
  return true;
}

}  // namespace

bool sequenceFromShifts(Entry& entry, Log& log) {
  std::unordered_map<std::string, Places> byChain;
  for (const Chain& chain : entry.chains) {
    if (chain.residues.empty()) byChain.emplace(chain.id, Places{});
  }
  for (const Shift& shift : entry.shifts) {
    const auto it = byChain.find(shift.chain);
    if (it == byChain.end()) continue;
    Place place;
    if (!placeOf(shift, place, log)) return false;
    const auto [known, added] = it->second.emplace(std::move(place), &shift);
    if (!added && known->second->name.empty()) known->second = &shift;
  }
  int unknown = 0;
  for (Chain& chain : entry.chains) {
    const auto it = byChain.find(chain.id);
    if (it == byChain.end() || it->second.empty() || !chain.residues.empty()) continue;
    if (!addResidues(it->second, chain, unknown, log)) return false;
  }
  return true;
}

}  // namespace convert
