// Chi1 networks: the input of a fragment, scoring and re-keying of candidates.
#include <gtest/gtest.h>

#include <cmath>

#include "ann/CHI1ANN.h"
#include "ann/weight_files.h"
#include "search/search_fixture.h"

namespace {

using support::picking;

/// Five entries with the chi1 given, shifts 10 x entry + atom, scale 2 but 0 for CB; query 7..9 of type V.
class Chi1Test : public testing::Test {
 protected:
  Chi1Test() {
    std::vector<search_test::DbResidue> entries;
    for (const float chi1 : {60.0F, -60.0F, 180.0F, 9999.0F, -60.0F, 30.0F}) {
      search_test::DbResidue& entry = entries.emplace_back();
      entry.phi = -90.0F;
      entry.psi = 150.0F;
      entry.chi1 = chi1;
      for (std::size_t a = 0; a < 6; ++a) {
        entry.shifts[2 * a] = static_cast<float>(10 * (entries.size() - 1) + a);
        entry.shifts[2 * a + 1] = a == 4 ? 0.0F : 2.0F;
      }
    }
    search_test::installDatabase(run, entries);
    run.firstResidOption = 7;
    run.lastResidOption = 9;
    run.secondaryShift = {{1, 2, 3, 4, 5, 6}, {0, 999, 9999, 0, 0, 0.5}, {1, 1, 1, 1, 1, 1}};
    run.sequence = {{7, "A"}, {8, "V"}, {9, "c"}};
  }
  /// Score = tanh tanh sin(chi1) of the centre, which is input 17.
  void makeNetwork(char code) {
    const std::string name = std::string("chi1_") + code;
    support::writeLevel((dir / (name + ".level1")).string(), support::identity(39), picking(39, {17}, {0.0}),
                        std::vector<support::MemberRows>(3, picking(1, {0}, {0.0})));
    run.chi1Networks[code] = std::make_unique<CHI1ANN>(39, 1, 1, dir.path.string(), name);
  }
  support::TempDir dir;
  ORBEL run;
};

TEST_F(Chi1Test, InputOfAFragmentAndMissingValues) {
  const std::vector<double> input = run.chi1NetworkInput(8, 2);
  ASSERT_EQ(input.size(), 39U);
  const double half = 0.5;
  const double root = std::sqrt(3.0) / 2.0;
  support::expectNear(
      input, {-1, 0, half, -root, -root, half, 0, 4.5,  4.5, 4.5,  4.5,  1.5, 4.5,    // entry 1, residue 7
              -1, 0, half, -root, 0,     -1,   0, 10,   1.5, 1.5,  11.5, 1.5, 12.25,  // entry 2, residue 8
              -1, 0, half, -root, 0,     0,    1, 14.5, 15,  15.5, 16,   1.5, 17},    // entry 3, residue 9
      "fragment");
  // The neighbour outside the range is charged 1.5 for each shift.
  const std::vector<double> edge = run.chi1NetworkInput(7, 2);
  for (std::size_t k = 7; k < 13; ++k) EXPECT_EQ(edge[k], 1.5);
  EXPECT_EQ(edge[20], 9.5);
  const std::vector<double> last = run.chi1NetworkInput(9, 2);
  for (std::size_t k = 33; k < 39; ++k) EXPECT_EQ(last[k], 1.5);
}

TEST_F(Chi1Test, CandidatesAreKeyedByTheirScore) {
  makeNetwork('V');
  // Entries 1 and 4 score the same: the later one stays. 0 and 5 have no neighbour on one side.
  CandidateMap fragments{{0.1, 0}, {0.2, 1}, {0.3, 2}, {0.4, 4}, {0.5, 5}, {0.6, 2330111}, {0.7, -3}};
  run.evalChi1WithANN(8, fragments);
  ASSERT_EQ(fragments.size(), 2U);
  EXPECT_EQ(fragments.begin()->second, 4);
  EXPECT_NEAR(fragments.begin()->first, std::tanh(std::tanh(-std::sqrt(3.0) / 2.0)), 1e-6);
  EXPECT_EQ(fragments.begin()->first, static_cast<double>(static_cast<float>(fragments.begin()->first)));
  EXPECT_EQ(fragments.rbegin()->second, 2);
}

TEST_F(Chi1Test, TypesWithoutANetworkAndOxidisedCysteine) {
  const CandidateMap before{{0.25, 2}, {0.5, 4}};
  CandidateMap fragments = before;
  run.evalChi1WithANN(7, fragments);   // alanine
  run.evalChi1WithANN(99, fragments);  // not in the sequence
  run.evalChi1WithANN(8, fragments);   // key without a network
  EXPECT_EQ(fragments, before);
  makeNetwork('C');
  run.evalChi1WithANN(9, fragments);
  EXPECT_NEAR(fragments.begin()->first, std::tanh(std::tanh(-std::sqrt(3.0) / 2.0)), 1e-6);
}

}  // namespace
