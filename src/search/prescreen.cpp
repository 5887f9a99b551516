// Pre-screen of the first pass: how well a database fragment's phi/psi boxes fit the query's predicted maps.
#include "search/prescreen.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "driver/maps.h"
#include "search/candidates.h"

namespace {

constexpr std::array<double, kMaxHalfWidth + 1> kScreenWeights = {1.0, 0.81, 0.64, 0.49};
constexpr std::size_t kCandidateLimit = 1000;
constexpr float kBroken = -9999.0F;

std::size_t codeIndex(char code) {
  return static_cast<unsigned char>(code);
}

}  // namespace

Prescreen::Prescreen(const ORBEL& run, int resid)
    : halfWidth_(fragmentHalfWidth(run.alignLength)),
      centreCode_(foldedCode(valueOr(run.residueCode, resid))),
      prolineFollows_(valueOr(run.residueCode, resid + 1) == 'P'),
      wantSameType_(hasChi1Rotamers(centreCode_)) {
  for (int k = -halfWidth_; k <= halfWidth_; ++k) fillPosition(run, resid, k);
  fillCentre(run);
  fillBounds();
}

/// Prior and type penalty of query residue resid + k; its code is taken unfolded.
void Prescreen::fillPosition(const ORBEL& run, int resid, int k) {
  const auto position = toIndex(k + halfWidth_);
  if (const auto* boxes = findValue(run.searchPrior, resid + k)) {
    const double weight = kScreenWeights[toIndex(std::abs(k))];
    for (const auto& [box, prior] : *boxes) {
      if (box >= 0 && box < ClusterData::kBoxes) {
        prior_[position][toIndex(box)] = weight * prior;
      }
    }
  }
  if (const auto* row = findValue(run.blosumMatrix, valueOr(run.residueCode, resid + k))) {
    for (const auto& [code, similarity] : *row) {
      if (similarity < 0.0) penalty_[position][codeIndex(code)] = similarity / 10.0;
    }
  }
}

/// Centres must be similar to the query's type; proline and glycine match themselves only.
void Prescreen::fillCentre(const ORBEL& run) {
  const bool ownTypeOnly = centreCode_ == 'P' || centreCode_ == 'G';
  for (std::size_t i = 0; i < kCodes; ++i) {
    centreAllowed_[i] = !ownTypeOnly || i == codeIndex(centreCode_) ? 1 : 0;
    typeCode_[i] = i == codeIndex(centreCode_) ? 1 : 0;
  }
  if (const auto* row = findValue(run.blosumMatrix, centreCode_)) {
    for (const auto& [code, similarity] : *row) {
      if (!(similarity >= 0.0)) centreAllowed_[codeIndex(code)] = 0;
    }
  }
}

/// Upper bounds for the early exit. The score is a sum of up to 14 terms, each partial sum rounded to single
/// precision with a relative error of at most 2^-24; no partial sum exceeds the sum of the largest
/// magnitudes, so 14 * 2^-24 < 1e-6 of that sum bounds the rounding. Twice as much is allowed for.
void Prescreen::fillBounds() {
  const int positions = 2 * halfWidth_ + 1;
  for (int i = 0; i < positions; ++i) {
    order_[toIndex(i)] = (i % 2 == 1) ? -(i + 1) / 2 : i / 2;
  }
  double magnitude = 0.0;
  for (int i = positions - 1; i >= 0; --i) {
    const auto position = toIndex(order_[toIndex(i)] + halfWidth_);
    double highest = 0.0;
    double largest = 0.0;
    for (const double value : prior_[position]) {
      highest = std::max(highest, value);
      largest = std::max(largest, std::abs(value));
    }
    double penalty = 0.0;
    for (const double value : penalty_[position]) penalty = std::max(penalty, std::abs(value));
    magnitude += largest + penalty;
    restHighest_[toIndex(i)] = restHighest_[toIndex(i) + 1] + highest;
  }
  margin_ = 2e-6 * magnitude + static_cast<double>(std::numeric_limits<float>::min());
}

void Prescreen::scanSource(const DB& db, int first, int last) {
  const int begin = std::max(first, 0) + halfWidth_;
  const int end = std::min(last, db.entryCount - 1) - halfWidth_;
  updatePromising();
  const std::size_t promising = collectPromising(db, begin, end);
  for (std::size_t i = 0; i < promising; ++i) {
    const int centre = centres_[i];
    if (!passesCentreTests(db, centre)) continue;
    const bool typeMatches = wantSameType_ && db.dbResName[toIndex(centre)] == centreCode_;
    const double threshold = typeMatches ? std::min(matchThreshold_, sameTypeThreshold_) : matchThreshold_;
    if (cannotExceed(db, centre, threshold)) continue;
    const auto value = static_cast<double>(score(db, centre));
    if (value > matchThreshold_) matches[value] = centre;
    if (typeMatches && value > sameTypeThreshold_) sameType[value] = centre;
  }
  trimToHighest(matches, kCandidateLimit, matchThreshold_);
  trimToHighest(sameType, kCandidateLimit, sameTypeThreshold_);
}

/// Classes whose prior at the centre leaves a chance to pass the thresholds. Thresholds only rise, so tables
/// made for lower ones stay right; they are renewed when they would reject noticeably more.
void Prescreen::updatePromising() {
  constexpr double kWorthwhile = 0.01;
  const bool risen = matchThreshold_ - promisingMatch_ > kWorthwhile ||
                     (wantSameType_ && sameTypeThreshold_ - promisingType_ > kWorthwhile);
  if (!risen) return;
  promisingMatch_ = matchThreshold_;
  promisingType_ = sameTypeThreshold_;
  const auto& prior = prior_[toIndex(halfWidth_)];
  for (std::size_t box = 0; box < kClasses; ++box) {
    const double highest = prior[box] + restHighest_[1];
    // Written as "not below" so that a prior that is not a number stays in.
    matchClass_[box] = highest < matchThreshold_ - margin_ ? 0 : 1;
    typeClass_[box] = wantSameType_ && !(highest < sameTypeThreshold_ - margin_) ? 1 : 0;
  }
}

/// Centres in `begin`..`end` that their own class and code do not rule out, into centres_. Without branches:
/// most entries are ruled out here, in no predictable order.
std::size_t Prescreen::collectPromising(const DB& db, int begin, int end) {
  if (end < begin) return 0;
  centres_.resize(toIndex(end - begin) + 1);
  std::size_t count = 0;
  for (int centre = begin; centre <= end; ++centre) {
    const std::size_t box = std::min<std::size_t>(db.dbClass[toIndex(centre)], kClasses - 1);
    const std::size_t code = codeIndex(db.dbResName[toIndex(centre)]);
    const int promising = centreAllowed_[code] & (matchClass_[box] | (typeClass_[box] & typeCode_[code]));
    centres_[count] = centre;
    count += static_cast<std::size_t>(promising);
  }
  return count;
}

bool Prescreen::passesCentreTests(const DB& db, int centre) const {
  const auto entry = toIndex(centre);
  if (centreAllowed_[codeIndex(db.dbResName[entry])] == 0) return false;
  return !prolineFollows_ || db.dbResName[entry + 1] == 'P';
}

/// True when the score certainly stays at or below `threshold`. Walks outwards from the centre; never true
/// where a prior is not a number.
bool Prescreen::cannotExceed(const DB& db, int centre, double threshold) const {
  const auto positions = toIndex(2 * halfWidth_ + 1);
  const double limit = threshold - margin_;
  double sum = 0.0;
  for (std::size_t i = 0; i < positions; ++i) {
    sum += term(db, centre, order_[i]);
    if (sum + restHighest_[i + 1] < limit) return true;
  }
  return false;
}

double Prescreen::term(const DB& db, int centre, int k) const {
  const auto entry = toIndex(centre + k);
  const auto position = toIndex(k + halfWidth_);
  const auto box = std::min<std::size_t>(db.dbClass[entry], kClasses - 1);
  return prior_[position][box] + penalty_[position][codeIndex(db.dbResName[entry])];
}

/// The score itself; kBroken when the fragment runs across a gap in the residue numbering.
float Prescreen::score(const DB& db, int centre) const {
  const std::uint32_t centreResid = db.dbResid[toIndex(centre)];
  float sum = 0.0F;
  for (int k = -halfWidth_; k <= halfWidth_; ++k) {
    const auto entry = toIndex(centre + k);
    const auto position = toIndex(k + halfWidth_);
    // Residue numbers are unsigned and negative ones wrap; the difference is taken modulo 2^32.
    if (db.dbResid[entry] - centreResid != static_cast<std::uint32_t>(k)) return kBroken;
    const auto box = std::min<std::size_t>(db.dbClass[entry], kClasses - 1);
    sum = static_cast<float>(static_cast<double>(sum) + prior_[position][box]);
    sum = static_cast<float>(static_cast<double>(sum) + penalty_[position][codeIndex(db.dbResName[entry])]);
  }
  return sum;
}
