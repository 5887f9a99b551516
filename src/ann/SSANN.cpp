// Secondary structure from sequence profiles, with known structure of residues as optional context.
#include "ann/SSANN.h"

#include "base/maps.h"

namespace {

constexpr std::size_t kProfileBlock = 21;   // presence flag and 20 values
constexpr std::size_t kStructureBlock = 4;  // presence flag and 3 class values

void weightedMean3(const ANN::MemberOutputs& o, std::vector<double>& out) {
  ANN::applyVecAverage(o[0], o[1], o[2], out);
}

void weightedMean5(const ANN::MemberOutputs& o, std::vector<double>& out) {
  SSANN::applyVecAverage5(o[0], o[1], o[2], o[3], o[4], out);
}

void append(std::vector<double>& target, const std::vector<double>& values) {
  target.insert(target.end(), values.begin(), values.end());
}

}  // namespace

SSANN::SSANN(int N0, int N1, int N2, int N3, int N4, int N5, const std::string& directory,
             const std::string& name)
    : ANN(N0, N1, N2, N3, N4, N5, directory, name) {}

void SSANN::loadWeights() {
  if (order != 3 && order != 5) return;
  loadLevel(kInput1, static_cast<std::size_t>(order));
  loadLevel(kInput2, static_cast<std::size_t>(order));
}

void SSANN::loadWeightBias5(const std::string& file, Layer& layer, int n, int m) {
  loadMembers(file, layer, 5, n, m);
}

void SSANN::calcLevel1() {
  if (order == 5) {
    evaluateEnsemble(level1Inputs, kInput1, 5, weightedMean5, level1Outputs);
  } else {
    evaluateEnsemble(level1Inputs, kInput1, 3, weightedMean3, level1Outputs);
  }
}

void SSANN::calcLevel2() {
  if (order == 5) {
    evaluateEnsemble(level2Inputs, kInput2, 5, weightedMean5, level2Outputs);
  } else {
    evaluateEnsemble(level2Inputs, kInput2, 3, weightedMean3, level2Outputs);
  }
}

void SSANN::applyVecAverage5(const std::vector<double>& a, const std::vector<double>& b,
                             const std::vector<double>& c, const std::vector<double>& d,
                             const std::vector<double>& e, std::vector<double>& out) {
  const std::array<const std::vector<double>*, 5> vectors = {&a, &b, &c, &d, &e};
  std::array<double, 5> weight{};
  double weightSum = 0.0;
  for (std::size_t v = 0; v < vectors.size(); ++v) {
    if (vectors[v]->size() != a.size()) return;
    weight[v] = getConfidence(*vectors[v]);
    weightSum += weight[v];
  }
  if (weightSum == 0.0) {
    weight.fill(1.0);
    weightSum = 5.0;
  }
  out.clear();
  for (std::size_t i = 0; i < a.size(); ++i) {
    double sum = 0.0;
    for (std::size_t v = 0; v < vectors.size(); ++v) sum += (*vectors[v])[i] * weight[v];
    out.push_back(sum / weightSum);
  }
}

std::vector<double> SSANN::profileWindow(int k, int half) const {
  std::vector<double> window;
  for (int d = -half; d <= half; ++d) {
    const long long resid = static_cast<long long>(k) + d;
    if (d == 0) {
      append(window, inputs.at(k));
    } else if (resid < inputs.begin()->first || resid > inputs.rbegin()->first) {
      window.push_back(1.0);
      window.insert(window.end(), kProfileBlock - 1, 0.0);
    } else {
      // A gap in the numbering leaves the window short, which the layer then refuses.
      const auto* profile = findValue(inputs, static_cast<int>(resid));
      if (profile == nullptr || profile->size() != kProfileBlock - 1) continue;
      window.push_back(0.0);
      append(window, *profile);
    }
  }
  return window;
}

bool SSANN::isKnown(long long resid) const {
  const auto it = knownSS.find(static_cast<int>(resid));
  if (it == knownSS.end() || it->first != resid || it->second.size() != kStructureBlock - 1) return false;
  return it->second[0] != 0.0 || it->second[1] != 0.0 || it->second[2] != 0.0;
}

void SSANN::appendStructureBlock(long long resid, std::vector<double>& window) const {
  const bool inside = resid >= inputs.begin()->first && resid <= inputs.rbegin()->first;
  if (isKnown(resid)) {
    window.push_back(0.0);
    append(window, knownSS.at(static_cast<int>(resid)));
  } else if (inside) {
    const auto* output = findValue(level1Outputs, static_cast<int>(resid));
    if (output == nullptr || output->size() != kStructureBlock - 1) return;
    window.push_back(0.0);
    append(window, *output);
  } else {
    append(window, {1.0, 0.0, 0.0, 0.0});
  }
}

std::vector<double> SSANN::structureWindow(int k, int half) const {
  std::vector<double> window;
  for (int d = -half; d <= half; ++d) {
    if (d == 0) {
      append(window, isKnown(k) ? knownSS.at(k) : level1Outputs.at(k));
    } else {
      appendStructureBlock(static_cast<long long>(k) + d, window);
    }
  }
  return window;
}

void SSANN::runANN(const ResidueVectors& profiles) {
  inputs = profiles;
  loadWeights();
  const int half = ((sizes[0] + 1) / 21 - 1) / 2;
  for (const auto& entry : inputs) level1Inputs[entry.first] = profileWindow(entry.first, half);
  calcLevel1();

  const auto width = static_cast<std::size_t>(sizes[2]);
  for (const auto& entry : inputs) {
    std::vector<double>& output = level1Outputs[entry.first];
    if (output.size() < width) output.resize(width, 0.0);
    level2Outputs[entry.first] = output;
  }
  for (const auto& entry : inputs) level2Inputs[entry.first] = structureWindow(entry.first, half);
  calcLevel2();
  for (auto& entry : level2Outputs) applyVecNormalization(entry.second);
}
