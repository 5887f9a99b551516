// Agreement of a database fragment with the angles already predicted around a query residue.
#include "search/torsion_agreement.h"

#include <cmath>

#include "driver/angles.h"
#include "driver/maps.h"
#include "search/residue_types.h"

namespace {

bool within(double predicted, float observed, double tolerance) {
  const auto angle = static_cast<double>(observed);
  if (predicted > kMissingLimit || angle > kMissingLimit) return false;
  return std::abs(wrapOnce(predicted - angle)) <= tolerance;
}

}  // namespace

TorsionAgreement::TorsionAgreement(const ORBEL& run, int resid) {
  const int halfWidth = fragmentHalfWidth(run.alignLength);
  for (int k = -halfWidth; k <= halfWidth; ++k) {
    const int* count = findValue(run.predCount, resid + k);
    if (count == nullptr || *count < run.topCount) continue;
    conditions_.push_back({k, valueOr(run.predPhi, resid + k), valueOr(run.predPsi, resid + k)});
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
