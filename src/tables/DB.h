// The fragment database: residues of proteins of known structure with torsions, class key and shifts.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "base/atoms.h"

/// Entries that the program makes room for, given.
inline constexpr std::int32_t kDatabaseCapacity = 2330110;

/// Read-only database in flat arrays of fixed capacity; only the pages that are filled cost memory.
class DB {
 public:
  static constexpr int kShiftsPerEntry =
      2 * static_cast<int>(kAtoms);          ///< (value, scale) pairs in kAtomOrder
  static constexpr int kAnglesPerEntry = 3;  ///< phi, psi, chi1 in degrees

  DB() = default;
  DB(const DB&) = delete;
  DB& operator=(const DB&) = delete;

  void setMaxDBSize(std::int32_t n) { maxDBSize = n; }  ///< must precede loadDB
  /// Reads `path`, replacing any earlier content. Ends the process (exit status 0) when it cannot be opened.
  /// Records that do not convert completely are kept as far as they convert (missing angles 9999, scales 0)
  /// and counted; the caller decides whether to report them.
  void loadDB(const std::string& path);

  const float* shifts(std::int32_t i) const { return dbShifts.get() + std::size_t(i) * kShiftsPerEntry; }
  const float* angles(std::int32_t i) const { return dbAngles.get() + std::size_t(i) * kAnglesPerEntry; }
  const std::string& source(std::int32_t i) const { return *dbSource[std::size_t(i)]; }

  std::unique_ptr<float[]> dbShifts;               ///< entry i: kShiftsPerEntry floats
  std::unique_ptr<float[]> dbAngles;               ///< entry i: phi, psi, chi1 from i * 3
  std::unique_ptr<std::uint32_t[]> dbResid;        ///< residue number in the source (negative numbers wrap)
  std::unique_ptr<std::uint32_t[]> dbClass;        ///< phi/psi box
  std::unique_ptr<char[]> dbResName;               ///< one-letter code
  std::unique_ptr<const std::string*[]> dbSource;  ///< into sourceNames
  std::deque<std::string> sourceNames;             ///< one per run of equal names, file order
  std::string dbFileName;
  std::int32_t maxDBSize = 2999999;
  std::int32_t entryCount = 0;
  std::int64_t incompleteRecords = 0;    ///< records that did not convert completely
  std::int64_t firstIncompleteLine = 0;  ///< line number of the first of them, from 1
};
