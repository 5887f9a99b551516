// Walks over ranges of residue numbers.
#pragma once

#include <algorithm>
#include <cstdint>

/// The numbers `first` to `last`, both included; counted in 64 bits, so that the walk ends whatever they are.
class ResidueRange {
 public:
  class Iterator {
   public:
    explicit Iterator(std::int64_t resid) : resid_(resid) {}
    int operator*() const { return static_cast<int>(resid_); }
    Iterator& operator++() {
      ++resid_;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    std::int64_t resid_;
  };

  ResidueRange(int first, int last) : first_(first), end_(std::max(std::int64_t{last} + 1, first_)) {}
  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(end_); }

 private:
  std::int64_t first_, end_;
};

inline ResidueRange residueRange(int first, int last) {
  return {first, last};
}

/// The residues of a run: those to predict and those with shifts.
struct ResidueSpan {
  int first, last;
  int shiftFirst, shiftLast;

  /// Outside, or at an end that an option cut off: the residue lacks a neighbour that has shifts.
  bool isCutEnd(int resid) const {
    return resid < first || resid > last || (resid == first && first != shiftFirst) ||
           (resid == last && last != shiftLast);
  }
};
