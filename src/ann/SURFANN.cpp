// Phi/psi box distribution network: windows of five complete residues, plain mean of the ensemble.
#include "ann/SURFANN.h"

#include "base/atoms.h"
#include "base/residues.h"

namespace {

void plainMean(const ANN::MemberOutputs& o, std::vector<double>& out) {
  SURFANN::applyVecAverage(o[0], o[1], o[2], out);
}

/// Residue type unknown, all shifts missing.
std::vector<double> absentResidue() {
  std::vector<double> entry(kAminoAcids.size(), 0.0);
  for (std::size_t atom = 0; atom < kAtoms; ++atom) entry.insert(entry.end(), {0.0, 1.0});
  return entry;
}

}  // namespace

SURFANN::SURFANN(int N0, int N1, int N2, int N3, int N4, int N5, const std::string& directory,
                 const std::string& name)
    : ANN(N0, N1, N2, N3, N4, N5, directory, name) {
  set_input_code(5);
}

void SURFANN::loadWeights() {
  loadLevel(kInput1, 3);
  if (hybrid == 0) loadLevel(kInput2, 3);
}

void SURFANN::calcLevel1() {
  evaluateEnsemble(level1Inputs, kInput1, 3, plainMean, level1Outputs);
}

void SURFANN::calcLevel2_omp() {
  evaluateEnsemble(level2Inputs, kInput2, 3, plainMean, level2Outputs);
}

void SURFANN::applyVecAverage(const std::vector<double>& a, const std::vector<double>& b,
                              const std::vector<double>& c, std::vector<double>& out) {
  if (a.empty() || a.size() != b.size() || a.size() != c.size()) return;
  out.clear();
  for (std::size_t i = 0; i < a.size(); ++i) out.push_back((a[i] + b[i] + c[i]) / 3.0);
}

std::vector<int> SURFANN::windowCentres(long long low, long long high) const {
  const std::vector<int> residues = residueNumbers(inputs);
  std::vector<int> centres;
  for (std::size_t o = 0; o < residues.size(); ++o) {
    const int k = residues[o];
    if (k > low && k < high && hasNeighbours(residues, o, 2, false)) centres.push_back(k);
  }
  return centres;
}

std::vector<double> SURFANN::meanLevel1Output() const {
  const auto width = static_cast<std::size_t>(sizes[2]);
  std::vector<double> mean(width, 0.0);
  int count = 0;
  for (const auto& [resid, output] : level1Outputs) {
    if (output.size() != width) continue;
    for (std::size_t i = 0; i < width; ++i) mean[i] += output[i];
    ++count;
  }
  for (double& value : mean) value = count > 0 ? value / count : 0.0;
  return mean;
}

void SURFANN::runANN(const ResidueVectors& input) {
  inputs = input;
  loadWeights();
  if (inputs.empty()) return;
  const std::vector<int> centres = windowCentres(inputs.begin()->first + 1LL, inputs.rbegin()->first - 1LL);
  for (const int k : centres) level1Inputs[k] = joinWindow(inputs, k, 2);
  calcLevel1();

  const std::vector<double> fill = meanLevel1Output();
  for (const auto& entry : inputs) {
    std::vector<double>& output = level1Outputs[entry.first];
    if (output.size() < fill.size()) output = fill;
    level2Outputs[entry.first] = output;
  }
  for (const int k : centres) level2Inputs[k] = joinWindow(level1Outputs, k, 2);
  calcLevel2_omp();
}

void SURFANN::runHybridANN(const ResidueVectors& input) {
  inputs = input;
  loadLevel(kInput1, 3);
  if (inputs.empty()) return;
  const int first = inputs.begin()->first;
  const int last = inputs.rbegin()->first;
  inputs[first - 1] = absentResidue();
  inputs[last + 1] = absentResidue();
  for (const int k : windowCentres(first, last)) level1Inputs[k] = joinWindow(inputs, k, 2);
  calcLevel1();
}
