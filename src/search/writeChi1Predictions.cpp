// The chi1 table: rotamer probabilities from the chi1 network's scores, rotamer class and chi1 angle.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>

#include "base/angles.h"
#include "base/atoms.h"
#include "base/maps.h"
#include "base/missing.h"
#include "base/residue_range.h"
#include "base/residues.h"
#include "base/statistics.h"
#include "driver/ORBEL.h"
#include "search/table_output.h"
#include "tables/output_text.h"

namespace {

constexpr int kBins = 11;
constexpr double kSmallestClassProbability = 0.6;  // given
constexpr std::size_t kFewestScores = 3;           // of a rotamer; given
constexpr std::size_t kMostAngles = 25;
constexpr double kUndefinedTurned = 666.0;  // degrees; only a missing value is still beyond it; given
constexpr std::array<const char*, 3> kRotamers = {"g+", "g-", "t"};  // order in which equal maxima resolve
/// Valine's chi1 is named by the other methyl group: its rotamers are those of 120 degrees less.
constexpr std::array<const char*, 3> kValineRotamers = {"t", "g+", "g-"};

using Calibration = std::map<std::string, std::array<float, kBins>>;  ///< type -> weight by score bin

struct RotamerPrediction {
  std::array<float, 3> probability{};  ///< in the order of kRotamers
  std::string className = "na";
};

/// Later rows of the same type replace earlier ones; absent cells read as 0.
Calibration loadCalibration(const std::string& path) {
  const GDB table(path);
  Calibration calibration;
  for (const auto& [number, row] : table.entries) {
    auto& weights = calibration[GDB::cell(row, "RESNAME")];
    for (int bin = 0; bin < kBins; ++bin) {
      const double value = std::strtod(GDB::cell(row, std::to_string(bin)).c_str(), nullptr);
      weights[static_cast<std::size_t>(bin)] = static_cast<float>(value);
    }
  }
  return calibration;
}

/// Mean network score of a rotamer's fragments, 1 (a bad score) for fewer than 3 of them.
float meanScore(const std::map<std::string, std::vector<double>>& scores, const std::string& rotamer) {
  const std::vector<double> list = valueOr(scores, rotamer);
  return list.size() < kFewestScores ? 1.0F : static_cast<float>(average(list));
}

std::size_t scoreBin(float mean) {
  if (!(mean <= 1.0F)) return kBins - 1;
  return mean < 0.0F ? 0 : static_cast<std::size_t>(10.0F * mean);
}

/// Probabilities of the three rotamers, all 0 where the weights add to nothing, and the class.
RotamerPrediction predictRotamer(const std::array<float, 3>& weights) {
  RotamerPrediction prediction;
  const float sum = weights[0] + weights[1] + weights[2];
  if (sum == 0.0F || !std::isfinite(sum)) return prediction;
  for (std::size_t i = 0; i < weights.size(); ++i) prediction.probability[i] = weights[i] / sum;
  const auto best = std::max_element(prediction.probability.begin(), prediction.probability.end());
  if (static_cast<double>(*best) >= kSmallestClassProbability) {
    prediction.className = kRotamers[static_cast<std::size_t>(best - prediction.probability.begin())];
  }
  return prediction;
}

RotamerPrediction predictResidue(const ORBEL& run, int resid, const std::string& code,
                                 const Calibration& calibration) {
  const auto scores = valueOr(run.chi1RotamerScores, resid);
  const auto& sources = code == "V" ? kValineRotamers : kRotamers;
  const std::array<float, kBins> byBin = valueOr(calibration, code);
  std::array<float, 3> weights{};
  for (std::size_t i = 0; i < weights.size(); ++i)
    weights[i] = byBin[scoreBin(meanScore(scores, sources[i]))];
  return predictRotamer(weights);
}

/// Brings valine's chi1 values to the common naming, 120 degrees lower.
void rotateValine(std::vector<double>& chi1) {
  for (double& value : chi1) {
    value -= 120.0;
    if (value < -180.0) value += 360.0;
    if (value > kUndefinedTurned) value = kMissingValue;
  }
}

/// The first 25 values that lie in the rotamer.
std::vector<double> anglesInRotamer(const std::vector<double>& chi1, const std::string& rotamer) {
  std::vector<double> angles;
  for (const double value : chi1) {
    if (angles.size() == kMostAngles) break;
    if (ORBEL::getChi1Rotamer(static_cast<float>(value)) == rotamer) angles.push_back(value);
  }
  return angles;
}

void addHeader(GDB& table, const ORBEL& run, bool compared) {
  addRemarks(table, {"ORBEL-N Protein Chi1 Conformation Prediction Table",
                     " Prediction Summary for Chemical Shift Input " + run.inputTitle});
  if (compared) table.addRemark(" Predictions Compared to PDB Input " + run.referenceTitle);
  addRemarks(table, {"", " Q_Gm is the probability to be with a g- (gauche-) rotamer.",
                     " Q_Gp is the probability to be with a g+ (gauche+) rotamer.",
                     " Q_t  is the probability to be with a t  (trans)   rotamer.", "",
                     " CS_COUNT is the number of chemical shifts in the query triplets",
                     " used to predict chi1 conformation.", "",
                     " CLASS is the classification of the prediction result:",
                     "   na: no chi1 prediction was made.", "   g-/g+/t: 3-state chi1 prediction", ""});
  addReferenceRemarks(table);
  addRemarks(table, {"", ORBEL::versionBanner()});
  if (compared) {
    table.VARS_str_parser("RESID RESNAME CS_COUNT CHI1_OBS  Q_Gm Q_Gp Q_T  CLASS CHI1 DCHI1");
    table.FORMAT_str_parser(" %4d %s %2d %8.3f %5.3f %5.3f %5.3f  %-2s %6.1f %6.1f");
  } else {
    table.VARS_str_parser("RESID RESNAME CS_COUNT Q_Gm Q_Gp Q_T  CLASS CHI1 DCHI1");
    table.FORMAT_str_parser(" %4d %s %2d %5.3f %5.3f %5.3f  %-2s %6.1f %6.1f");
  }
}

void addRow(GDB& table, const ORBEL& run, int resid, const RotamerPrediction& prediction) {
  table.setEntry(resid, "RESID", cellText(resid));
  table.setEntry(resid, "RESNAME", residueName(run.sequenceCopy, resid));
  table.setEntry(resid, "CS_COUNT", cellText(presentShifts(run.missingCount, resid - 1, resid + 1)));
  table.setEntry(resid, "Q_Gp", finiteCell(static_cast<double>(prediction.probability[0])));
  table.setEntry(resid, "Q_Gm", finiteCell(static_cast<double>(prediction.probability[1])));
  table.setEntry(resid, "Q_T", finiteCell(static_cast<double>(prediction.probability[2])));
  table.setEntry(resid, "CLASS", prediction.className);
  if (prediction.className == "na") {
    table.setEntry(resid, "CHI1", cellText(kMissingValue));
    table.setEntry(resid, "DCHI1", cellText(kMissingValue));
    return;
  }
  const std::vector<double> angles = anglesInRotamer(valueOr(run.sameTypeChi1, resid), prediction.className);
  table.setEntry(resid, "CHI1", finiteCell(circularMean(angles)));
  table.setEntry(resid, "DCHI1", finiteCell(circularSpread(angles)));
}

}  // namespace

/// Writes `predPrefix`Chi1.tab; residues of type A, G and P have no row. Ends the process (exit status 0)
/// when chi1.tab cannot be opened.
void ORBEL::writeChi1Predictions() {
  const Calibration calibration = loadCalibration(tabDir + pathSeparator + "chi1.tab");
  const bool compared = hasReference();
  GDB table;
  addHeader(table, *this, compared);
  std::cout << "Summarizing Chi1 Predictions ..." << std::endl;
  for (const int resid : residueRange(firstResidOption, lastResidOption)) {
    const std::string code = foldedCode(valueOr(sequence, resid));
    if (code.size() == 1 && !hasChi1Rotamers(code[0])) continue;
    const auto list = sameTypeChi1.find(resid);
    if (code == "V" && list != sameTypeChi1.end()) rotateValine(list->second);
    addRow(table, *this, resid, predictResidue(*this, resid, code, calibration));
    if (compared) {
      const auto observed = static_cast<double>(referenceStructure->getChi1(1, resid));
      table.setEntry(resid, "CHI1_OBS", finiteCell(observed));
    }
  }
  saveTable(table, predPrefix + "Chi1.tab");
}
