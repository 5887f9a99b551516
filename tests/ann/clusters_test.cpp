// Clustering of box distributions and the prior of the boxes.
#include <gtest/gtest.h>

#include "base/box_prior.h"
#include "driver/ORBEL.h"

namespace {

using Boxes = std::vector<std::pair<int, double>>;

ClusterData clusterBoxes(const Boxes& boxes) {
  std::vector<double> values(324, 0.0);
  for (const auto& [box, value] : boxes) values[static_cast<std::size_t>(box)] = value;
  ClusterData record;
  EXPECT_EQ(ORBEL::getClusterInfo(values, record), record.clusterCount);
  return record;
}

std::vector<int> members(const ClusterData& record, std::size_t cluster) {
  const auto& list = record.clusterMembers[cluster];
  return list.empty() ? list : std::vector<int>(list.begin() + 1, list.end());
}

TEST(BoxClusters, SeedNeighboursNeededAndMemberOrder) {
  // Six boxes in a row of psi, 40 apart from another six: two clusters led by their highest boxes.
  Boxes two;
  for (int k = 0; k < 6; ++k) two.emplace_back(2 * 18 + k, 0.5 + 0.01 * k);
  for (int k = 0; k < 6; ++k) two.emplace_back(11 * 18 + 8 + k, 0.9 - 0.01 * k);
  const ClusterData record = clusterBoxes(two);
  EXPECT_EQ(record.clusterCount, 2);
  EXPECT_EQ(record.peakCount, 12);
  EXPECT_EQ(record.peakBox[1], 206);
  EXPECT_EQ(record.peakValue[12], 0.5);
  EXPECT_EQ(members(record, 1), (std::vector<int>{206, 207, 208, 209, 210, 211}));
  EXPECT_EQ(members(record, 2), (std::vector<int>{41, 40, 39, 38, 37, 36}));
  EXPECT_EQ(record.seed(2), 41);
  EXPECT_EQ(record.clusterSize[2], 6);
  EXPECT_NEAR(record.clusterValue[1], 5.25, 1e-12);
  EXPECT_EQ(record.boxCluster[38], 2);
  EXPECT_EQ(record.boxCluster[0], 0);
  EXPECT_NEAR(record.mean, (3.15 + 5.25) / 324, 1e-12);

  two.erase(two.begin());  // five boxes: each has but four neighbours
  EXPECT_EQ(clusterBoxes(two).clusterCount, 1);
}

TEST(BoxClusters, DistancesWrapOnBothAxes) {
  const struct {
    const char* name;
    std::vector<int> boxes;
    int clusters;
  } cases[] = {{"corners", {0, 17, 306, 323, 1, 18}, 1},
               {"phi edge", {5, 23, 41, 311, 293, 275}, 1},
               {"psi edge", {90, 91, 92, 107, 106, 105}, 1},
               {"six apart", {0, 1, 2, 3, 4, 6}, 1},
               {"seven apart", {0, 1, 2, 3, 4, 7}, 1},  // the middle boxes still see all others
               {"diagonal 36 + 1", {0, 1, 2, 18, 19, 6 * 18 + 8}, 0}};
  for (const auto& c : cases) {
    Boxes boxes;
    double value = 0.9;
    for (const int box : c.boxes) boxes.emplace_back(box, value -= 0.01);
    EXPECT_EQ(clusterBoxes(boxes).clusterCount, c.clusters) << c.name;
  }
}

TEST(BoxClusters, DissolvedClusterFreesItsBoxes) {
  // The first seed takes boxes 0..6. Box 7 has six neighbours, all of them taken, so that it stands alone.
  Boxes boxes;
  for (int k = 1; k <= 6; ++k) boxes.emplace_back(k, 0.5);
  boxes.emplace_back(0, 0.9);
  boxes.emplace_back(7, 0.8);
  const ClusterData record = clusterBoxes(boxes);
  EXPECT_EQ(record.clusterCount, 1);
  EXPECT_EQ(record.boxCluster[7], 0);
  EXPECT_EQ(record.clusterSize[1], 7);
  EXPECT_EQ(record.clusterSize[2], 0);
  EXPECT_EQ(record.clusterValue[2], 0.0);
}

TEST(BoxClusters, FlatAndUnusableDistributions) {
  const ClusterData zeros = clusterBoxes({});
  EXPECT_EQ(zeros.clusterCount, 0);
  EXPECT_EQ(zeros.peakCount, 324);  // every pick is box 0 at the threshold 0
  EXPECT_EQ(zeros.boxCluster[0], 0);

  ClusterData record;
  record.clusterCount = 7;
  std::vector<double> wrong(10, 1.0);
  EXPECT_EQ(ORBEL::getClusterInfo(wrong, record), 0);
  EXPECT_EQ(record.clusterCount, 0);
}

TEST(BoxPrior, DensityWeightsAndSparseBoxes) {
  int dense = 0;
  double sum = 0.0;
  for (int box = 0; box < kPhiPsiBoxes; ++box) {
    dense += isSparseBox(box) ? 0 : 1;
    sum += D324[static_cast<std::size_t>(box)];
    EXPECT_GE(boxWeight(box), 0.03);
  }
  EXPECT_EQ(dense, 37);
  EXPECT_NEAR(sum, 6.25998, 1e-9);
  EXPECT_EQ(D324[5 * 18 + 7], 0.29894);  // alpha helix, phi -80, psi -40
  EXPECT_NEAR(boxWeight(5 * 18 + 7), 0.546754, 1e-6);
  EXPECT_EQ(boxWeight(9 * 18), 0.03);
  EXPECT_TRUE(isSparseBox(11 * 18 + 10));  // left-handed helix
}

}  // namespace
