// Agreement of a database fragment with the angles already predicted around a query residue.
#include "search/torsion_agreement.h"

#include <cmath>

#include "base/angles.h"
#include "base/maps.h"
#include "base/missing.h"

namespace {

bool within(double predicted, float observed, double tolerance) {
  const auto angle = static_cast<double>(observed);
  if (isBeyondLimit(predicted) || isBeyondLimit(angle)) return false;
  return std::abs(wrapOnce(predicted - angle)) <= tolerance;
}

}  // namespace

TorsionAgreement::TorsionAgreement(const PredictedTorsions& predicted, int resid, int halfWidth) {
  for (int k = -halfWidth; k <= halfWidth; ++k) {
    const int* count = findValue(predicted.count, resid + k);
    if (count == nullptr || *count < predicted.topCount) continue;
    conditions_.push_back({k, valueOr(predicted.phi, resid + k), valueOr(predicted.psi, resid + k)});
  }
}

bool TorsionAgreement::holds(const DB& db, int centre, double tolerance) const {
  for (const Condition& condition : conditions_) {
    const float* angles = db.angles(centre + condition.offset);
    if (!within(condition.phi, angles[0], tolerance)) return false;
    if (!within(condition.psi, angles[1], tolerance)) return false;
  }
  return true;
}
