// What the pre-screen reads of the database: box and unbroken reach of every entry, and the sources in order.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "base/boxes.h"
#include "search/fragment_reach.h"
#include "tables/DB.h"

/// First and last entry of the sources 1 to `count` - 1.
struct SourceRanges {
  int count;
  const std::map<int, int>&first, &last;
};

/// Compact copy of the database for scanning, valid while database and source index stay as they are.
struct ScreenIndex {
  ScreenIndex(const DB& db, const SourceRanges& ranges);
  ScreenIndex(const ScreenIndex&) = delete;
  ScreenIndex& operator=(const ScreenIndex&) = delete;

  struct Source {
    int first = 0, last = -1;  ///< entries, ascending from source to source
  };
  static constexpr std::uint16_t kBoxMask = 511;
  static constexpr int kReachShift = 9, kReachMask = 3, kCodeShift = 11;
  static constexpr std::uint16_t kNoBox = kPhiPsiBoxes;  ///< every class key beyond the boxes
  static constexpr std::size_t kCommonCodes = 31;        ///< codes with a number of their own
  static_assert(kNoBox <= kBoxMask && kMaxHalfWidth <= kReachMask);

  static int reach(std::uint16_t key) { return key >> kReachShift & kReachMask; }

  static constexpr std::size_t kCodeNumbers = kCommonCodes + 1;

  /// An entry with the keys of its neighbours. It may lie in an image that changes: check before following
  /// it.
  struct Place {
    static constexpr int kEntryBits = 25;
    std::uint32_t entryAndReach = 0;
    std::uint16_t before = 0, after = 0;  ///< 0 for an entry without reach

    int entry() const { return static_cast<int>(entryAndReach & ((std::uint32_t{1} << kEntryBits) - 1)); }
    int reach() const { return static_cast<int>(entryAndReach >> kEntryBits); }
  };

  /// The entries of one box and code number in ascending order.
  std::span<const Place> group(std::size_t box, std::size_t number) const {
    const std::size_t g = box * kCodeNumbers + number;
    return places.subspan(groupStart[g], groupStart[g + 1] - groupStart[g]);
  }
  /// Last entry of the source that holds `entry`.
  int endOfSource(int entry) const;

  /// [entry]: box; how far (0 to 3) the residue numbers run on without a gap to both sides inside the source;
  /// number of the residue code, kCommonCodes for every further one.
  std::span<const std::uint16_t> keys;
  std::vector<char> codes;     ///< code of each number
  bool hasOtherCodes = false;  ///< whether some code has no number of its own
  std::vector<Source> sources;
  std::span<const Place> places;          ///< all entries, by box and code
  std::vector<std::uint32_t> groupStart;  ///< [box * kCodeNumbers + number]; one more at the end

 private:
  std::vector<std::uint16_t> made_;  ///< the keys of a database that brings none
  std::vector<Place> madePlaces_;

  void makeKeys(const DB& db);
  void addReach(const DB& db, const Source& source);
  void countGroups();
  void makePlaces();
};
