// Second search pass: the first pass's candidates under the predicted angles of the neighbours, and the chi1
// rotamer scores of the same-type fragments.
#include <algorithm>
#include <iostream>
#include <string>

#include "base/maps.h"
#include "base/residues.h"
#include "base/statistics.h"
#include "driver/ORBEL.h"
#include "search/candidates.h"
#include "search/fragment_reach.h"
#include "search/torsion_agreement.h"
#include "tables/output_text.h"

namespace {

constexpr double kMatchTolerance = 80.0;     // degrees, given
constexpr double kSameTypeTolerance = 50.0;  // degrees, given
constexpr std::size_t kSameTypeLimit = 100;
constexpr std::size_t kSameTypeCut = 101;
constexpr std::size_t kScoresPerRotamer = 10;
constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);
constexpr const char* kRotamers[] = {"g-", "g+", "t"};

using RotamerScores = std::map<std::string, std::vector<double>>;

CandidateMap agreeing(const CandidateMap& candidates, const DB& db, const TorsionAgreement& agreement,
                      double tolerance) {
  CandidateMap kept;
  for (const auto& [key, entry] : candidates) {
    if (agreement.holds(db, entry, tolerance)) kept.emplace_hint(kept.end(), key, entry);
  }
  return kept;
}

/// The matches of the second pass. Candidates keyed by score (the 25th best is not positive) are not
/// filtered: too few fragments fit the predicted map for a choice among them.
CandidateMap secondMatches(const CandidateMap& candidates, const DB& db, const TorsionAgreement& agreement) {
  if (keyFromTop(candidates, kMatchesKept) <= 0.0) {
    return cutToHighest(candidates, kMatchesKept, kMatchesCut);
  }
  return cutToSmallest(agreeing(candidates, db, agreement, kMatchTolerance), kMatchesKept, kMatchesCut);
}

bool complete(const RotamerScores& scores) {
  return std::all_of(std::begin(kRotamers), std::end(kRotamers), [&](const char* rotamer) {
    const auto* list = findValue(scores, rotamer);
    return list != nullptr && list->size() >= kScoresPerRotamer;
  });
}

/// Up to 10 network scores for each rotamer, best first; the walk ends when all three lists are full.
RotamerScores collectScores(const CandidateMap& fragments, const DB& db) {
  RotamerScores scores;
  for (const auto& [key, entry] : fragments) {
    if (complete(scores)) break;
    auto& list = scores[ORBEL::getChi1Rotamer(db.angles(entry)[2])];
    if (list.size() < kScoresPerRotamer) list.push_back(key);
  }
  return scores;
}

void reportScores(const RotamerScores& scores, std::size_t fragments) {
  std::cout << " cluster-specific statistics for " << fragments << " chi1 prediction: \n";
  for (const std::string rotamer : kRotamers) {
    const std::vector<double> list = valueOr(scores, rotamer);
    const std::string padded = rotamer.size() == 1 ? rotamer + " " : rotamer;
    std::cout << "  " << list.size() << " \tbest matched fragments with " << padded << ' '
              << cellText(average(list)) << " +/- " << cellText(standardDeviation(list)) << '\n';
  }
}

}  // namespace

TorsionAgreement ORBEL::torsionAgreement(int resid) const {
  return {{predCount, predPhi, predPsi, topCount}, resid, fragmentHalfWidth(alignLength)};
}

/// `matches` and `sameType` are the lists that the first pass returned for the residue; `sameType` is
/// replaced by the agreeing fragments keyed by the chi1 network's score.
void ORBEL::searchDB2(int resid, CandidateMap& matches, CandidateMap& sameType) {
  if (fragmentDatabase == nullptr) return;
  if (!quiet) std::cout << " checking " << matches.size() << " preliminary fragments" << std::endl;

  if (valueOr(predCount, resid) < topCount) {
    const CandidateMap list = secondMatches(matches, *fragmentDatabase, torsionAgreement(resid));
    fillMatchLists(resid, list, quiet ? std::map<int, double>() : keysByEntry(matches), " r2");
  }

  if (!hasChi1Rotamers(valueOr(residueCode, resid))) return;
  selectChi1Fragments(resid, sameType);
  evalChi1WithANN(resid, sameType);
  chi1RotamerScores[resid] = collectScores(sameType, *fragmentDatabase);
  if (!quiet) reportScores(chi1RotamerScores[resid], sameType.size());
  fillSameTypeLists(resid, sameType, kUnlimited);
}

void ORBEL::selectChi1Fragments(int resid, CandidateMap& sameType) const {
  if (fragmentDatabase == nullptr) return;
  sameType = cutToSmallest(agreeing(sameType, *fragmentDatabase, torsionAgreement(resid), kSameTypeTolerance),
                           kSameTypeLimit, kSameTypeCut);
}
