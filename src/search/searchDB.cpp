// First search pass: pre-screen of the whole database under the predicted phi/psi maps, then ranking of the
// best candidates by their secondary shifts.
#include <algorithm>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "base/atoms.h"
#include "base/maps.h"
#include "base/residues.h"
#include "driver/ORBEL.h"
#include "search/candidates.h"
#include "search/fragment_distance.h"
#include "search/prescreen.h"

namespace {

constexpr std::size_t kSameTypeKept = 20;
constexpr double kAtomsPerResidue = static_cast<double>(kAtoms);

/// Ranking list of the pre-screened fragments with a positive score: distance per atom divided by the score
/// -> centre entry. Of equal keys the lower score stays.
template <class Distance>
CandidateMap rankByDistance(const CandidateMap& screened, double atoms, const Distance& distance) {
  std::vector<std::pair<double, int>> keyed;
  keyed.reserve(screened.size());
  for (const auto& [score, entry] : screened) {
    if (score > 0.0) keyed.emplace_back(distance(entry) / atoms / score, entry);
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  CandidateMap ranking;
  for (const auto& [key, entry] : keyed) ranking.emplace_hint(ranking.end(), key, entry);
  return ranking;
}

}  // namespace

/// `matches` receives the whole ranked list, keyed by distance, or by score when too few fragments fit the
/// predicted map; `sameType` the pre-screened fragments of the query's type, keyed by score.
void ORBEL::searchDB(int resid, CandidateMap& matches, CandidateMap& sameType) {
  if (fragmentDatabase == nullptr) return;
  const DB& db = *fragmentDatabase;

  const auto index =
      screenIndex != nullptr ? screenIndex : std::make_shared<const ScreenIndex>(db, sourceRanges());
  const int halfWidth = fragmentHalfWidth(alignLength);
  Prescreen screen({resid, halfWidth, residueCode, searchPrior, blosumMatrix});
  screen.scan(db, *index);

  const FragmentDistance query(shiftRows(), resid);
  const bool byDistance = keyFromTop(screen.matches, kMatchesKept) > 0.0;
  if (byDistance) {
    matches = rankByDistance(screen.matches, kAtomsPerResidue * alignLength,
                             [&](int entry) { return query.weighted(db, entry, halfWidth); });
  } else {
    matches = screen.matches;
  }
  const CandidateMap cut = byDistance ? cutToSmallest(matches, kMatchesKept, kMatchesCut)
                                      : cutToHighest(matches, kMatchesKept, kMatchesCut);
  fillMatchLists(resid, cut, quiet ? std::map<int, double>() : keysByEntry(screen.matches), "");

  if (!hasChi1Rotamers(foldedCode(valueOr(residueCode, resid)))) return;
  const CandidateMap ranking = rankByDistance(screen.sameType, kAtomsPerResidue * 3,
                                              [&](int entry) { return query.unweightedTriplet(db, entry); });
  sameTypeIndex[resid] = fillSameTypeLists(resid, ranking, kSameTypeKept);
  sameType = std::move(screen.sameType);
}
