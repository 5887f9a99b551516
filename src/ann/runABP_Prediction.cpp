// Phi/psi box distributions: network inputs of every residue, the two networks, selection, prior, clusters.
#include <cmath>
#include <iostream>

#include "ann/SURFANN.h"
#include "ann/abp_output.h"
#include "ann/map_selection.h"
#include "ann/residue_vectors.h"
#include "base/atoms.h"
#include "base/box_prior.h"
#include "base/maps.h"
#include "base/missing.h"
#include "base/residue_range.h"
#include "base/residues.h"
#include "driver/ORBEL.h"
#include "tables/OutputFile.h"
#include "tables/output_text.h"
#include "tables/text.h"

namespace {

constexpr int kWindow = 5;  // residues that a network sees

using ShiftsByAtom = std::map<std::string, double>;

/// Clipped secondary shifts by residue; 9999 where missing or masked.
std::map<int, ShiftsByAtom> measuredShifts(const ORBEL& orbel) {
  std::map<int, ShiftsByAtom> measured;
  for (const auto& [number, row] : orbel.adjustedShiftTable.entries) {
    const int resid = text::toInt(GDB::cell(row, "RESID"));
    const std::string atom = backboneName(GDB::cell(row, "ATOMNAME"));
    double value = orbel.clipSShift(resid, text::toDouble(GDB::cell(row, "SHIFT")), atom);
    if (value == 0.0) value = 0.001;  // an exact zero would read as "no value" in later stages
    if (orbel.noProton && isProton(atom)) value = kMissingValue;
    measured[resid][atom] = value;
  }
  return measured;
}

/// Shift pairs in kInputOrder, then the residue type values as far as the type has any.
std::vector<double> residueInput(const ORBEL& orbel, int resid, const ShiftsByAtom& measured) {
  ShiftsByAtom estimates;
  const bool estimated =
      valueOr(orbel.missingCount, resid) != 0 && orbel.calcAverageCS_orig(resid, estimates);
  std::vector<double> input;
  for (const Atom atom : kInputOrder) {
    const double value = valueOr(measured, atomName(atom));
    if (value <= kMissingLimit) {
      input.insert(input.end(), {value, 0.0});
    } else {
      input.insert(input.end(), {estimated ? valueOr(estimates, atomName(atom)) : 0.0, 1.0});
    }
  }
  const std::vector<double> type = valueOr(orbel.blosumScaled, foldedCode(valueOr(orbel.sequence, resid)));
  input.insert(input.end(), type.begin(), type.end());
  return input;
}

SURFANN makeNetwork(const ORBEL& orbel, const std::string& name) {
  SURFANN network(kWindow * kResidueEntries, 180, kPhiPsiBoxes, kWindow * kPhiPsiBoxes, 360, kPhiPsiBoxes,
                  orbel.tabDir, name);
  network.setThread(orbel.threadCount);
  return network;
}

void runNetworks(ORBEL& orbel) {
  ResidueVectors inputs;
  for (const auto& [resid, entry] : orbel.annResidueInputs) inputs[resid] = typeFirst(entry);
  if (!orbel.noProton) {
    SURFANN full = makeNetwork(orbel, "surf20");
    full.runANN(inputs);
    orbel.fullPrediction = std::move(full.level2Outputs);
  }
  SURFANN hybrid = makeNetwork(orbel, "surf20_hyb");
  hybrid.setHybrid(1);
  hybrid.runHybridANN(inputs);
  orbel.hybridPrediction = std::move(hybrid.level1Outputs);
  if (orbel.noProton) orbel.fullPrediction = orbel.hybridPrediction;
}

/// The map that the rules choose for the residue; zeros where nothing can be told.
std::vector<double> selectDistribution(const ORBEL& orbel, int resid) {
  MapSelection input{.resid = resid,
                     .span = orbel.span(),
                     .sequenceLast = orbel.sequenceStart + orbel.sequenceLength - 1,
                     .noProton = orbel.noProton};
  int neighbour = resid - 2;
  for (int& count : input.missing) count = valueOr(orbel.missingCount, neighbour++);
  switch (selectMap(input)) {
    case BoxMap::Full:
      return valueOr(orbel.fullPrediction, resid);
    case BoxMap::Hybrid:
      return valueOr(orbel.hybridPrediction, resid);
    case BoxMap::None:
      break;
  }
  return std::vector<double>(kPhiPsiBoxes, 0.0);
}

/// Box values times the prior; negative and undefined values become 0.
void applyBoxPrior(std::vector<double>& values) {
  for (int k = 0; k < kPhiPsiBoxes; ++k) {
    double& value = values[static_cast<std::size_t>(k)];
    value *= boxWeight(k);
    if (value < 0.0 || !std::isfinite(value)) value = 0.0;
  }
}

/// Value of the first cluster's seed box as a share of all seeds; 0 without clusters.
double topShare(const std::vector<double>& values, const ClusterData& clusters) {
  double seeds = 0.0;
  for (int c = 1; c <= clusters.clusterCount; ++c)
    seeds += values[static_cast<std::size_t>(clusters.seed(c))];
  return seeds > 0.0 ? values[static_cast<std::size_t>(clusters.seed(1))] / seeds : 0.0;
}

/// Weights and clusters the residue's distribution, stores the results and appends the table row.
void finishResidue(ORBEL& orbel, int resid, std::vector<double> values, std::string& text) {
  applyBoxPrior(values);
  ClusterData& clusters = orbel.clusterInfo[resid];
  BoxDistributionRow row;
  row.resid = resid;
  row.resName = output_text::singleCode(valueOr(orbel.sequenceCopy, resid));
  row.windowShifts = presentShifts(orbel.missingCount, resid - 2, resid + 2);
  row.residueShifts = presentShifts(orbel.missingCount, resid, resid);
  row.clusterCount = ORBEL::getClusterInfo(values, clusters);
  row.topClusterShare = topShare(values, clusters);
  orbel.topClusterFraction[resid] = row.topClusterShare;
  appendBoxDistributionRow(text, row, values);
  orbel.phiPsiBoxProb[resid] = std::move(values);
}

}  // namespace

void ORBEL::prepareResidueInputs() {
  const std::map<int, ShiftsByAtom> measured = measuredShifts(*this);
  if (tripletLibrary == nullptr) loadTripletLibrary();
  std::cout << "Preparing inputs for ANN prediction ..." << std::endl;
  for (const int resid : residueRange(firstResidOption, lastResidOption)) {
    std::vector<double> input = residueInput(*this, resid, valueOr(measured, resid));
    if (input.size() == kResidueEntries) annResidueInputs[resid] = std::move(input);
  }
}

void ORBEL::runABP_Prediction() {
  prepareResidueInputs();
  std::cout << (noProton ? "ANN prediction using 13C/15N parameters only ..."
                         : "ANN prediction using standard 1H/13C/15N parameters ...")
            << std::endl;
  runNetworks(*this);

  const std::string path = predPrefix + "ABP.tab";
  OutputFile file(path);
  if (!file.isOpen()) {
    std::cerr << "\tCan't open file write file " << path << " !!!" << std::endl;
    return;
  }
  std::string text = boxDistributionHeader(inputTitle);
  for (const auto& [resid, prediction] : fullPrediction) {
    std::vector<double> selected = selectDistribution(*this, resid);
    if (selected.size() == kPhiPsiBoxes) finishResidue(*this, resid, std::move(selected), text);
  }
  saveText(file, path, text);
}
