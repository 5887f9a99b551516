// The two-level engine: windows, ensemble, fill, normalisation, inconsistent weight files.
#include "ann/ANN.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ann/weight_files.h"

namespace {

using support::constants;
using support::expectNear;
using support::identity;
using support::joined;
using support::MemberRows;
using support::picking;
using support::writeLevel;
using support::writeWeights;

class AnnTest : public testing::Test {
 protected:
  std::string stem(const std::string& name) const { return (dir / name).string(); }
  /// A network of constant outputs; the widths of its windows are free.
  ANN constantNetwork(std::size_t inputs1, std::size_t inputs2) const {
    for (const auto& [level, inputs] : {std::pair("net.level1", inputs1), std::pair("net.level2", inputs2)}) {
      writeLevel(stem(level), constants(inputs, std::vector<double>(inputs, 0.0)), constants(inputs, {0.0}),
                 std::vector<MemberRows>(3, constants(1, {0.5, 0.3, 0.1})));
    }
    return ANN(static_cast<int>(inputs1), 1, 3, static_cast<int>(inputs2), 1, 3, dir.path.string(), "net");
  }
  support::TempDir dir;
};

/// Entry i of residue k is 100 k + i.
ResidueVectors numbered(const std::vector<int>& residues, int entries) {
  ResidueVectors vectors;
  for (const int k : residues) {
    for (int i = 0; i < entries; ++i) vectors[k].push_back(100.0 * k + i);
  }
  return vectors;
}

std::vector<int> keys(const ResidueVectors& vectors) {
  std::vector<int> result;
  for (const auto& entry : vectors) result.push_back(entry.first);
  return result;
}

TEST_F(AnnTest, ThreeResidueWindowsHideTheShiftsOfOneResidue) {
  const ResidueVectors input = numbered({-2, -1, 0, 1, 3, 4, 5}, 13);
  for (const int code : {0, 1, 2, 3}) {
    ANN network = constantNetwork(code == 0 ? 39 : 27, 9);
    network.set_input_code(code);
    network.runANN(input);
    // Residues at the ends and beside the gap after 1 have no window.
    EXPECT_EQ(keys(network.level1Inputs), (std::vector<int>{-1, 0, 4})) << code;
    const std::vector<double> previous = code == 1 ? std::vector<double>{-88.0} : input.at(-1);
    const std::vector<double> centre = code == 2 ? std::vector<double>{12.0} : input.at(0);
    const std::vector<double> next = code == 3 ? std::vector<double>{112.0} : input.at(1);
    EXPECT_EQ(network.level1Inputs.at(0), joined({previous, centre, next})) << code;
    EXPECT_EQ(keys(network.level2Inputs), (std::vector<int>{-1, 0, 4})) << code;
    EXPECT_EQ(network.level2Inputs.at(0).size(), 9U) << code;
  }
}

TEST_F(AnnTest, FiveResidueWindowsCarryPresenceFlags) {
  std::vector<double> absent{1.0};
  absent.insert(absent.end(), 20, 0.0);
  for (int pair = 0; pair < 6; ++pair) absent.insert(absent.end(), {0.0, 1.0});
  const std::vector<double> present{0.0};
  const std::vector<double> noOutput{1.0, 0.0, 0.0, 0.0};

  const ResidueVectors input = numbered({10, 11, 12, 13, 14}, 32);
  ANN network = constantNetwork(164, 19);
  network.set_input_code(5);
  network.runANN(input);
  EXPECT_EQ(keys(network.level1Inputs), (std::vector<int>{11, 12, 13}));
  EXPECT_EQ(network.level1Inputs.at(12), joined({present, input.at(10), present, input.at(11), input.at(12),
                                                 present, input.at(13), present, input.at(14)}));
  EXPECT_EQ(network.level1Inputs.at(11), joined({absent, present, input.at(10), input.at(11), present,
                                                 input.at(12), present, input.at(13)}));
  const std::vector<double> fill = network.level1Outputs.at(10);
  const std::vector<double> out = network.level1Outputs.at(12);
  EXPECT_EQ(network.level2Inputs.at(13), joined({present, out, present, out, out, present, fill, noOutput}));

  ANN broken = constantNetwork(164, 19);
  broken.set_input_code(5);
  broken.runANN(numbered({1, 2, 3, 4, 6, 7}, 32));  // five residues need unbroken numbering
  EXPECT_EQ(keys(broken.level1Inputs), (std::vector<int>{2}));
  EXPECT_EQ(keys(broken.level2Outputs), (std::vector<int>{1, 2, 3, 4, 6, 7}));
}

/// One value per residue; members differ in the biases of their outputs.
TEST_F(AnnTest, TwoLevelsWithConfidenceWeightedMembers) {
  const std::vector<std::vector<double>> memberBias{{0.0, 0.2, 0.1}, {0.3, 0.0, 0.1}, {0.0, 0.0, 0.9}};
  std::vector<MemberRows> outputs;
  for (const auto& bias : memberBias) outputs.push_back(picking(1, {0, 0, 0}, bias));
  for (auto& rows : outputs) rows[1][0] = rows[2][0] = 0.0;  // only helix follows the input
  writeLevel(stem("two.level1"), identity(3), picking(3, {1}, {0.1}, 2.0), outputs);
  writeLevel(stem("two.level2"), identity(9), picking(9, {3, 4, 5}, {0.0, 0.0, 0.0}),
             std::vector<MemberRows>(3, identity(3)));
  ANN network(3, 1, 3, 9, 3, 3, dir.path.string(), "two");
  network.runANN({{1, {0.7}}, {2, {0.25}}, {3, {0.4}}, {4, {0.6}}});

  const auto level1 = [](double x) {
    const double g = std::tanh(2.0 * std::tanh(x) + 0.1);
    const std::vector<std::vector<double>> o{{g, 0.2, 0.1}, {g + 0.3, 0.0, 0.1}, {g, 0.0, 0.9}};
    const std::vector<double> c{g - 0.2, g + 0.2, std::fabs(0.9 - g)};  // g lies above 0.2 for both inputs
    std::vector<double> mean;
    for (std::size_t i = 0; i < 3; ++i) {
      mean.push_back((o[0][i] * c[0] + o[1][i] * c[1] + o[2][i] * c[2]) / (c[0] + c[1] + c[2]));
    }
    return mean;
  };
  const std::vector<double> second = level1(0.25);
  const std::vector<double> third = level1(0.4);
  expectNear(network.level1Outputs.at(2), second, "level 1");
  std::vector<double> fill;
  double total = 0.0;
  for (std::size_t i = 0; i < 3; ++i) total += second[i] + third[i];
  for (std::size_t i = 0; i < 3; ++i) fill.push_back((second[i] + third[i]) / total);
  expectNear(network.level2Outputs.at(1), fill, "first residue");
  expectNear(network.level2Outputs.at(4), fill, "last residue");
  std::vector<double> expected;
  for (const double value : third) expected.push_back(std::tanh(std::tanh(value)));
  const double sum = expected[0] + expected[1] + expected[2];
  for (double& value : expected) value /= sum;
  expectNear(network.level2Outputs.at(3), expected, "level 2");
}

TEST_F(AnnTest, TooFewResiduesGiveZeros) {
  for (const auto& input : {ResidueVectors{}, numbered({7}, 1), numbered({7, 8}, 1)}) {
    ANN network = constantNetwork(3, 9);
    network.runANN(input);
    EXPECT_TRUE(network.level1Inputs.empty());
    EXPECT_EQ(keys(network.level2Outputs), keys(input));
    for (const auto& entry : network.level2Outputs) EXPECT_EQ(entry.second, (std::vector<double>(3, 0.0)));
  }
}

TEST(AnnStatistics, ConfidenceMeanAndNormalisation) {
  EXPECT_DOUBLE_EQ(ANN::getConfidence({0.2, 0.9, 0.5}), 0.4);
  EXPECT_EQ(ANN::getConfidence({0.4, 0.4, 0.1}), 0.0);
  EXPECT_EQ(ANN::getConfidence({0.4, 0.1}), -1.0);
  EXPECT_EQ(ANN::getConfidence({}), -1.0);

  std::vector<double> out;
  ANN::applyVecAverage({0.6, 0.3, 0.1}, {0.2, 0.2, 0.1}, {0.1, 0.9, 0.0}, out);  // confidences 0.3, 0, 0.8
  expectNear(out, {0.26 / 1.1, 0.81 / 1.1, 0.03 / 1.1}, "weighted", 1e-12);
  ANN::applyVecAverage({0.3, 0.3, 0.0}, {0.6, 0.6, 0.6}, {0.0, 0.9, 0.9}, out);  // no confidence at all
  expectNear(out, {0.3, 0.6, 0.5}, "plain", 1e-12);
  std::vector<double> untouched{5.0};
  ANN::applyVecAverage({0.3, 0.3, 0.0}, {0.6, 0.6}, {0.0, 0.9, 0.9}, untouched);
  EXPECT_EQ(untouched, std::vector<double>{5.0});

  const std::vector<std::pair<std::vector<double>, std::vector<double>>> normalised{
      {{2.0, 0.5, -1.0}, {1.0 / 1.5, 0.5 / 1.5, 0.0}},
      {{-1.0, -2.0, 0.0}, {0.0, 0.0, 0.0}},
      {{0.2, 0.2, 0.1}, {0.4, 0.4, 0.2}},
      {{std::nan(""), 0.5, 0.5}, {0.0, 0.5, 0.5}}};
  for (auto [values, expected] : normalised) {
    ANN::applyVecNormalization(values);
    expectNear(values, expected, "normalised", 1e-12);
  }
}

TEST_F(AnnTest, WeightFileBlocksColumnsAndExtraRows) {
  // Columns in any order, one of them missing, and one row beyond the third block of two units.
  support::writeFile(dir / "w.tab",
                     "VARS b 3 1\nFORMAT %f %f %d\n\n"
                     "0.1 3.5 1\n0.2 3.25 2\n0.3 0 3\n0.4 0 4\n0.5 0 5\n0.6 -1 6\n9 9 9\n");
  ANN::Layer layer;
  ANN::loadWeightBias3((dir / "w.tab").string(), layer, 2, 3);
  EXPECT_EQ(layer[0].weights.at(0, 0), 1.0F);
  EXPECT_EQ(layer[0].weights.at(1, 2), 3.25F);
  EXPECT_EQ(layer[1].weights.at(0, 0), 3.0F);
  EXPECT_EQ(layer[2].weights.at(1, 2), -1.0F);
  EXPECT_EQ(layer[2].weights.at(1, 1), 9999.0F);
  EXPECT_EQ(layer[2].bias, (std::vector<double>{0.5, static_cast<double>(0.6F)}));
  EXPECT_TRUE(layer[3].bias.empty());
}

using AnnDeathTest = AnnTest;

TEST_F(AnnDeathTest, InconsistentLayersEndTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const MemberRows three = constants(3, {0.0, 0.0, 0.0}), two = constants(3, {0.0, 0.0});
  const struct {
    const char* network;
    int entries;  ///< of each residue's input
    std::vector<MemberRows> firstLayer;
    int input, weights, units, biases;
  } cases[] = {{"absent", 1, {three, three, three}, 3, 0, 1, 0},
               {"net", 2, {three, three, three}, 6, 3, 3, 3},
               // Two of three units in the second block: the layer stands, the next one does not fit it.
               {"net", 1, {three, two}, 2, 3, 1, 1},
               // A single block leaves the second member without any unit.
               {"net", 1, {three}, 3, 0, 1, 0}};
  constantNetwork(3, 9);
  for (const auto& c : cases) {
    writeWeights(dir / "net.level1.WI.tab", c.firstLayer);
    ANN network(3, 1, 3, 9, 1, 3, dir.path.string(), c.network);
    EXPECT_EXIT(network.runANN(numbered({1, 2, 3}, c.entries)), testing::ExitedWithCode(0),
                " ANN prediction failed with inconsistent data!\n inp\\.size\\(\\):" +
                    std::to_string(c.input) + " w\\[0\\]\\.size\\(\\):" + std::to_string(c.weights) +
                    "\n w\\.size\\(\\):" + std::to_string(c.units) +
                    " b\\.size\\(\\):" + std::to_string(c.biases) + "\n");
  }
}

}  // namespace
