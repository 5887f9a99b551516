// The match lists of a residue, as both search passes fill them.
#include <array>
#include <cstdio>
#include <iostream>

#include "base/maps.h"
#include "base/missing.h"
#include "driver/ORBEL.h"
#include "search/candidates.h"
#include "search/fragment_reach.h"

namespace {

/// Residue type and number of an entry, e.g. "K48 ".
std::string residueText(const DB& db, int entry) {
  const auto i = toIndex(entry);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%1c%-3d", db.dbResName[i], static_cast<int>(db.dbResid[i]));
  return text.data();
}

void reportMatch(const DB& db, int entry, int rank, double key, double firstKey, const std::string& lineEnd) {
  const float* angles = db.angles(entry);
  std::array<char, 512> text{};
  std::snprintf(text.data(), text.size(), " %-7d %4d %8.3f %8.3f  %8.3f  %8.3f  ", entry, rank,
                static_cast<double>(angles[0]), static_cast<double>(angles[1]), key, firstKey);
  std::cout << text.data() << residueText(db, entry - 1) << ' ' << residueText(db, entry) << ' '
            << residueText(db, entry + 1) << ' ' << db.source(entry) << lineEnd << '\n';
}

}  // namespace

void ORBEL::fillMatchLists(int resid, const CandidateMap& list, const std::map<int, double>& keyOf,
                           const std::string& lineEnd) {
  auto& phi = matchPhi[resid];
  auto& psi = matchPsi[resid];
  auto& distance = matchDistance[resid];
  auto& index = matchIndex[resid];
  phi.clear();
  psi.clear();
  distance.clear();
  index.clear();
  int rank = 0;
  for (const auto& [key, entry] : list) {
    const float* angles = fragmentDatabase->angles(entry);
    phi.push_back(static_cast<double>(angles[0]));
    psi.push_back(static_cast<double>(angles[1]));
    distance.push_back(key);
    index[++rank] = entry;
    if (!quiet) reportMatch(*fragmentDatabase, entry, rank, key, valueOr(keyOf, entry), lineEnd);
    if (phi.size() == kMatchesKept) break;
  }
}

std::map<int, int> ORBEL::fillSameTypeLists(int resid, const CandidateMap& list, std::size_t limit) {
  auto& chi1 = sameTypeChi1[resid];
  auto& distance = sameTypeDistance[resid];
  chi1.clear();
  distance.clear();
  std::map<int, int> index;
  for (const auto& [key, entry] : list) {
    const auto value = static_cast<double>(fragmentDatabase->angles(entry)[2]);
    if (!(value <= kMissingLimit)) continue;
    chi1.push_back(value);
    distance.push_back(key);
    index[static_cast<int>(chi1.size())] = entry;
    if (chi1.size() == limit) break;
  }
  return index;
}
