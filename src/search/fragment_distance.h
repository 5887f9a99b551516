// Distance between the secondary shifts of a query stretch and of a database fragment.
#pragma once

#include <array>

#include "base/atoms.h"
#include "search/fragment_reach.h"
#include "tables/DB.h"

/// Secondary shifts of the query residues around one centre, and the fragments' distances to them.
class FragmentDistance {
 public:
  FragmentDistance(const ShiftRows& query, int resid);

  /// Sum over the residues -h..+h and their atoms of weight * d * d, d = (database - query) / scale, with
  /// weights 1, 0.64, 0.36, 0.25 by the distance from the centre. A shift missing on either side costs d =
  /// 1.5. All of centre - h .. centre + h must be entries of `db`.
  double weighted(const DB& db, int centre, int halfWidth) const;
  /// The same over the centre and its two neighbours, all weights 1.
  double unweightedTriplet(const DB& db, int centre) const;

 private:
  static constexpr int kPositions = 2 * kMaxHalfWidth + 1;
  std::array<ShiftRow, kPositions> query_{};  ///< [k + 3][atom], missing = kMissingValue

  double addResidue(double sum, const DB& db, int centre, int k, double weight) const;
};
