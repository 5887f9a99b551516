// Chi1 network of one residue type: scores one database fragment against the query, smaller is better.
#include "ann/CHI1ANN.h"

CHI1ANN::CHI1ANN(int N0, int N1, int N2, const std::string& directory, const std::string& name)
    : ANN(N0, N1, N2, 9, 6, 3, directory, name) {}

void CHI1ANN::loadWeightBias3(const std::string& file, Layer& layer, int n, int m) {
  loadMembers(file, layer, 3, n, m);
}

void CHI1ANN::loadWeights() {
  loadLevel(kInput1, 3);
  weightsLoaded = 1;
}

void CHI1ANN::calcLevel1() {
  evaluateEnsemble(
      level1Inputs, kInput1, 3,
      [](const MemberOutputs& o, std::vector<double>& out) { applyVecAverage(o[0], o[1], o[2], out); },
      level1Outputs);
}

void CHI1ANN::applyVecAverage(const std::vector<double>& a, const std::vector<double>& b,
                              const std::vector<double>& c, std::vector<double>& out) {
  if (a.empty() || a.size() != b.size() || a.size() != c.size()) return;
  out.clear();
  for (std::size_t i = 0; i < a.size(); ++i) out.push_back((a[i] + b[i] + c[i]) / 3.0);
}

float CHI1ANN::runANNLevel1(std::vector<double> input) {
  return runANNLevel1(std::vector<std::vector<double>>{std::move(input)})[0];
}

std::vector<float> CHI1ANN::runANNLevel1(std::vector<std::vector<double>> many) {
  if (weightsLoaded == 0 && !many.empty()) loadWeights();
  level1Inputs.clear();
  for (std::vector<double>& input : many)
    level1Inputs.emplace_hint(level1Inputs.end(), static_cast<int>(level1Inputs.size()) + 1,
                              std::move(input));
  calcLevel1();
  std::vector<float> scores;
  scores.reserve(many.size());
  for (int i = 1; i <= static_cast<int>(many.size()); ++i) {
    const std::vector<double>& output = level1Outputs[i];
    scores.push_back(output.empty() ? 0.0F : static_cast<float>(output[0]));
  }
  return scores;
}
