// The highest distinct scores of a scan, each with the first and the last entry that reached it.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Keeps at least the `kKept` highest distinct scores above a floor; what it drops raises `threshold`, below
/// which scores need not be offered any more. Scores are looked up by their bits in a small open table.
class TopScores {
 public:
  static constexpr std::size_t kKept = 1000;
  static constexpr double kFloor = -999.0;  ///< scores must exceed it

  struct Score {
    float value = 0.0F;
    int first = 0, last = 0;  ///< entries; the entries that reached it
  };

  TopScores() : table_(kSlots) {}

  double threshold() const { return threshold_; }
  void offer(float value, int entry) {
    if (!(static_cast<double>(value) > kFloor) || static_cast<double>(value) < threshold_) return;
    value += 0.0F;  // one bit pattern for both zeros
    const std::size_t slot = slotOf(value);
    Score& found = table_[slot].score;
    if (table_[slot].used) {
      found.first = std::min(found.first, entry);
      found.last = std::max(found.last, entry);
      return;
    }
    insert(slot, {value, entry, entry});
  }
  bool trimmed() const { return trimmed_; }  ///< whether more than kKept distinct scores were offered
  /// The highest scores, at most kKept, ascending.
  std::vector<Score> highest() const;

 private:
  static constexpr std::size_t kSlots = 4096;
  static constexpr std::size_t kLimit = 2000;  ///< scores held before the lowest are dropped

  struct Slot {
    Score score;
    bool used = false;
  };

  static std::size_t hash(float value);
  std::size_t slotOf(float value) const {
    std::size_t slot = hash(value);
    while (table_[slot].used && table_[slot].score.value != value) slot = (slot + 1) % kSlots;
    return slot;
  }
  void insert(std::size_t slot, const Score& score);
  std::vector<Score> collectHighest() const;
  void dropLowest();

  std::vector<Slot> table_;
  std::size_t count_ = 0;
  double threshold_ = kFloor;
  bool trimmed_ = false;
};

inline std::size_t TopScores::hash(float value) {
  return std::bit_cast<std::uint32_t>(value) * 2654435769U >> 20;  // Fibonacci hashing onto kSlots
}
