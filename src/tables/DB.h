// The fragment database: residues of proteins of known structure with torsions, class key and shifts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/atoms.h"
#include "tables/TableImage.h"

/// Entries that the program makes room for, given.
inline constexpr std::int32_t kDatabaseCapacity = 2330110;

/// Read-only database in flat arrays of fixed capacity; only the pages that are filled cost memory.
class DB {
 public:
  static constexpr int kShiftsPerEntry =
      2 * static_cast<int>(kAtoms);          ///< (value, scale) pairs in kAtomOrder
  static constexpr int kAnglesPerEntry = 3;  ///< phi, psi, chi1 in degrees

  /// A run of entries with one source name.
  struct Source {
    std::int32_t first = 0;
    std::string name;
  };
  /// Keys of the pre-screen (search/screen_index.h says what they mean).
  struct ScreenKeys {
    std::vector<char> codes;
    std::shared_ptr<const std::uint16_t[]> keys;  ///< one per entry
    bool hasOtherCodes = false;
  };

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
  const std::string& source(std::int32_t i) const;
  /// Whether what was read from the arrays so far is what the text table says (see image::BulkPart).
  bool intact() const { return imaged.intact(); }

  // The arrays are the object's own, or lie in the table image that it was loaded from.
  std::shared_ptr<const float[]> dbShifts;         ///< entry i: 12 floats from i * 12
  std::shared_ptr<const float[]> dbAngles;         ///< entry i: phi, psi, chi1 from i * 3
  std::shared_ptr<const std::uint32_t[]> dbResid;  ///< residue number in the source (negative numbers wrap)
  std::shared_ptr<const std::uint32_t[]> dbClass;  ///< phi/psi box, 0..323; none where screenKeys has them
  std::shared_ptr<const char[]> dbResName;         ///< one-letter code
  std::vector<Source> dbSource;                    ///< in file order, neighbours have different names
  std::shared_ptr<const ScreenKeys> screenKeys;    ///< only when loaded from an image
  image::BulkPart imaged;
  std::string dbFileName;
  std::int32_t maxDBSize = 2999999;
  std::int32_t entryCount = 0;
  std::int64_t incompleteRecords = 0;    ///< records that did not convert completely
  std::int64_t firstIncompleteLine = 0;  ///< line number of the first of them, from 1
};
