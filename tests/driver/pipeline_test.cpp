// Search prior, source index and reference-table look-ups.
#include <gtest/gtest.h>

#include <cmath>

#include "base/maps.h"
#include "driver/ORBEL.h"
#include "support/process.h"

namespace {

/// One or two clusters: boxes 0..4 with seed `seed`, and 10..14; values as given.
ClusterData clusters(int count, int seed) {
  ClusterData data;
  data.clusterCount = count;
  data.mean = 0.1;
  data.standardDeviation = 0.2;
  data.clusterMembers[1] = {0, seed};
  data.boxCluster[1] = 1;
  data.boxCluster[2] = 1;
  data.values[1] = 0.99;
  data.values[2] = 0.2;  // z = 0.5
  data.values[3] = 0.9;  // in no cluster
  return data;
}

TEST(SearchPrior, WeightsPenaltiesAndAmbiguity) {
  ORBEL run;
  const auto add = [&run](int resid, const ClusterData& data, double share) {
    run.clusterInfo[resid] = data;
    run.phiPsiBoxProb[resid] = std::vector<double>(324, 0.0);
    run.topClusterFraction[resid] = share;
  };
  const int leftHanded = 9 * 18 + 7;  // phi box 9, psi box 7: the stricter cut
  add(1, clusters(1, 1), 0.1);
  add(2, clusters(2, 1), 0.61);
  add(3, clusters(2, 1), 0.59);
  add(4, clusters(2, leftHanded), 0.64);
  add(5, clusters(2, leftHanded - 1), 0.64);
  add(8, clusters(2, 9 * 18 + 15), 0.64);  // the last psi box of the stricter cut, and the one behind it
  add(9, clusters(2, 9 * 18 + 16), 0.64);
  add(6, clusters(2, 1), std::nan(""));
  ClusterData flat = clusters(0, 1);
  flat.mean = 0.0;
  add(7, flat, 0.0);
  run.buildSearchPrior();
  EXPECT_TRUE(run.reportClipping);
  for (const int resid : {1, 2, 5, 6, 9}) {
    const auto& prior = run.searchPrior.at(resid);
    ASSERT_EQ(prior.size(), 324U) << resid;
    EXPECT_DOUBLE_EQ(prior.at(1), 0.98);
    EXPECT_DOUBLE_EQ(prior.at(2), -9.99);
    EXPECT_DOUBLE_EQ(prior.at(3), -9.99);
  }
  EXPECT_TRUE(run.searchPrior.at(3).empty());
  EXPECT_TRUE(run.searchPrior.at(4).empty());
  EXPECT_TRUE(run.searchPrior.at(8).empty());
  EXPECT_DOUBLE_EQ(run.searchPrior.at(7).at(3), 0.0);
}

TEST(SourceIndex, EntersEverySourceAlsoTheLast) {
  const support::TempDir dir;
  struct Case {
    std::string sources;
    std::vector<std::pair<int, int>> ranges;
  };
  for (const Case& c : {Case{"aabbb", {{0, 1}, {2, 4}}}, Case{"a", {{0, 0}}}, Case{"", {}},
                        Case{"aba", {{0, 0}, {1, 1}, {2, 2}}}}) {
    std::string records;
    for (const char source : c.sources)
      records += source + std::string(" A 1 -60 -40 9999 132 0 0 0 0 0 0 0 0 0 0 0 0\n");
    support::writeFile(dir / "db.tab", records);
    ORBEL run;
    run.databaseFile = (dir / "db.tab").string();
    run.loadDatabase();
    run.buildSourceIndex();
    ASSERT_EQ(run.sourceCount, static_cast<int>(c.ranges.size()) + 1) << c.sources;
    EXPECT_EQ(run.sourceEnd.at(0), -1);
    for (int i = 1; i < run.sourceCount; ++i) {
      EXPECT_EQ(run.sourceStart.at(i), c.ranges[static_cast<std::size_t>(i - 1)].first);
      EXPECT_EQ(run.sourceEnd.at(i), c.ranges[static_cast<std::size_t>(i - 1)].second);
    }
  }
}

}  // namespace
