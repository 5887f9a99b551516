// Phi/psi box network: complete windows only, plain mean, mean fill, absent residues of the one-level run.
#include "ann/SURFANN.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ann/weight_files.h"

namespace {

using support::constants;
using support::expectNear;
using support::identity;
using support::picking;

/// Two boxes: the first follows the centre residue, the second tells the members apart (0.1, 0.2, 0.6).
std::vector<support::MemberRows> twoBoxes() {
  std::vector<support::MemberRows> members;
  for (const double constant : {0.1, 0.2, 0.6}) {
    members.push_back(picking(1, {0, 0}, {0.0, constant}));
    members.back()[1][0] = 0.0;
  }
  return members;
}

class SurfannTest : public testing::Test {
 protected:
  SURFANN network() const {
    support::writeLevel((dir / "surf.level1").string(), identity(5), picking(5, {2}, {0.0}), twoBoxes());
    // Level 2 reads the first box of the residue two after the centre.
    support::writeLevel((dir / "surf.level2").string(), identity(10), picking(10, {8}, {0.0}), twoBoxes());
    return SURFANN(5, 1, 2, 10, 1, 2, dir.path.string(), "surf");
  }
  support::TempDir dir;
};

TEST_F(SurfannTest, TwoLevelsKeepTheMeanWhereTheWindowIsIncomplete) {
  SURFANN surf = network();
  EXPECT_EQ(surf.inputCode, 5);
  ResidueVectors input;
  for (const int k : {1, 2, 3, 4, 5, 6, 8, 9}) input[k] = {0.1 * k};
  surf.runANN(input);

  const auto twice = [](double x) { return std::tanh(std::tanh(x)); };
  // Complete windows: 3 and 4. Residues 5 and 6 lie beside the gap, 2 and 8 have no second neighbour.
  ASSERT_EQ(surf.level2Inputs.size(), 2U);
  const double mean = (twice(0.3) + twice(0.4)) / 2.0;
  for (const int k : {1, 2, 5, 6, 8, 9}) expectNear(surf.level2Outputs.at(k), {mean, 0.3}, std::to_string(k));
  expectNear(surf.level1Outputs.at(4), {twice(0.4), 0.3}, "level 1");
  expectNear(surf.level2Outputs.at(3), {twice(mean), 0.3}, "reads residue 5");
  EXPECT_EQ(surf.level2Inputs.at(3).size(), 10U);
}

TEST_F(SurfannTest, WithoutAnyWindowTheResultIsZero) {
  for (const ResidueVectors& input : {ResidueVectors{{1, {0.5}}, {2, {0.5}}, {3, {0.5}}, {4, {0.5}}}, {}}) {
    SURFANN surf = network();
    surf.runANN(input);
    ASSERT_EQ(surf.level2Outputs.size(), input.size());
    for (const auto& entry : surf.level2Outputs) EXPECT_EQ(entry.second, (std::vector<double>{0.0, 0.0}));
  }
}

TEST_F(SurfannTest, OneLevelPredictsNextToTheEndsThroughAbsentResidues) {
  // Level-2 files do not exist; the hybrid network must not need them.
  support::writeLevel((dir / "hyb.level1").string(), constants(160, std::vector<double>(160, 0.0)),
                      constants(160, {0.5}), twoBoxes());
  SURFANN network(160, 1, 2, 10, 1, 2, dir.path.string(), "hyb");
  network.setHybrid(1);
  ResidueVectors input;
  for (int k = 1; k <= 5; ++k) input[k] = std::vector<double>(32, 0.01 * k);
  input[7] = std::vector<double>(32, 0.07);
  network.runHybridANN(input);

  std::vector<double> absent(20, 0.0);
  for (int pair = 0; pair < 6; ++pair) absent.insert(absent.end(), {0.0, 1.0});
  ASSERT_EQ(network.level1Outputs.size(), 2U);  // 2 and 3; the gap takes 4 and 5
  const std::vector<double>& window = network.level1Inputs.at(2);
  ASSERT_EQ(window.size(), 160U);
  EXPECT_EQ(std::vector<double>(window.begin(), window.begin() + 32), absent);
  EXPECT_EQ(window[32], 0.01);
  EXPECT_EQ(window[159], 0.04);
  expectNear(network.level1Outputs.at(3), {std::tanh(0.5), 0.3}, "output");
  EXPECT_TRUE(network.level2Outputs.empty());
}

TEST(SurfannMean, NothingForUnequalOrEmptyVectors) {
  std::vector<double> out;
  SURFANN::applyVecAverage({1.0, 2.0}, {4.0, 2.0}, {1.0, 5.0}, out);
  EXPECT_EQ(out, (std::vector<double>{2.0, 3.0}));
  for (const auto& c : {std::vector<double>{1.0}, std::vector<double>{}}) {
    std::vector<double> none;
    SURFANN::applyVecAverage(c, {}, {}, none);
    EXPECT_TRUE(none.empty());
  }
}

}  // namespace
