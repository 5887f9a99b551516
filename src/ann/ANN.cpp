// Two-level feed-forward network engine: windows of residue vectors in, one output vector per residue.
#include "ann/ANN.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "ann/residue_vectors.h"
#include "ann/weight_image.h"
#include "base/maps.h"
#include "tables/GDB2.h"

namespace {

constexpr std::size_t kClasses = 3;  // helix, strand, coil
constexpr std::size_t kBlock = 32;   // residues evaluated together

constexpr std::array<const char*, ANN::kLayers> kSuffix = {".level1.WI.tab",  ".level1.WL1.tab",
                                                           ".level1.WL2.tab", ".level2.WI.tab",
                                                           ".level2.WL1.tab", ".level2.WL2.tab"};

/// A missing member reads as one unit without inputs and no bias.
[[noreturn]] void failInconsistent(std::size_t inputLength, const LayerWeights& weights, std::size_t biases) {
  std::cerr << " ANN prediction failed with inconsistent data!\n inp.size():" << inputLength
            << " w[0].size():" << (weights.rows > 0 ? weights.cols : 0)
            << "\n w.size():" << std::max(weights.rows, 1) << " b.size():" << biases << '\n';
  std::exit(0);
}

void checkLayer(std::size_t inputLength, const ANN::LayerMember& member) {
  const LayerWeights& weights = member.weights;
  const std::size_t rows = static_cast<std::size_t>(std::max(weights.rows, 1));
  const std::size_t cols = weights.rows > 0 ? static_cast<std::size_t>(weights.cols) : 0;
  if (inputLength != cols || rows != member.bias.size())
    failInconsistent(inputLength, weights, member.bias.size());
}

void append(std::vector<double>& target, const std::vector<double>& values, std::size_t from = 0) {
  for (std::size_t i = from; i < values.size(); ++i) target.push_back(values[i]);
}

/// Five-residue window position without a usable residue: flag, no residue type, all shifts missing.
void appendAbsentResidue(std::vector<double>& target) {
  target.push_back(1.0);
  target.insert(target.end(), kResidueEntries - kShiftEntries, 0.0);
  for (std::size_t atom = 0; atom < kShiftEntries / 2; ++atom) append(target, {0.0, 1.0});
}

/// The vector of residue k + d, or nullptr when it lies outside first..last or has not `length` entries.
const std::vector<double>* windowEntry(const ResidueVectors& vectors, const ResidueVectors& range, int k,
                                       int d, std::size_t length) {
  const long long resid = static_cast<long long>(k) + d;
  if (resid < range.begin()->first || resid > range.rbegin()->first) return nullptr;
  const auto* entry = findValue(vectors, static_cast<int>(resid));
  return entry != nullptr && entry->size() == length ? entry : nullptr;
}

}  // namespace

ANN::ANN() : ANN(96, 20, 3, 9, 6, 3, "", "") {}

ANN::ANN(int N0, int N1, int N2, int N3, int N4, int N5, const std::string& directory,
         const std::string& name)
    : weightDirectory(directory), networkName(name), sizes{N0, N1, N2, N3, N4, N5} {
  getSlashChar();
}

void ANN::getSlashChar() {
  const char* path = std::getenv("PATH");
  const std::string text = path != nullptr ? path : "\\";
  slash.clear();
  for (const char candidate : {'/', '\\'}) {
    if (slash.empty() && text.find(candidate) != std::string::npos) slash.push_back(candidate);
  }
}

// ---- weights
// ---------------------------------------------------------------------------------------------------

std::string ANN::weightFile(LayerName layer) const {
  return weightDirectory + slash + networkName + kSuffix[layer];
}

int ANN::units(LayerName layer) const {
  return sizes[layer];
}

int ANN::unitInputs(LayerName layer) const {
  const bool square = layer == kInput1 || layer == kInput2;
  return square ? sizes[layer] : sizes[layer - 1];
}

void ANN::loadLevel(LayerName first, std::size_t members) {
  const TableImage tables(weightFile(first));
  for (std::size_t offset = 0; offset < 3; ++offset) {
    const auto layer = static_cast<LayerName>(first + offset);
    const LayerShape shape = {members, units(layer), unitInputs(layer)};
    const auto table = tables.find(weightFile(layer), image::Kind::Weights);
    if (table && decodeLayer(*table, shape, layers[layer])) {
      imaged[layer] = table->bulk;
    } else {
      imaged[layer] = {};
      loadMembers(weightFile(layer), layers[layer], members, shape.units, shape.inputs);
    }
  }
}

void ANN::loadLevelText(LayerName first, std::size_t members) {
  for (std::size_t offset = 0; offset < 3; ++offset) {
    const auto layer = static_cast<LayerName>(first + offset);
    imaged[layer] = {};
    loadMembers(weightFile(layer), layers[layer], members, units(layer), unitInputs(layer));
  }
}

bool ANN::isIntact(LayerName first) const {
  return imaged[first].intact() && imaged[first + 1].intact() && imaged[first + 2].intact();
}

void ANN::loadWeights() {
  loadLevel(kInput1, 3);
  loadLevel(kInput2, 3);
}

void ANN::loadWeightBias3(const std::string& file, Layer& layer, int n, int m) {
  loadMembers(file, layer, 3, n, m);
}

void ANN::loadMembers(const std::string& file, Layer& layer, std::size_t members, int n, int m) {
  const GDB2 table(file);
  std::vector<std::int32_t> columns;
  for (int i = 1; i <= m; ++i) columns.push_back(table.getVarIndex1(std::to_string(i)));
  const std::int32_t biasColumn = table.getVarIndex1("b");

  std::int32_t row = 1;
  for (std::size_t k = 0; k < members; ++k) {
    const int present = std::clamp(table.lineCount - (row - 1), 0, n);
    LayerMember& member = layer[k];
    member.weights = LayerWeights(present, m);
    member.bias.clear();
    for (int j = 0; j < present; ++j, ++row) {
      const LineNode& cells = *table.getLineEntry(row);
      for (int i = 0; i < m; ++i)
        member.weights.at(j, i) = cells.number(columns[static_cast<std::size_t>(i)]);
      member.bias.push_back(static_cast<double>(cells.number(biasColumn)));
    }
    member.weights.seal();
  }
}

// ---- evaluation
// ------------------------------------------------------------------------------------------------

void ANN::applyANNTransformation(const std::vector<double>& x, const LayerMember& member,
                                 std::vector<double>& y, int activation) {
  checkLayer(x.size(), member);
  evaluateLayer(member.weights, member.bias, {&x, 1}, {&y, 1}, activation);
}

void ANN::checkChain(LayerName first, std::size_t members, std::size_t inputLength) const {
  for (std::size_t k = 0; k < members; ++k) {
    std::size_t length = inputLength;
    for (std::size_t offset = 0; offset < 3; ++offset) {
      const LayerMember& member = layers[first + offset][k];
      checkLayer(length, member);
      length = member.bias.size();
    }
  }
}

/// An image that changed under the evaluation counts as if it had not been there.
void ANN::evaluateEnsemble(const ResidueVectors& windows, LayerName first, std::size_t members,
                           Combination combine, ResidueVectors& outputs) {
  evaluateOnce(windows, first, members, combine, outputs);
  if (isIntact(first)) return;
  loadLevelText(first, members);
  evaluateOnce(windows, first, members, combine, outputs);
}

void ANN::evaluateOnce(const ResidueVectors& windows, LayerName first, std::size_t members,
                       Combination combine, ResidueVectors& outputs) const {
  for (const auto& [resid, window] : windows) checkChain(first, members, window.size());

  auto next = windows.begin();
  while (next != windows.end()) {
    std::vector<int> resids;
    std::vector<std::vector<double>> block;
    for (; next != windows.end() && block.size() < kBlock; ++next) {
      resids.push_back(next->first);
      block.push_back(next->second);
    }
    std::vector<MemberOutputs> results(block.size());
    for (std::size_t k = 0; k < members; ++k) {
      std::vector<std::vector<double>> values = block;
      for (std::size_t offset = 0; offset < 3; ++offset) {
        const LayerMember& member = layers[first + offset][k];
        std::vector<std::vector<double>> y(values.size());
        evaluateLayer(member.weights, member.bias, values, y, offset < 2 ? kTanh : kLinear);
        values = std::move(y);
      }
      for (std::size_t p = 0; p < values.size(); ++p) results[p][k] = std::move(values[p]);
    }
    for (std::size_t p = 0; p < block.size(); ++p) {
      std::vector<double> combined;
      combine(results[p], combined);
      outputs[resids[p]] = std::move(combined);
    }
  }
}

void ANN::calcLevel1() {
  evaluateEnsemble(
      level1Inputs, kInput1, 3,
      [](const MemberOutputs& o, std::vector<double>& out) { applyVecAverage(o[0], o[1], o[2], out); },
      level1Outputs);
}

void ANN::calcLevel2() {
  evaluateEnsemble(
      level2Inputs, kInput2, 3,
      [](const MemberOutputs& o, std::vector<double>& out) { applyVecAverage(o[0], o[1], o[2], out); },
      level2Outputs);
}

void ANN::applyVecAverage(const std::vector<double>& a, const std::vector<double>& b,
                          const std::vector<double>& c, std::vector<double>& out) {
  if (a.size() != b.size() || a.size() != c.size()) return;
  double weightA = getConfidence(a);
  double weightB = getConfidence(b);
  double weightC = getConfidence(c);
  if (weightA + weightB + weightC == 0.0) weightA = weightB = weightC = 1.0;
  out.clear();
  for (std::size_t i = 0; i < a.size(); ++i) {
    out.push_back((a[i] * weightA + b[i] * weightB + c[i] * weightC) / (weightA + weightB + weightC));
  }
}

double ANN::getConfidence(const std::vector<double>& p) {
  if (p.size() != kClasses) return -1.0;
  std::array<double, kClasses> sorted = {p[0], p[1], p[2]};
  std::sort(sorted.begin(), sorted.end());
  return sorted[2] - sorted[1];
}

void ANN::applyVecNormalization(std::vector<double>& p) {
  if (p.size() < kClasses) return;
  p.resize(kClasses);
  for (double& value : p) value = value > 0.0 ? std::min(value, 1.0) : 0.0;
  const double sum = p[0] + p[1] + p[2];
  if (!(sum > 0.0)) return;
  for (double& value : p) value /= sum;
}

// ---- windows and the run
// -----------------------------------------------------------------------------------------

std::vector<int> ANN::residueNumbers(const ResidueVectors& vectors) {
  std::vector<int> residues;
  for (const auto& entry : vectors) residues.push_back(entry.first);
  return residues;
}

bool ANN::hasNeighbours(const std::vector<int>& residues, std::size_t ordinal, std::size_t reach,
                        bool openEnds) {
  const long long centre = residues[ordinal];
  for (std::size_t d = 1; d <= reach; ++d) {
    const auto distance = static_cast<long long>(d);
    const bool before = ordinal >= d ? centre - residues[ordinal - d] == distance : openEnds;
    const bool after = ordinal + d < residues.size() ? residues[ordinal + d] - centre == distance : openEnds;
    if (!before || !after) return false;
  }
  return true;
}

bool ANN::qualifies(const std::vector<int>& residues, std::size_t ordinal) const {
  if (ordinal == 0 || ordinal + 1 >= residues.size()) return false;
  return inputCode == 5 ? hasNeighbours(residues, ordinal, 2, true)
                        : hasNeighbours(residues, ordinal, 1, false);
}

std::vector<double> ANN::joinWindow(const ResidueVectors& vectors, int k, int reach) {
  std::vector<double> window;
  for (int d = -reach; d <= reach; ++d) append(window, valueOr(vectors, k + d));
  return window;
}

std::vector<double> ANN::level1Window(int k) const {
  if (inputCode == 0) return joinWindow(inputs, k, 1);
  std::vector<double> window;
  if (inputCode >= 1 && inputCode <= 3) {
    const int hidden = inputCode - 2;  // position whose shifts are hidden
    for (int d = -1; d <= 1; ++d) append(window, valueOr(inputs, k + d), d == hidden ? kShiftEntries : 0);
  }
  if (inputCode == 5) {
    for (int d = -2; d <= 2; ++d) {
      const auto* entry = windowEntry(inputs, inputs, k, d, kResidueEntries);
      if (entry == nullptr) {
        appendAbsentResidue(window);
        continue;
      }
      if (d != 0) window.push_back(0.0);
      append(window, *entry);
    }
  }
  return window;
}

std::vector<double> ANN::level2Window(int k) const {
  if (inputCode != 5) return joinWindow(level1Outputs, k, 1);
  std::vector<double> window;
  for (int d = -2; d <= 2; ++d) {
    const auto* entry = windowEntry(level1Outputs, inputs, k, d, kClasses);
    if (entry == nullptr) {
      append(window, {1.0, 0.0, 0.0, 0.0});
      continue;
    }
    if (d != 0) window.push_back(0.0);
    append(window, *entry);
  }
  return window;
}

/// Mean level-1 output scaled to the sum 1: stands in for residues without a window. Zeros without any
/// output.
std::vector<double> ANN::fillVector() const {
  std::vector<double> fill(kClasses, 0.0);
  for (const auto& [resid, output] : level1Outputs) {
    for (std::size_t i = 0; i < kClasses && output.size() >= kClasses; ++i) fill[i] += output[i];
  }
  const double sum = fill[0] + fill[1] + fill[2];
  for (double& value : fill) value = sum != 0.0 ? value / sum : 0.0;
  return fill;
}

void ANN::runANN(const ResidueVectors& input) {
  inputs = input;
  loadWeights();
  const std::vector<int> residues = residueNumbers(inputs);
  for (std::size_t o = 0; o < residues.size(); ++o) {
    if (qualifies(residues, o)) level1Inputs[residues[o]] = level1Window(residues[o]);
  }
  calcLevel1();

  const std::vector<double> fill = fillVector();
  for (const int k : residues) {
    std::vector<double>& output = level1Outputs[k];
    if (output.size() < kClasses) output = fill;
    level2Outputs[k] = output;
  }
  for (std::size_t o = 0; o < residues.size(); ++o) {
    if (qualifies(residues, o)) level2Inputs[residues[o]] = level2Window(residues[o]);
  }
  calcLevel2();
  for (auto& entry : level2Outputs) applyVecNormalization(entry.second);
}
