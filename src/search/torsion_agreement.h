// Agreement of a database fragment with the angles already predicted around a query residue.
#pragma once

#include <vector>

#include "driver/ORBEL.h"

/// The confidently predicted residues (count of at least topCount) within a fragment's reach of one query
/// residue, with their predictions as they stood at construction.
class TorsionAgreement {
 public:
  TorsionAgreement(const ORBEL& run, int resid);

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
