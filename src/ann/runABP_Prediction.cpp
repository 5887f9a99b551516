// Phi/psi box distributions: network inputs of every residue, the two networks, selection, prior, clusters.
#include <cmath>
#include <iostream>

#include "ann/SURFANN.h"
#include "ann/abp_output.h"
#include "ann/box_prior.h"
#include "ann/output_text.h"
#include "ann/residue_vectors.h"
#include "driver/ORBEL.h"
#include "driver/angles.h"
#include "driver/maps.h"
#include "driver/residue_range.h"
#include "tables/OutputFile.h"
#include "tables/text.h"

namespace {

constexpr std::array<const char*, 6> kInputAtoms = {"HN", "N", "HA", "C", "CA", "CB"};  // order of the pairs
constexpr int kBackboneAtoms = 6;
constexpr int kSparseWindow = 25;  // missing shifts of five residues that leave nothing to predict from

using ShiftsByAtom = std::map<std::string, double>;

/// Clipped secondary shifts by residue; 9999 where missing or masked.
std::map<int, ShiftsByAtom> measuredShifts(const ORBEL& orbel) {
  std::map<int, ShiftsByAtom> measured;
  for (const auto& [number, row] : orbel.adjustedShiftTable.entries) {
    const int resid = text::toInt(GDB::cell(row, "RESID"));
    std::string atom = GDB::cell(row, "ATOMNAME");
    if (atom == "H") atom = "HN";
    double value = orbel.clipSShift(resid, text::toDouble(GDB::cell(row, "SHIFT")), atom);
    if (value == 0.0) value = 0.001;  // an exact zero would read as "no value" in later stages
    if (orbel.noProton && (atom == "HA" || atom == "HN")) value = kMissingValue;
    measured[resid][atom] = value;
  }
  return measured;
}

/// Shift pairs in the order of kInputAtoms, then the residue type values as far as the type has any.
std::vector<double> residueInput(const ORBEL& orbel, int resid, const ShiftsByAtom& measured) {
  ShiftsByAtom estimates;
  const bool estimated =
      valueOr(orbel.missingCount, resid) != 0 && orbel.calcAverageCS_orig(resid, estimates);
  std::vector<double> input;
  for (const char* atom : kInputAtoms) {
    const double value = valueOr(measured, atom);
    if (value <= kMissingLimit) {
      input.insert(input.end(), {value, 0.0});
    } else {
      input.insert(input.end(), {estimated ? valueOr(estimates, atom) : 0.0, 1.0});
    }
  }
  const std::vector<double> type = valueOr(orbel.blosumScaled, foldedCode(valueOr(orbel.sequence, resid)));
  input.insert(input.end(), type.begin(), type.end());
  return input;
}

SURFANN makeNetwork(const ORBEL& orbel, const std::string& name) {
  SURFANN network(160, 180, kPhiPsiBoxes, 1620, 360, kPhiPsiBoxes, orbel.tabDir, name);
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

/// Missing shifts of residues resid - 2 .. resid + 2.
std::array<int, 5> windowMissing(const ORBEL& orbel, int resid) {
  std::array<int, 5> missing{};
  int neighbour = resid - 2;
  for (int& count : missing) count = valueOr(orbel.missingCount, neighbour++);
  return missing;
}

int sum(const std::array<int, 5>& counts) {
  return counts[0] + counts[1] + counts[2] + counts[3] + counts[4];
}

/// The network output that fits the completeness of the residue's window; zeros where nothing can be told.
std::vector<double> selectDistribution(const ORBEL& orbel, int resid) {
  const std::vector<double> zeros(kPhiPsiBoxes, 0.0);
  const std::array<int, 5> missing = windowMissing(orbel, resid);
  const int limit = orbel.noProton ? 5 : 4;
  bool complete = true;
  for (const int count : missing) complete = complete && count <= limit;

  std::vector<double> selected = zeros;
  if (complete) {
    selected = valueOr(orbel.fullPrediction, resid);
  } else if (sum(missing) < kSparseWindow) {
    selected = valueOr(orbel.hybridPrediction, resid);
  }

  const int first = orbel.firstResidOption;
  const int last = orbel.lastResidOption;
  const int sequenceLast = orbel.sequenceStart + orbel.sequenceLength - 1;
  const bool outside = resid < first || resid > last;
  const bool cutStart = resid == first && resid != orbel.shiftFirstResid;
  const bool cutEnd = resid == last && resid != sequenceLast;
  if (outside || cutStart || cutEnd) selected = zeros;

  // Beside a cut end the two-level network would see the cut as the end of the chain.
  const bool besideCutStart = resid == first + 1 && first != orbel.shiftFirstResid;
  const bool besideCutEnd = resid == last - 1 && last != sequenceLast;
  const bool sparse = sum(missing) >= kSparseWindow;
  if ((besideCutStart || besideCutEnd) && !sparse) selected = valueOr(orbel.hybridPrediction, resid);
  return selected;
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
  row.windowShifts = 5 * kBackboneAtoms - sum(windowMissing(orbel, resid));
  row.residueShifts = kBackboneAtoms - valueOr(orbel.missingCount, resid);
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
