// Pre-screen of the first pass: how well a database fragment's phi/psi boxes fit the query's predicted maps.
#include "search/prescreen.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "base/maps.h"
#include "base/residues.h"

namespace {

constexpr std::array<double, kMaxHalfWidth + 1> kScreenWeights = {1.0, 0.81, 0.64, 0.49};  // given
constexpr int kBlock = 2048;  // entries scanned together: the lists of their centres stay in the cache

std::size_t codeIndex(char code) {
  return static_cast<unsigned char>(code);
}

}  // namespace

Prescreen::Prescreen(const ScreenQuery& query)
    : halfWidth_(query.halfWidth),
      centreCode_(foldedCode(valueOr(query.codes, query.resid))),
      prolineFollows_(valueOr(query.codes, query.resid + 1) == 'P'),
      wantSameType_(hasChi1Rotamers(centreCode_)) {
  for (int k = -halfWidth_; k <= halfWidth_; ++k) fillPosition(query, k);
  fillCentre(query);
  fillBounds();
}

/// Prior and type penalty of query residue resid + k; its code is taken unfolded.
void Prescreen::fillPosition(const ScreenQuery& query, int k) {
  const auto position = toIndex(k + halfWidth_);
  if (const auto* boxes = findValue(query.prior, query.resid + k)) {
    const double weight = kScreenWeights[toIndex(std::abs(k))];
    for (const auto& [box, prior] : *boxes) {
      if (box >= 0 && box < kPhiPsiBoxes) {
        prior_[position][toIndex(box)] = weight * prior;
        hasPrior_[position] = hasPrior_[position] || !(prior == 0.0);
      }
    }
  }
  if (const auto* row = findValue(query.similarity, valueOr(query.codes, query.resid + k))) {
    for (const auto& [code, similarity] : *row) {
      if (similarity < 0.0) penalty_[position][codeIndex(code)] = similarity / 10.0;
    }
  }
}

/// Centres must be similar to the query's type; proline and glycine match themselves only.
void Prescreen::fillCentre(const ScreenQuery& query) {
  const bool ownTypeOnly = centreCode_ == 'P' || centreCode_ == 'G';
  for (std::size_t i = 0; i < kCodes; ++i) {
    const bool own = i == codeIndex(centreCode_);
    if (own || !ownTypeOnly) centreCodes_[i] |= kMatch;
    if (own && wantSameType_) centreCodes_[i] |= kSameType;
  }
  if (const auto* row = findValue(query.similarity, centreCode_)) {
    for (const auto& [code, similarity] : *row) {
      if (!(similarity >= 0.0)) centreCodes_[codeIndex(code)] = 0;
    }
  }
}

/// Upper bounds for the early exit. The score is a sum of up to 14 terms, each partial sum rounded to single
/// precision with a relative error of at most 2^-24; no partial sum exceeds the sum of the largest
/// magnitudes, so 14 * 2^-24 < 1e-6 of that sum bounds the rounding. Twice as much is allowed for.
void Prescreen::fillBounds() {
  double magnitude = 0.0;
  for (int distance = halfWidth_; distance >= 0; --distance) {
    double highest = 0.0;
    for (int k = -distance; k <= distance; k += std::max(2 * distance, 1)) {
      const auto position = toIndex(k + halfWidth_);
      const auto& prior = prior_[position];
      const auto& penalty = penalty_[position];
      highest += std::max(0.0, *std::max_element(prior.begin(), prior.end()));
      const auto smaller = [](double a, double b) { return std::abs(a) < std::abs(b); };
      magnitude += std::abs(*std::max_element(prior.begin(), prior.end(), smaller));
      magnitude += std::abs(*std::max_element(penalty.begin(), penalty.end(), smaller));
    }
    restHighest_[toIndex(distance)] = restHighest_[toIndex(distance) + 1] + highest;
  }
  margin_ = 2e-6 * magnitude + static_cast<double>(std::numeric_limits<float>::min());
}

void Prescreen::scan(const DB& db, const ScreenIndex& index) {
  switch (halfWidth_) {
    case 1:
      return scanWith<1>(db, index);
    case 2:
      return scanWith<2>(db, index);
    default:
      return scanWith<3>(db, index);
  }
}

template <int h>
void Prescreen::scanWith(const DB& db, const ScreenIndex& index) {
  static_assert(h <= kMaxHalfWidth);
  const int entries = static_cast<int>(index.keys.size());
  int nextUpdate = 0;
  for (int begin = 0; begin < entries; begin += kBlock) {
    if (begin >= nextUpdate) {
      updatePromising(index);
      nextUpdate = begin + begin / 4;  // thresholds rise with the logarithm of the entries seen
    }
    std::size_t count = collectPromising(db, index, begin, std::min(begin + kBlock, entries));
    if (topMatches_.trimmed()) {
      count = keepPossible<1, 1>(db, index, count);
      if constexpr (h > 1) count = keepPossible<2, h>(db, index, count);
    }
    for (std::size_t i = 0; i < count; ++i) scores_[i] = score<h>(db, index, centres_[i]);
    offerScores(db, count);
  }
  matches = candidates<h>(db, index, topMatches_, kMatch);
  if (wantSameType_) sameType = candidates<h>(db, index, topSameType_, kSameType);
}

/// Keys whose prior at the centre leaves a chance to pass the thresholds. Thresholds only rise, so tables
/// made for lower ones stay right.
void Prescreen::updatePromising(const ScreenIndex& index) {
  const double match = topMatches_.threshold();
  const double type = topSameType_.threshold();
  if (match == promisingMatch_ && type == promisingType_) return;
  promisingMatch_ = match;
  promisingType_ = type;
  std::array<std::uint8_t, kBoxes> lists{};
  for (std::size_t box = 0; box < kBoxes; ++box) {
    const double highest = prior_[toIndex(halfWidth_)][box] + restHighest_[1];
    // Written as "not below" so that a prior that is not a number stays in.
    const int matchBit = highest < match - margin_ ? 0 : kMatch;
    const int typeBit = highest < type - margin_ ? 0 : kSameType;
    lists[box] = static_cast<std::uint8_t>(matchBit | typeBit);
  }
  for (std::size_t number = 0; number <= ScreenIndex::kCommonCodes; ++number) {
    const bool known = number < index.codes.size();
    if (!known && (number < ScreenIndex::kCommonCodes || !index.hasOtherCodes)) continue;
    const std::uint8_t allowed = known ? centreCodes_[codeIndex(index.codes[number])] : kMatch | kSameType;
    for (int reach = halfWidth_; reach <= kMaxHalfWidth; ++reach) {
      std::uint8_t* const keys = promising_.data() + (number << ScreenIndex::kCodeShift) +
                                 (toIndex(reach) << ScreenIndex::kReachShift);
      for (std::size_t box = 0; box < kBoxes; ++box) keys[box] = lists[box] & allowed;
    }
  }
}

/// Centres in `begin`..`end - 1` that their own box and code do not rule out, into centres_. Without
/// branches: most entries are ruled out here, in no predictable order.
std::size_t Prescreen::collectPromising(const DB& db, const ScreenIndex& index, int begin, int end) {
  centres_.resize(kBlock);
  scores_.resize(kBlock);
  const std::uint16_t* const keys = index.keys.data();
  int* const centres = centres_.data();
  std::size_t count = 0;
  for (int entry = begin; entry < end; ++entry) {
    centres[count] = entry;
    count += promising_[keys[entry]] != 0 ? 1 : 0;
  }
  if (!prolineFollows_ && !index.hasOtherCodes) return count;
  const auto last =
      std::remove_if(centres_.begin(), centres_.begin() + static_cast<std::ptrdiff_t>(count),
                     [&](int entry) { return !isCentre(db, index, entry, kMatch | kSameType); });
  return static_cast<std::size_t>(last - centres_.begin());
}

/// Keeps those of the first `count` centres whose score may reach a threshold, judged by their positions up
/// to `to` residues away; nearer ones than `from` have been judged before. A prior that is not a number stays
/// in.
template <int from, int to>
std::size_t Prescreen::keepPossible(const DB& db, const ScreenIndex& index, std::size_t count) {
  const double match = topMatches_.threshold() - margin_ - restHighest_[to + 1];
  const double type = topSameType_.threshold() - margin_ - restHighest_[to + 1];
  const std::array<double, 4> limits = {match, match, type, std::min(match, type)};
  std::size_t kept = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const int centre = centres_[i];
    double sum = 0.0;
    for (int k = -to; k <= to; ++k) {
      const auto entry = toIndex(centre + k);
      const auto position = toIndex(k + halfWidth_);
      sum += prior_[position][index.keys[entry] & ScreenIndex::kBoxMask] +
             penalty_[position][codeIndex(db.dbResName[entry])];
    }
    const double limit = limits[centreCodes_[codeIndex(db.dbResName[toIndex(centre)])]];
    centres_[kept] = centre;
    kept += sum < limit ? 0 : 1;
  }
  return kept;
}

void Prescreen::offerScores(const DB& db, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const int lists = centreCodes_[codeIndex(db.dbResName[toIndex(centres_[i])])];
    topMatches_.offer(scores_[i], centres_[i]);
    if ((lists & kSameType) != 0) topSameType_.offer(scores_[i], centres_[i]);
  }
}

/// The score of an unbroken fragment. Terms that are zero for every fragment change nothing and are left out.
template <int h>
float Prescreen::score(const DB& db, const ScreenIndex& index, int centre) const {
  float sum = 0.0F;
  for (int k = -h; k <= h; ++k) {
    const auto entry = toIndex(centre + k);
    const auto position = toIndex(k + h);
    if (hasPrior_[position]) {
      const double prior = prior_[position][index.keys[entry] & ScreenIndex::kBoxMask];
      sum = static_cast<float>(static_cast<double>(sum) + prior);
    }
    sum = static_cast<float>(static_cast<double>(sum) + penalty_[position][codeIndex(db.dbResName[entry])]);
  }
  return sum;
}

template <int h>
CandidateMap Prescreen::candidates(const DB& db, const ScreenIndex& index, const TopScores& top,
                                   std::uint8_t list) const {
  const std::vector<TopScores::Score> scores = top.highest();
  CandidateMap result;
  for (const auto& [value, first, last] : scores) {
    result.emplace_hint(result.end(), static_cast<double>(value), last);
  }
  if (top.trimmed()) result.begin()->second = entryOfLowest<h>(db, index, scores, list);
  return result;
}

/// The entry that keeps the lowest score of a full list: its last one in the sources up to the one in which
/// the list got its 1000 scores, or a lower score was met if that came later.
template <int h>
int Prescreen::entryOfLowest(const DB& db, const ScreenIndex& index,
                             const std::vector<TopScores::Score>& scores, std::uint8_t list) const {
  const TopScores::Score& lowest = scores.front();
  int complete = 0;
  for (const auto& score : scores) complete = std::max(complete, score.first);
  int end = index.endOfSource(complete);
  if (lowest.last <= end) return lowest.last;
  const auto isLower = [&](int entry) {
    if (!isCentre(db, index, entry, list)) return false;
    const float value = score<h>(db, index, entry);
    return value<lowest.value&& static_cast<double>(value)> TopScores::kFloor;
  };
  int lower = 0;  // there is one, or the list would not have been trimmed
  while (!isLower(lower)) ++lower;
  end = std::max(end, index.endOfSource(lower));
  int entry = std::min(lowest.last, end);
  while (!isCentre(db, index, entry, list) || score<h>(db, index, entry) != lowest.value) --entry;
  return entry;
}

/// Whether an unbroken fragment of the right type for the list is centred there.
bool Prescreen::isCentre(const DB& db, const ScreenIndex& index, int entry, std::uint8_t list) const {
  const auto i = toIndex(entry);
  if (ScreenIndex::reach(index.keys[i]) < halfWidth_) return false;
  if ((centreCodes_[codeIndex(db.dbResName[i])] & list) == 0) return false;
  return !prolineFollows_ || db.dbResName[i + 1] == 'P';
}
