// Pre-screen of the first pass: how well a database fragment's phi/psi boxes fit the query's predicted maps.
#include "search/prescreen.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <numeric>

#include "base/maps.h"
#include "base/residues.h"

namespace {

constexpr std::array<double, kMaxHalfWidth + 1> kScreenWeights = {1.0, 0.81, 0.64, 0.49};  // given
constexpr std::size_t kBlock = 1024;  // centres scanned together

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

/// Group by group, the boxes with the highest prior first: the thresholds rise at once, and most groups are
/// never looked at. The lists do not depend on the order.
template <int h>
void Prescreen::scanWith(const DB& db, const ScreenIndex& index) {
  static_assert(h <= kMaxHalfWidth);
  centres_.resize(kBlock);
  scores_.resize(kBlock);
  fillNumberPenalties(index);
  std::size_t count = 0;
  for (const std::size_t box : boxesByPrior()) {
    for (std::size_t number = 0; number < ScreenIndex::kCodeNumbers; ++number)
      count = scanGroup<h>(db, index, box, number, count);
  }
  scanBlock<h>(db, index, count);
  matches = candidates<h>(db, index, topMatches_, kMatch);
  if (wantSameType_) sameType = candidates<h>(db, index, topSameType_, kSameType);
}

void Prescreen::fillNumberPenalties(const ScreenIndex& index) {
  for (std::size_t position = 0; position < kPositions; ++position) {
    for (std::size_t number = 0; number < index.codes.size(); ++number)
      numberPenalty_[position][number] = penalty_[position][codeIndex(index.codes[number])];
  }
}

/// Highest prior at the centre first; one that is not a number may be any.
std::vector<std::size_t> Prescreen::boxesByPrior() const {
  const auto& prior = prior_[toIndex(halfWidth_)];
  const auto key = [&](std::size_t box) {
    return std::isnan(prior[box]) ? std::numeric_limits<double>::infinity() : prior[box];
  };
  std::vector<std::size_t> boxes(kBoxes);
  std::iota(boxes.begin(), boxes.end(), std::size_t{0});
  std::stable_sort(boxes.begin(), boxes.end(), [&](std::size_t a, std::size_t b) { return key(a) > key(b); });
  return boxes;
}

/// Lists whose thresholds a centre in this box may still pass.
std::uint8_t Prescreen::listsWithin(std::size_t box) const {
  const double highest = prior_[toIndex(halfWidth_)][box] + restHighest_[1];
  // Written as "not below" so that a prior that is not a number stays in.
  const int matchBit = highest < topMatches_.threshold() - margin_ ? 0 : kMatch;
  const int typeBit = highest < topSameType_.threshold() - margin_ ? 0 : kSameType;
  return static_cast<std::uint8_t>(matchBit | typeBit);
}

/// Lists that a centre with this code number may enter.
std::uint8_t Prescreen::listsOfNumber(const ScreenIndex& index, std::size_t number) const {
  return number < index.codes.size() ? centreCodes_[codeIndex(index.codes[number])] : kMatch | kSameType;
}

/// What the sum over the positions up to `judged` residues away must reach for a score that may enter one of
/// `lists`.
double Prescreen::lowestLimit(std::uint8_t lists, int judged) const {
  const double match = topMatches_.threshold() - margin_ - restHighest_[toIndex(judged) + 1];
  const double type = topSameType_.threshold() - margin_ - restHighest_[toIndex(judged) + 1];
  const std::array<double, 4> limits = {match, match, type, std::min(match, type)};
  return limits[lists];
}

/// Adds the fragments of a group to the `count` centres of the block, scans the block whenever it is full,
/// and returns how many centres are left in it.
template <int h>
std::size_t Prescreen::scanGroup(const DB& db, const ScreenIndex& index, std::size_t box, std::size_t number,
                                 std::size_t count) {
  std::span<const ScreenIndex::Place> group = index.group(box, number);
  const std::uint8_t lists = listsOfNumber(index, number);
  const double own = prior_[toIndex(h)][box] + numberPenalty_[toIndex(h)][number];
  while (!group.empty() && (listsWithin(box) & lists) != 0) {
    const std::size_t n = std::min(group.size(), kBlock - count);
    count = collect<h>(group.first(n), own, lowestLimit(lists, 1), index.keys.size(), count);
    group = group.subspan(n);
    if (count < kBlock) continue;
    scanBlock<h>(db, index, count);
    count = 0;
  }
  return count;
}

/// Unbroken fragments whose centre and its neighbours do not rule them out. Without branches: they come in no
/// predictable order. A prior that is not a number stays in.
template <int h>
std::size_t Prescreen::collect(std::span<const ScreenIndex::Place> group, double ownTerms, double limit,
                               std::size_t entries, std::size_t count) {
  const auto& priorBefore = prior_[h - 1];
  const auto& priorAfter = prior_[h + 1];
  const auto& penaltyBefore = numberPenalty_[h - 1];
  const auto& penaltyAfter = numberPenalty_[h + 1];
  int* const centres = centres_.data();
  for (const ScreenIndex::Place place : group) {
    const double before = priorBefore[place.before & ScreenIndex::kBoxMask] +
                          penaltyBefore[toIndex(place.before >> ScreenIndex::kCodeShift)];
    const double after = priorAfter[place.after & ScreenIndex::kBoxMask] +
                         penaltyAfter[toIndex(place.after >> ScreenIndex::kCodeShift)];
    const bool inside = toIndex(place.entry()) + h < entries && place.entry() >= h;
    const bool possible = !(ownTerms + before + after < limit);
    centres[count] = place.entry();
    count += static_cast<std::size_t>(static_cast<unsigned>(place.reach() >= h) &
                                      static_cast<unsigned>(inside) & static_cast<unsigned>(possible));
  }
  return count;
}

/// Offers the scores of the first `count` centres of the block.
template <int h>
void Prescreen::scanBlock(const DB& db, const ScreenIndex& index, std::size_t count) {
  if constexpr (h > 1) count = keepPossible<h>(db, index, count);
  // Groups tell nothing of what follows, and may be wrong in an image that changed.
  const auto last =
      std::remove_if(centres_.begin(), centres_.begin() + static_cast<std::ptrdiff_t>(count),
                     [&](int entry) { return !isCentre(db, index, entry, kMatch | kSameType); });
  count = static_cast<std::size_t>(last - centres_.begin());
  for (std::size_t i = 0; i < count; ++i) scores_[i] = score<h>(db, index, centres_[i]);
  offerScores(db, count);
}

/// Keeps those of the first `count` centres whose score may reach a threshold, judged by all their positions.
/// A prior that is not a number stays in.
template <int h>
std::size_t Prescreen::keepPossible(const DB& db, const ScreenIndex& index, std::size_t count) {
  const std::array<double, 4> limits = {lowestLimit(0, h), lowestLimit(kMatch, h), lowestLimit(kSameType, h),
                                        lowestLimit(kMatch | kSameType, h)};
  std::size_t kept = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const int centre = centres_[i];
    double sum = 0.0;
    for (int k = -h; k <= h; ++k) {
      const auto entry = toIndex(centre + k);
      const auto position = toIndex(k + h);
      const std::uint16_t key = index.keys[entry];
      sum += prior_[position][key & ScreenIndex::kBoxMask] +
             numberPenalty_[position][toIndex(key >> ScreenIndex::kCodeShift)];
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
