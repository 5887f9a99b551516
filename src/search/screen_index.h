// What the pre-screen reads of the database: box and unbroken reach of every entry, and the sources in order.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "driver/ORBEL.h"
#include "search/residue_types.h"

/// Compact copy of the database for scanning, valid while database and source index stay as they are.
struct ScreenIndex {
  explicit ScreenIndex(const ORBEL& run);
  ScreenIndex(const ScreenIndex&) = delete;
  ScreenIndex& operator=(const ScreenIndex&) = delete;

  struct Source {
    int first = 0, last = -1;  ///< entries, ascending from source to source
  };
  static constexpr std::uint16_t kBoxMask = 511;
  static constexpr int kReachShift = 9, kReachMask = 3, kCodeShift = 11;
  static constexpr std::uint16_t kNoBox = 324;     ///< every class key beyond the boxes
  static constexpr std::size_t kCommonCodes = 31;  ///< codes with a number of their own
  static constexpr std::size_t kKeys = std::size_t{1} << 16;

  static int reach(std::uint16_t key) { return key >> kReachShift & kReachMask; }

  /// Last entry of the source that holds `entry`.
  int endOfSource(int entry) const;

  /// [entry]: box; how far (0 to 3) the residue numbers run on without a gap to both sides inside the source;
  /// number of the residue code, kCommonCodes for every further one.
  std::span<const std::uint16_t> keys;
  std::vector<char> codes;     ///< code of each number
  bool hasOtherCodes = false;  ///< whether some code has no number of its own
  std::vector<Source> sources;

 private:
  std::vector<std::uint16_t> made_;  ///< the keys of a database that brings none

  void makeKeys(const DB& db);
  void addReach(const DB& db, const Source& source);
};
