// Reliability class of a residue's torsion prediction, with the values written beside it.
#include "search/class_rule.h"

#include "ann/box_prior.h"
#include "driver/angles.h"
#include "driver/maps.h"

namespace {

constexpr double kLargestSpread = 40.0;  // degrees
constexpr double kDenseLimit = 3600.0;   // 60 degrees, squared
constexpr double kSparseLimit = 6400.0;  // 80 degrees, squared
constexpr double kS2Offset = 0.003;      // 1.003 - RCI value = 1 - (RCI value - 0.003)
constexpr int kAllMatches = 25;

/// 999 where an angle is undefined.
double deviation(double predicted, float reference) {
  const auto angle = static_cast<double>(reference);
  if (predicted > kMissingLimit || angle > kMissingLimit) return kMissingLimit;
  return wrapOnce(predicted - angle);
}

bool isBad(const TorsionPrediction& row, const ReferenceTorsions& reference) {
  if (reference.box == 0) return false;
  const double dphi = deviation(row.phi, reference.phi);
  const double dpsi = deviation(row.psi, reference.psi);
  return dphi * dphi + dpsi * dpsi >= (isSparseBox(reference.box) ? kSparseLimit : kDenseLimit);
}

/// The class before the dynamics check.
std::string matchClass(const TorsionPrediction& row, int topCount,
                       const std::optional<ReferenceTorsions>& reference) {
  const bool accepted = row.count == kAllMatches || row.count == topCount;
  if (!accepted || row.dphi > kLargestSpread || row.dpsi > kLargestSpread) return "Warn";
  if (reference && isBad(row, *reference)) return "Bad";
  return row.count == kAllMatches ? "Strong" : "Generous";
}

/// A range cut by an option ends at a residue that has no neighbour in the range.
bool isCutEnd(const ORBEL& run, int resid) {
  if (resid < run.firstResidOption || resid > run.lastResidOption) return true;
  if (resid == run.firstResidOption && resid != run.shiftFirstResid) return true;
  return resid == run.lastResidOption && resid != run.shiftLastResid;
}

}  // namespace

ReferenceTorsions referenceTorsions(const PDB& structure, int resid) {
  ReferenceTorsions reference;
  reference.phi = structure.getPhi(1, resid);
  reference.psi = structure.getPsi(1, resid);
  const auto phi = static_cast<double>(reference.phi);
  const auto psi = static_cast<double>(reference.psi);
  if (!(phi <= kMissingLimit) || !(psi <= kMissingLimit)) return reference;
  const int box = static_cast<int>((psi + 180.0) / 20.0) + 18 * static_cast<int>((phi + 180.0) / 20.0);
  if (box >= 0 && box < ClusterData::kBoxes) reference.box = box;
  return reference;
}

TorsionPrediction classifyResidue(const ORBEL& run, int resid,
                                  const std::optional<ReferenceTorsions>& reference) {
  TorsionPrediction row;
  const std::vector<double> phi = valueOr(run.matchPhi, resid);
  const std::vector<double> psi = valueOr(run.matchPsi, resid);
  if ((phi.empty() && psi.empty()) || isCutEnd(run, resid)) return row;
  row.count = valueOr(run.predCount, resid);
  if (resid == run.shiftFirstResid || resid == run.shiftLastResid) return row;

  row.phi = ORBEL::getAVGAngle2(phi);
  row.psi = ORBEL::getAVGAngle2(psi);
  row.dphi = ORBEL::getSTDAngle(phi);
  row.dpsi = ORBEL::getSTDAngle(psi);
  row.distance = ORBEL::getAverage(valueOr(run.matchDistance, resid));
  const double x = valueOr(run.rciValue, resid) - kS2Offset;
  const bool dynamic = x > run.s2Cutoff && x < kMissingLimit;
  row.className = dynamic ? "Dyn" : matchClass(row, run.topCount, reference);
  row.s2 = x >= kMissingLimit ? 0.0 : 1.0 - x;
  return row;
}

int tripletShiftCount(const ORBEL& run, int resid) {
  return 18 - valueOr(run.missingCount, resid - 1) - valueOr(run.missingCount, resid) -
         valueOr(run.missingCount, resid + 1);
}
