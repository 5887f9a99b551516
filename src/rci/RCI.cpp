// Random coil index: flexibility of the backbone from how close its shifts are to random coil values.
#include "rci/RCI.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/atoms.h"
#include "base/maps.h"
#include "base/missing.h"
#include "rci/rci_tables.h"

namespace {

/// [kInputOrder]: shifts of all nuclei on the scale of 15N, by the ratios of their frequencies (1H 9.9, 13C
/// 2.5).
constexpr std::array<double, kAtoms> kMagnitudeScale = {10.0, 1.0, 10.0, 2.5, 2.5, 2.5};
constexpr double kSmallestMagnitude = 0.5;  // ppm, scaled; given
constexpr double kHighestRCI = 0.6;         // given
constexpr double kNormalisation = 1.125;    // given
// S2 = 1 - 0.4 ln(1 + 17.7 RCI), given; the offset of base/order_parameter.h comes on top.
constexpr double kFlexibilityFactor = 0.4;
constexpr double kFlexibilityScale = 17.7;
// The index is the mean of weighted magnitudes to a power; factor and power given.
constexpr double kMagnitudeFactor = 5.0;
constexpr double kIndexPower = 1.5;
constexpr int kNoData = 5;     // missing shifts: all but HN, which has no weight
constexpr int kEndLength = 4;  // residues that the end correction looks at

}  // namespace

RCI::RCI() {
  initWeightCoefficient();
}

void RCI::initWeightCoefficient() {
  for (const double weight : {0.0, 0.59, 0.85, 0.72, 0.72, 0.15}) weights.push_back(weight);
}

void RCI::runRCI(const std::map<int, std::vector<double>>& shifts,
                 const std::map<int, std::map<std::string, double>>& references,
                 const std::map<int, std::string>& names) {
  rcRef = references;
  seqList = names;
  if (shifts.empty()) return;
  lowest = shifts.begin()->first;
  highest = shifts.rbegin()->first;
  for (int i = lowest; i <= highest; ++i) {
    std::vector<double>& entry = csList[i];
    const auto* values = findValue(shifts, i);
    if (values != nullptr && values->size() >= 2 * kAtoms)
      entry.assign(values->begin(), values->begin() + 2 * kAtoms);
  }
  inCS_convert_ORBEL2RCI();
  applyThreePointsCSAveraging();
  evaluateResidues();
  applyEndCorrection();
  applyFinalSmooth();
  for (const auto& [i, rci] : rciList)
    s2List[i] =
        rci == kMissingValue ? kMissingValue : kFlexibilityFactor * std::log(1.0 + kFlexibilityScale * rci);
}

// ---- secondary shifts against the random coil values of the index -----------------------------------------

/// Row of a residue in the static tables: G where the chain has no residue, X for an unknown code.
std::size_t RCI::tableRow(int resid) const {
  const std::string name = valueOr(seqList, resid);
  if (name.empty()) return AAseqList.find('G');
  const std::size_t row = name.size() == 1 ? AAseqList.find(name[0]) : std::string_view::npos;
  return row == std::string_view::npos ? AAseqList.find('X') : row;
}

/// Random coil shift with the effects of two residues on either side; a glycine, which has no effect, stands
/// for the residues beyond the ends of the data.
double RCI::randomCoil(int resid, std::size_t column) const {
  const std::size_t glycine = AAseqList.find('G');
  std::array<std::size_t, 4> rows = {tableRow(resid - 2), tableRow(resid - 1), tableRow(resid + 1),
                                     tableRow(resid + 2)};
  if (resid == lowest) {
    rows[0] = rows[1] = glycine;
  } else if (resid == lowest + 1) {
    rows[0] = glycine;
  } else if (resid == highest - 1) {
    rows[3] = glycine;
  } else if (resid == highest) {
    rows[2] = rows[3] = glycine;
  }
  return random_coil[tableRow(resid)][column] + preceed_res_effect[rows[1]][column] +
         next_res_effect[rows[2]][column] + preceed_preceed_res_effect[rows[0]][column] +
         next_next_res_effect[rows[3]][column];
}

void RCI::inCS_convert_ORBEL2RCI() {
  for (auto& [i, values] : csList) {
    const std::string name = valueOr(seqList, i);
    const std::map<std::string, double> reference = valueOr(rcRef, i);
    for (std::size_t k = 0; k < kAtoms && !values.empty(); ++k) {
      double& value = values[2 * k];
      const Atom atom = kInputOrder[k];
      if (name == "P" && (atom == Atom::HN || atom == Atom::N)) {
        value = 0.0;
      } else if (!(name == "G" && atom == Atom::CB)) {
        value = value + valueOr(reference, atomName(atom)) - randomCoil(i, columnIn(kCoilOrder, atom));
      }
    }
  }
}

void RCI::applyThreePointsCSAveraging() {
  for (int i = lowest; i <= highest; ++i) {
    const int from = i == lowest ? i : i - 1;
    const int to = i == lowest || i != highest ? i + 1 : i;
    for (std::size_t k = 0; k < kAtoms; ++k) {
      double sum = 0.0;
      int count = 0;
      for (int r = from; r <= to; ++r) {
        const auto* values = findValue(csList, r);
        if (values == nullptr || values->empty() || (*values)[2 * k] == 0.0) continue;
        sum += std::fabs((*values)[2 * k]);
        ++count;
      }
      csAvg[i].push_back(count > 0 ? sum / count : 0.0);
    }
  }
}

// ---- index per residue ------------------------------------------------------------------------------------

int RCI::missingAtoms(int resid) const {
  const std::vector<double> values = valueOr(csList, resid);
  if (values.empty()) return kNoData;
  int missing = valueOr(seqList, resid) == "G" ? 1 : 0;
  for (std::size_t k = 1; k < kAtoms; ++k) missing += values[2 * k + 1] == 1.0 ? 1 : 0;
  return missing;
}

double RCI::calcRCI(const std::vector<double>& magnitudes, const std::vector<double>& atomWeights) {
  if (magnitudes.size() != kAtoms || atomWeights.size() != kAtoms) return -1.0;
  double sum = 0.0;
  int count = 0;
  for (std::size_t k = 1; k < kAtoms; ++k) {
    sum += kMagnitudeFactor * atomWeights[k] * std::fabs(magnitudes[k]);
    if (atomWeights[k] != 0.0) ++count;
  }
  return std::pow(1.0 / (sum / count), kIndexPower);
}

void RCI::evaluateResidues() {
  for (const auto& entry : csList) {
    const int i = entry.first;
    missCount[i] = missingAtoms(i);
    std::vector<double>& magnitudes = csAvg[i];
    for (std::size_t k = 0; k < magnitudes.size(); ++k) {
      magnitudes[k] *= kMagnitudeScale[k];
      if (std::fabs(magnitudes[k]) < kSmallestMagnitude) magnitudes[k] = kSmallestMagnitude;
    }
    double rci = std::min(calcRCI(magnitudes, weights), kHighestRCI);
    if (missCount[i] == kNoData) rci = 0.0;
    rciList[i] = rci / kNormalisation;
  }
}

// ---- ends and smoothing -----------------------------------------------------------------------------------

/// True for residues of the chain with usable shifts.
bool RCI::hasData(int resid) const {
  return valueOr(missCount, resid, kNoData) < kNoData;
}

/// The residue with the highest index, the first among equals; `to` + 1 when none has data.
int RCI::peakOf(int from, int to) const {
  int peak = to + 1;
  double best = -1.0;
  for (int i = from; i <= to; ++i) {
    const double rci = valueOr(rciList, i);
    if (!hasData(i) || !(rci > best)) continue;
    best = rci;
    peak = i;
  }
  return peak;
}

/// Mirrors the index of a residue at its peak: chain ends are flexible, whatever their shifts say.
void RCI::reflect(int resid, double peak) {
  if (hasData(resid)) rciList[resid] = std::min(2.0 * peak - rciList[resid], kHighestRCI);
}

void RCI::applyEndCorrection() {
  if (lowest < kEndLength) {
    const int peak = peakOf(std::max(lowest, 1), kEndLength);
    const double value = valueOr(rciList, peak);
    for (int i = peak - 1; i >= 1 && peak <= kEndLength; --i) reflect(i, value);
  }
  const int peak = peakOf(highest - (kEndLength - 1), highest);
  const double value = valueOr(rciList, peak);
  for (int i = peak + 1; i <= highest; ++i) reflect(i, value);
}

void RCI::applyFinalSmooth() {
  std::map<int, double> smoothed;
  for (int i = lowest; i <= highest; ++i) {
    double sum = 0.0;
    int count = 0;
    for (int r = i - 1; r <= i + 1; ++r) {
      if (!hasData(r)) continue;
      sum += rciList[r];
      ++count;
    }
    smoothed[i] = count > 0 ? sum / count : kMissingValue;
  }
  rciList = std::move(smoothed);
}
