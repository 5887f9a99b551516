// The highest distinct scores of a scan, each with the first and the last entry that reached it.
#include "search/top_scores.h"

#include <algorithm>

namespace {

bool isHigher(const TopScores::Score& a, const TopScores::Score& b) {
  return a.value > b.value;
}

}  // namespace

void TopScores::insert(std::size_t slot, const Score& score) {
  table_[slot] = {score, true};
  ++count_;
  trimmed_ = trimmed_ || count_ > kKept;
  if (count_ > kLimit) dropLowest();
}

std::vector<TopScores::Score> TopScores::collectHighest() const {
  std::vector<Score> scores;
  scores.reserve(count_);
  for (const Slot& slot : table_) {
    if (slot.used) scores.push_back(slot.score);
  }
  if (scores.size() > kKept) {
    std::nth_element(scores.begin(), scores.begin() + kKept - 1, scores.end(), isHigher);
    scores.resize(kKept);  // the lowest of them last
  }
  return scores;
}

void TopScores::dropLowest() {
  const std::vector<Score> kept = collectHighest();
  std::fill(table_.begin(), table_.end(), Slot{});
  for (const Score& score : kept) table_[slotOf(score.value)] = {score, true};
  count_ = kept.size();
  threshold_ = static_cast<double>(kept.back().value);
}

std::vector<TopScores::Score> TopScores::highest() const {
  std::vector<Score> scores = collectHighest();
  std::sort(scores.begin(), scores.end(), [](const Score& a, const Score& b) { return isHigher(b, a); });
  return scores;
}
