// Sequence network: windows at the chain ends, known structure as context, ensembles of three and five.
#include "ann/SSANN.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ann/weight_files.h"

namespace {

using support::constants;
using support::expectNear;
using support::identity;
using support::joined;
using support::picking;

// Half width 1: 62 = 2 blocks of 21 and the centre's 20 values; 11 = 2 blocks of 4 and 3 values.
class SsannTest : public testing::Test {
 protected:
  SSANN network(const std::vector<std::vector<double>>& members) const {
    std::vector<support::MemberRows> level1;
    for (const auto& bias : members) level1.push_back(constants(1, bias));
    support::writeLevel((dir / "seq.level1").string(), constants(62, std::vector<double>(62, 0.0)),
                        constants(62, {0.0}), level1);
    support::writeLevel((dir / "seq.level2").string(), identity(11), picking(11, {4, 5, 6}, {0.0, 0.0, 0.0}),
                        std::vector<support::MemberRows>(members.size(), identity(3)));
    return SSANN(62, 1, 3, 11, 3, 3, dir.path.string(), "seq");
  }
  static ResidueVectors profiles(const std::vector<int>& residues) {
    ResidueVectors result;
    for (const int k : residues) result[k] = std::vector<double>(20, k);
    return result;
  }
  support::TempDir dir;
};

std::vector<double> block(double flag, double value, std::size_t n) {
  std::vector<double> result(n, value);
  result.insert(result.begin(), flag);
  return result;
}

/// Both tanh layers and the scaling to the sum 1 of level 2.
std::vector<double> level2Of(std::vector<double> values) {
  double sum = 0.0;
  for (double& value : values) sum += value = std::tanh(std::tanh(value));
  for (double& value : values) value /= sum;
  return values;
}

TEST_F(SsannTest, WindowsBeyondTheChainEndsAndKnownContext) {
  SSANN seq = network({{0.5, 0.3, 0.1}, {0.5, 0.3, 0.1}, {0.5, 0.3, 0.1}});
  seq.setKNOWN_SS({{2, {0.1, 0.8, 0.1}}, {3, {0.0, 0.0, 0.0}}, {5, {0.0, 0.0, 0.7}}});
  seq.runANN(profiles({1, 2, 3, 4}));
  EXPECT_EQ(seq.level1Inputs.at(1), joined({block(1, 0, 20), std::vector<double>(20, 1.0), block(0, 2, 20)}));
  EXPECT_EQ(seq.level1Inputs.at(4), joined({block(0, 3, 20), std::vector<double>(20, 4.0), block(1, 0, 20)}));

  const std::vector<double> output = seq.level1Outputs.at(3);
  expectNear(output, {0.5, 0.3, 0.1}, "level 1");
  // Residue 2 is known, 3 is all zero and thus unknown; 5 lies outside, but is known.
  EXPECT_EQ(seq.level2Inputs.at(1), joined({{1, 0, 0, 0}, output, {0.0, 0.1, 0.8, 0.1}}));
  EXPECT_EQ(seq.level2Inputs.at(2), joined({{0.0}, output, {0.1, 0.8, 0.1}, {0.0}, output}));
  EXPECT_EQ(seq.level2Inputs.at(4), joined({{0.0}, output, output, {0.0, 0.0, 0.0, 0.7}}));
  expectNear(seq.level2Outputs.at(2), level2Of({0.1, 0.8, 0.1}), "known centre");
  expectNear(seq.level2Outputs.at(3), level2Of({0.5, 0.3, 0.1}), "unknown centre");
}

TEST_F(SsannTest, EnsemblesOfThreeAndFive) {
  const std::vector<std::vector<double>> members{
      {0.6, 0.2, 0.1}, {0.3, 0.3, 0.1}, {0.0, 0.1, 0.3}, {0.9, 0.1, 0.1}, {0.2, 0.5, 0.1}};
  // Confidences 0.4, 0, 0.2, 0.8, 0.3.
  const std::vector<double> five{(0.24 + 0.72 + 0.06) / 1.7, (0.08 + 0.02 + 0.08 + 0.15) / 1.7,
                                 (0.04 + 0.06 + 0.08 + 0.03) / 1.7};
  const std::vector<double> three{0.24 / 0.6, 0.10 / 0.6, 0.10 / 0.6};
  for (const auto& [order, expected] : {std::pair(3, three), std::pair(5, five)}) {
    SSANN seq = network(members);
    seq.setOrder(order);
    seq.runANN(profiles({1, 2}));
    expectNear(seq.level1Outputs.at(1), expected, "order " + std::to_string(order));
  }
  std::vector<double> out{1.0};
  SSANN::applyVecAverage5({1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0}, out);
  EXPECT_EQ(out, std::vector<double>{1.0});
  SSANN::applyVecAverage5({1, 1, 0}, {0, 0, 0}, {0, 0, 0}, {1, 1, 1}, {0.5, 0.5, 0}, out);
  expectNear(out, {0.5, 0.5, 0.2}, "no confidence");
}

TEST_F(SsannTest, RefusesGapsAndOtherEnsembleSizes) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  SSANN seq = network({{0.5, 0.3, 0.1}, {0.5, 0.3, 0.1}, {0.5, 0.3, 0.1}});
  EXPECT_EXIT(seq.runANN(profiles({1, 2, 4})), testing::ExitedWithCode(0),
              " inp\\.size\\(\\):41 w\\[0\\]\\.size\\(\\):62\n");
  seq.setOrder(4);
  EXPECT_EXIT(seq.runANN(profiles({1, 2})), testing::ExitedWithCode(0),
              " inp\\.size\\(\\):62 w\\[0\\]\\.size\\(\\):0\n");
}

}  // namespace
