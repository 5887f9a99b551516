// Completeness gate and consensus of the matches.
#include <gtest/gtest.h>

#include <limits>

#include "search/search_fixture.h"

namespace {

using Values = std::vector<double>;

TEST(CompletenessGate, AllowancesAndNeighbours) {
  const struct {
    const char* codes;  ///< of residues 9, 10, 11
    std::array<int, 3> missing;
    bool noProton, complete;
  } cases[] = {
      {"LLL", {3, 3, 3}, false, true},  {"LLL", {4, 3, 3}, false, true},  {"LLL", {3, 4, 3}, false, true},
      {"LLL", {4, 3, 4}, false, false}, {"LLL", {6, 6, 0}, false, false}, {"PLP", {4, 4, 4}, false, true},
      {"PLP", {5, 0, 5}, false, false}, {"GGL", {4, 4, 0}, false, false}, {"GGL", {4, 4, 0}, true, true},
      {"GGL", {5, 5, 0}, true, false},  {"GLL", {4, 3, 4}, true, true},   {"LPL", {4, 4, 3}, true, true}};
  for (const auto& c : cases) {
    ORBEL run;
    run.shiftFirstResid = 9;
    run.shiftLastResid = 11;
    run.noProton = c.noProton;
    for (int i = 0; i < 3; ++i) {
      run.sequence[9 + i] = std::string(1, c.codes[i]);
      run.missingCount[9 + i] = c.missing[static_cast<std::size_t>(i)];
    }
    EXPECT_EQ(run.checkCSCompleteness(10), c.complete)
        << c.codes << ' ' << testing::PrintToString(c.missing) << ' ' << c.noProton;
    EXPECT_FALSE(run.checkCSCompleteness(9));  // the ends of the shift range never pass
    EXPECT_FALSE(run.checkCSCompleteness(11));
    EXPECT_EQ(run.missingCount.size(), 3U);
  }
}

constexpr int kHelix = 18 * 6 + 7;  // box of -60, -40

/// Cluster 1: the helix box; cluster 2: the box of -120, 120.
ClusterData twoClusters() {
  ClusterData clusters;
  clusters.clusterCount = 2;
  clusters.boxCluster[kHelix] = 1;
  clusters.boxCluster[18 * 3 + 15] = 2;
  return clusters;
}

int classify(Values& phi, Values& psi, Values& flags, const ClusterData& clusters, int topCount = 10) {
  ORBEL run;
  run.topCount = topCount;
  int count = -1;
  run.classifyMatchCluster(phi, psi, count, flags, clusters);
  return count;
}

TEST(Consensus, ClustersTiesAndMatchesNearby) {
  const ClusterData clusters = twoClusters(), none;
  ClusterData edge;
  edge.clusterCount = 1;
  edge.boxCluster[18 * 17 + 17] = 1;
  const struct {
    const char* name;
    const ClusterData& clusters;
    Values phi, psi, flags, kept;  ///< kept: phi of the consensus
  } cases[] = {
      {"2 helix, 1 sheet, 1 far from both",
       clusters,
       {-60, -120, 60, -55},
       {-40, 120, 60, -35},
       {1, 0, 0, 1},
       {-60, -55}},
      {"a tie goes to the higher number", clusters, {-60, -120}, {-40, 120}, {0, 1}, {-120}},
      {"unclustered matches are the most", clusters, {-60, 60, 61}, {-40, 60, 61}, {0, 1, 1}, {60, 61}},
      {"unclustered matches lose a tie", clusters, {60, -60}, {60, -40}, {0, 1}, {-60}},
      {"no matches", clusters, {}, {}, {}, {}},
      {"no cluster record", none, {-60, 60}, {-40, 60}, {1, 1}, {-60, 60}},
      // -100,-80 is exactly 40 degrees from the helix match in both angles and joins; -140,-80 follows
      // through it; the first match stands before its anchor and cannot use a later joining one.
      {"joined through another",
       clusters,
       {-139, -60, -100, -140, 60},
       {-80, -40, -80, -80, 60},
       {0, 1, 1, 1, 0},
       {-60, -100, -140}},
      {"direct members first, joined ones behind them",
       clusters,
       {-90, -60, -55},
       {-40, -40, -35},
       {1, 1, 1},
       {-60, -55, -90}},
      {"just beyond 40 degrees", clusters, {-60, -100.5}, {-40, -40}, {1, 0}, {-60}},
      {"across +-180", edge, {175, -170}, {175, -175}, {1, 1}, {175, -170}},
      {"the first anchor in rank order decides",
       clusters,
       {-120, -75, -60, -90},
       {120, 99, -40, 110},
       {1, 0, 0, 1},
       {-120, -90}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Values phi = c.phi, psi = c.psi, flags;
    const int count = classify(phi, psi, flags, c.clusters);
    EXPECT_EQ(flags, c.flags);
    EXPECT_EQ(phi.size(), psi.size());
    EXPECT_EQ(phi, c.kept);
    EXPECT_EQ(count, static_cast<int>(c.kept.size()));
  }
  // Undefined and damaged angles: box arithmetic as for any number, no join, no overrun.
  Values phi = {-60, 9999, -1e30, std::numeric_limits<double>::quiet_NaN(), -200},
         psi = {-40, -40, 0, 0, -200}, flags;
  classify(phi, psi, flags, clusters);
  EXPECT_EQ(flags, (Values{0, 1, 1, 1, 1}));
}

TEST(Consensus, CountFromTheFirstMember) {
  const auto count = [](const std::string& pattern, int topCount) {
    Values phi, psi;
    for (const char c : pattern) {
      phi.push_back(c == 'x' ? -60 : c == '-' ? 60 : -120);
      psi.push_back(c == 'x' ? -40 : c == '-' ? 60 : 120);
    }
    Values flags;
    return classify(phi, psi, flags, twoClusters(), topCount);
  };
  const std::string x(25, 'x');
  EXPECT_EQ(count(x, 10), 25);
  EXPECT_EQ(count(x.substr(0, 24), 10), 10);
  EXPECT_EQ(count("-" + x.substr(0, 24), 10), 10);         // the run starts behind a leading 0
  EXPECT_EQ(count("----" + x.substr(0, 10), 10), 10);      // 10 in a row, 6 of them among the first 10
  EXPECT_EQ(count("----" + x.substr(0, 9) + "-", 10), 6);  // 9 in a row
  EXPECT_EQ(count(x.substr(0, 9) + "-" + x.substr(0, 15), 10), 9);  // the run is the first one
  EXPECT_EQ(count("xx-x", 10), 3);
  EXPECT_EQ(count(x, 30), 25);
  EXPECT_EQ(count(x.substr(0, 24), 30), 24);
  EXPECT_EQ(count("xx-xx", 2), 2);
}

}  // namespace
