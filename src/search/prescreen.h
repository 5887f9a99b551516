// Pre-screen of the first pass: how well a database fragment's phi/psi boxes fit the query's predicted maps.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "driver/ORBEL.h"
#include "search/residue_types.h"

/// Collects the 1000 best-scoring fragment centres for one query residue, and the 1000 best of the same
/// residue type, source by source.
///
/// The score of a fragment is accumulated in single precision over its residues: the position weight times
/// the search prior of the query residue for the database residue's box, and a tenth of a negative BLOSUM62
/// similarity of the two residue types.
class Prescreen {
 public:
  Prescreen(const ORBEL& run, int resid);

  /// Scores every fragment that lies within the entries `first`..`last` of one source, then trims the lists.
  void scanSource(const DB& db, int first, int last);

  CandidateMap matches;   ///< score -> centre entry
  CandidateMap sameType;  ///< the same for centres of the query's type; empty for A, G and P

 private:
  static constexpr std::size_t kPositions = 2 * kMaxHalfWidth + 1;
  static constexpr std::size_t kClasses = 325;  ///< 324 boxes and one slot for every key beyond them
  static constexpr std::size_t kCodes = 256;

  int halfWidth_;
  char centreCode_;  ///< folded
  bool prolineFollows_;
  bool wantSameType_;
  double matchThreshold_ = -999.0;
  double sameTypeThreshold_ = -999.0;
  std::array<std::array<double, kClasses>, kPositions> prior_{};  ///< [k + h][class]: weight * prior
  std::array<std::array<double, kCodes>, kPositions> penalty_{};  ///< [k + h][code]: negative similarity / 10
  std::array<std::uint8_t, kCodes> centreAllowed_{};              ///< 1: similar enough to the query's type
  std::array<std::uint8_t, kCodes> typeCode_{};                   ///< 1: the query's own type
  std::array<std::uint8_t, kClasses> matchClass_{};               ///< 1: may still enter `matches`
  std::array<std::uint8_t, kClasses> typeClass_{};                ///< 1: may still enter `sameType`
  double promisingMatch_ = -1e9;  ///< thresholds for which these two were made
  double promisingType_ = -1e9;
  std::vector<int> centres_;                          ///< of the source being scanned
  std::array<int, kPositions> order_{};               ///< offsets from the centre outwards: 0 -1 1 -2 2 ..
  std::array<double, kPositions + 1> restHighest_{};  ///< most that order_[i..] can add
  double margin_ = 0.0;                               ///< covers the rounding of the single-precision sum

  void fillPosition(const ORBEL& run, int resid, int k);
  void fillCentre(const ORBEL& run);
  void fillBounds();
  double term(const DB& db, int centre, int k) const;
  void updatePromising();
  std::size_t collectPromising(const DB& db, int begin, int end);
  bool passesCentreTests(const DB& db, int centre) const;
  bool cannotExceed(const DB& db, int centre, double threshold) const;
  float score(const DB& db, int centre) const;
};
