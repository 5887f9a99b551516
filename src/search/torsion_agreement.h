// Agreement of a database fragment with the angles already predicted around a query residue.
#pragma once

#include <map>
#include <vector>

#include "tables/DB.h"

/// The predictions of all residues as they stand.
struct PredictedTorsions {
  const std::map<int, int>& count;
  const std::map<int, double>&phi, &psi;  ///< degrees
  int topCount;                           ///< count from which a prediction is a condition
};

/// The confidently predicted residues (count of at least topCount) within a fragment's reach of one query
/// residue, with their predictions as they stood at construction.
class TorsionAgreement {
 public:
  TorsionAgreement(const PredictedTorsions& predicted, int resid, int halfWidth);

  /// True when phi and psi of the fragment centred at entry `centre` lie within `tolerance` degrees of every
  /// such prediction. An undefined angle on either side never agrees.
  bool holds(const DB& db, int centre, double tolerance) const;

 private:
  struct Condition {
    int offset;
    double phi, psi;
  };
  std::vector<Condition> conditions_;
};
