// Reliability class of a residue's torsion prediction, with the values written beside it.
#include "search/class_rule.h"

#include "base/angles.h"
#include "base/box_prior.h"
#include "base/boxes.h"
#include "base/order_parameter.h"
#include "base/statistics.h"
#include "search/candidates.h"

namespace {

constexpr double kLargestSpread = 40.0;  // degrees; given, as the two below
constexpr double kDenseLimit = 60.0;     // degrees
constexpr double kSparseLimit = 80.0;    // degrees
constexpr int kAllMatches = static_cast<int>(kMatchesKept);

/// 999 where an angle is undefined.
double deviation(double predicted, float reference) {
  const auto angle = static_cast<double>(reference);
  if (isBeyondLimit(predicted) || isBeyondLimit(angle)) return kMissingLimit;
  return wrapOnce(predicted - angle);
}

bool isBad(const TorsionPrediction& row, const ReferenceTorsions& reference) {
  if (reference.box == 0) return false;
  const double dphi = deviation(row.phi, reference.phi);
  const double dpsi = deviation(row.psi, reference.psi);
  const double limit = isSparseBox(reference.box) ? kSparseLimit : kDenseLimit;
  return dphi * dphi + dpsi * dpsi >= limit * limit;
}

/// The class before the dynamics check.
std::string matchClass(const TorsionPrediction& row, int topCount,
                       const std::optional<ReferenceTorsions>& reference) {
  const bool accepted = row.count == kAllMatches || row.count == topCount;
  if (!accepted || row.dphi > kLargestSpread || row.dpsi > kLargestSpread) return "Warn";
  if (reference && isBad(row, *reference)) return "Bad";
  return row.count == kAllMatches ? "Strong" : "Generous";
}

}  // namespace

ReferenceTorsions referenceTorsions(const PDB& structure, int resid) {
  ReferenceTorsions reference;
  reference.phi = structure.getPhi(1, resid);
  reference.psi = structure.getPsi(1, resid);
  const auto phi = static_cast<double>(reference.phi);
  const auto psi = static_cast<double>(reference.psi);
  if (!(phi <= kMissingLimit) || !(psi <= kMissingLimit)) return reference;
  const int box = boxAt(static_cast<int>(axisPosition(phi)), static_cast<int>(axisPosition(psi)));
  if (box >= 0 && box < kPhiPsiBoxes) reference.box = box;
  return reference;
}

TorsionPrediction classifyResidue(const ClassInput& input,
                                  const std::optional<ReferenceTorsions>& reference) {
  TorsionPrediction row;
  const int resid = input.resid;
  if ((input.phi.empty() && input.psi.empty()) || input.span.isCutEnd(resid)) return row;
  row.count = input.count;
  if (resid == input.span.shiftFirst || resid == input.span.shiftLast) return row;

  row.phi = circularMean(input.phi);
  row.psi = circularMean(input.psi);
  row.dphi = circularSpread(input.phi);
  row.dpsi = circularSpread(input.psi);
  row.distance = average(input.distance);
  const double x = input.flexibility - kS2Offset;
  const bool dynamic = x > input.s2Cutoff && isPresent(x);
  row.className = dynamic ? "Dyn" : matchClass(row, input.topCount, reference);
  row.s2 = x >= kMissingLimit ? 0.0 : 1.0 - x;
  return row;
}
