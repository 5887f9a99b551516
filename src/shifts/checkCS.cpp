// Quality checks: shifts outside the limits of their residue type, and referencing offsets of CA/CB, HA, C'.
#include <cmath>
#include <cstdio>
#include <iostream>

#include "base/atoms.h"
#include "base/maps.h"
#include "base/missing.h"
#include "base/residues.h"
#include "base/statistics.h"
#include "driver/ORBEL.h"
#include "tables/text.h"

namespace {

constexpr std::size_t kSmallestFit = 10;  ///< points below which a set's fit is not used; given
constexpr double kSignificance = 5.0;     ///< standard errors that make an offset one; given

/// Secondary shifts of one nucleus against d, the CA-minus-CB secondary shift of the same residue. d does not
/// depend on the referencing, so the line's value at d = 0 estimates the offset (Wang et al., J Biomol NMR
/// 2005, linear analysis of chemical shifts).
struct Points {
  std::vector<double> d, shift;
};

/// The residues on one side of d = 0: negative (mostly strand) or positive (mostly helix).
struct ResidueSet {
  Points ca, ha, c;
};

struct Group {
  const char* tooFew;
  const char* report;
  double negativeCorrection,
      positiveCorrection;  ///< ppm, minus the intercept of a well referenced protein; given
  Points ResidueSet::*points;
  std::vector<const char*> atoms;
};

const std::vector<Group>& groups() {
  static const std::vector<Group> kGroups = {
      {"  No enough CA shifts to check CA/CB chemical shift referencing offset ...",
       " Estimated Referencing Offset for CA/CB: %6.3f +/- %6.3fppm Size: %3d\n",
       -0.094,
       -0.459,
       &ResidueSet::ca,
       {"CA", "CB"}},
      {"  No enough HA shifts to check HA chemical shift referencing offset ...",
       " Estimated Referencing Offset for HA:\n     %6.3f +/- %6.3fppm size: %3d\n",
       -0.089,
       0.008,
       &ResidueSet::ha,
       {"HA"}},
      {"  No enough C' shifts to check C' chemical shift referencing offset ...",
       " Estimated Referencing Offset for C':    %6.3f +/- %6.3fppm Size: %3d\n",
       0.272,
       -0.226,
       &ResidueSet::c,
       {"C"}}};
  return kGroups;
}

using ShiftsByResidue = std::map<std::string, std::map<std::string, double>>;  ///< RESID text -> atom -> ppm

/// Reports every secondary shift outside its limits and collects all of them.
ShiftsByResidue reportOutliers(const ORBEL& run) {
  ShiftsByResidue shifts;
  for (const auto& [number, row] : run.adjustedShiftTable.entries) {
    const std::string atom = backboneName(GDB::cell(row, "ATOMNAME"));
    const double shift = text::toDouble(GDB::cell(row, "SHIFT"));
    const int resid = text::toInt(GDB::cell(row, "RESID"));
    const double limit = run.clipSShift(resid, shift, atom);
    if (limit < shift || limit > shift) {
      const double extreme = atom == "HA" ? 3.0 : 2.0;
      std::printf("  %3d %s %3s Secondary Shift: %8.3f    Limit: %8.3f%s\n", resid,
                  valueOr(run.sequence, resid).c_str(), atom.c_str(), shift, limit,
                  std::fabs(shift) > extreme * std::fabs(limit) ? " !" : "");
    }
    shifts[GDB::cell(row, "RESID")][atom] = shift;
  }
  return shifts;
}

void add(Points& points, double d, double shift) {
  points.d.push_back(d);
  points.shift.push_back(shift);
}

/// Prolines and cysteines follow other CA-CB relations and stay out.
void collectSets(const ORBEL& run, const ShiftsByResidue& shifts, ResidueSet& negative,
                 ResidueSet& positive) {
  for (const auto& [resid, atoms] : shifts) {
    const double ca = valueOr(atoms, "CA");
    const double cb = valueOr(atoms, "CB");
    const std::string code = valueOr(run.sequence, text::toInt(resid));
    if (!isPresent(ca) || !isPresent(cb) || code == "P" || isCysteine(code)) continue;
    const double d = ca - cb;
    ResidueSet& set = d < 0.0 ? negative : positive;
    add(set.ca, d, ca);
    if (const double ha = valueOr(atoms, "HA"); isPresent(ha)) add(set.ha, d, ha);
    if (const double c = valueOr(atoms, "C"); isPresent(c)) add(set.c, d, c);
  }
}

struct Estimate {
  double offset = 0.0;
  double error = 0.0;
};

Estimate fitOffset(const Points& points, double correction) {
  double slope = 0.0;
  Estimate estimate;
  ORBEL::LinearLeastSquareFitting(points.d, points.shift, slope, estimate.offset, estimate.error);
  estimate.offset += correction;
  return estimate;
}

/// Mean of the two sets' estimates, weighted by their sizes.
Estimate combine(const Estimate& a, double na, const Estimate& b, double nb) {
  const double n = na + nb;
  return {(a.offset * na + b.offset * nb) / n,
          std::sqrt(a.error * a.error * na * na + b.error * b.error * nb * nb) / n};
}

void estimateGroup(ORBEL& run, const Group& group, const ResidueSet& negative, const ResidueSet& positive) {
  const Points& low = negative.*group.points;
  const Points& high = positive.*group.points;
  const std::size_t lowCount = low.d.size();
  const std::size_t highCount = high.d.size();
  const std::size_t count = lowCount + highCount;
  if (lowCount < kSmallestFit && highCount < kSmallestFit) {
    if (count > 0) std::cerr << group.tooFew << std::endl;
    return;
  }
  Estimate estimate;
  if (highCount < kSmallestFit) {
    estimate = fitOffset(low, group.negativeCorrection);
  } else if (lowCount < kSmallestFit) {
    estimate = fitOffset(high, group.positiveCorrection);
  } else {
    estimate = combine(fitOffset(low, group.negativeCorrection), static_cast<double>(lowCount),
                       fitOffset(high, group.positiveCorrection), static_cast<double>(highCount));
  }
  const bool accepted = std::fabs(estimate.offset) > kSignificance * estimate.error && estimate.error > 0.0 &&
                        count > kSmallestFit;
  if (!accepted) return;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::printf(group.report, estimate.offset, estimate.error, static_cast<int>(count));
#pragma GCC diagnostic pop
  for (const char* atom : group.atoms) run.referencingOffset[atom] = estimate.offset;
}

}  // namespace

/// Reports to standard output and error; fills referencingOffset; changes no shift.
void ORBEL::checkCS() {
  std::printf("\nChecking for Chemical Shift Outliers ...\n");
  const ShiftsByResidue shifts = reportOutliers(*this);
  ResidueSet negative;
  ResidueSet positive;
  collectSets(*this, shifts, negative, positive);
  std::printf("\nChecking Chemical Shift Referencing ...\n");
  for (const Group& group : groups()) estimateGroup(*this, group, negative, positive);
}

bool ORBEL::LinearLeastSquareFitting(const std::vector<double>& x, const std::vector<double>& y,
                                     double& slope, double& intercept, double& error) {
  if (x.size() != y.size()) return false;
  const double n = static_cast<double>(x.size());
  std::vector<double> xy;
  std::vector<double> xx;
  for (std::size_t i = 0; i < x.size(); ++i) {
    xy.push_back(x[i] * y[i]);
    xx.push_back(x[i] * x[i]);
  }
  const double meanX = average(x);
  const double meanY = average(y);
  slope = (n * average(xy) - n * meanY * meanX) / (n * average(xx) - n * meanX * meanX);
  intercept = meanY - slope * meanX;
  std::vector<double> residuals;
  for (std::size_t i = 0; i < x.size(); ++i) residuals.push_back(y[i] - (intercept + slope * x[i]));
  error = standardDeviation(residuals) / std::sqrt(n);
  return true;
}
