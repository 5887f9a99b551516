// Ranking, cuts and filters of the two search passes on small databases.
#include <gtest/gtest.h>

#include "search/search_fixture.h"
#include "support/capture.h"

namespace {

using search_test::DbResidue;
using support::captured;
using Values = std::vector<double>;

/// Query LLXLL searched at 3; type X has neither a BLOSUM row nor a chi1 network.
struct Search : ORBEL {
  Search() { search_test::setQuery(*this, "LLXLL"); }
  /// One source of 5 residues; the centre has box `box` and N shift `shift` (scale 1).
  void add(char code, std::uint32_t box, float shift, float phi = -60.0F, float chi1 = 9999.0F) {
    const std::string source = "f" + std::to_string(db.size() / 5);
    for (int resid = 1; resid <= 5; ++resid) db.push_back({.source = source, .resid = resid, .box = 300});
    DbResidue& centre = db[db.size() - 3];
    centre.code = code;
    centre.box = box;
    centre.shifts[0] = shift;
    centre.phi = phi;
    centre.chi1 = chi1;
  }
  void first() {
    installDatabase(*this, db);
    searchDB(3, matches, sameType);
  }
  void second() {
    installDatabase(*this, db);
    searchDB2(3, matches, sameType);
  }
  std::vector<DbResidue> db;
  CandidateMap matches, sameType;
};

constexpr int centreOf(int fragment) {
  return 5 * fragment + 2;
}

TEST(FirstPass, RanksByDistanceOverScore) {
  Search run;
  run.add('X', 10, 6.0F);  // D = 36
  run.add('K', 11, 3.0F);  // D = 9
  run.add('K', 12, 0.0F);  // score 0: no match
  run.add('K', 13, 1.0F);  // a gap in the numbering
  run.db[18].resid = 9;
  run.add('K', 14, 0.0F);  // missing shifts
  run.db[22].shifts[1] = 0.0F;
  run.searchPrior[3] = {{10, 0.5}, {11, 0.25}, {13, 0.9}, {14, 0.75}};
  run.secondaryShift[3][5] = 9999.0;  // residue 4, HN
  run.first();

  // The lowest visited score is 0, so the list stays keyed by score.
  EXPECT_EQ(run.matches, (CandidateMap{{0.0, 12}, {0.25, 7}, {0.5, 2}, {0.75, 22}}));
  EXPECT_EQ(run.matchDistance[3], (Values{0.0, 0.25, 0.5, 0.75}));

  run.searchPrior[3][12] = 0.125;
  run.matches.clear();
  run.first();
  const double missing = 0.64 * 1.5 * 1.5;  // HN of residue 4 in every fragment
  const CandidateMap expected = {{missing / 30.0 / 0.125, 12},
                                 {(9.0 + missing) / 30.0 / 0.25, 7},
                                 {(36.0 + missing) / 30.0 / 0.5, 2},
                                 {(2.25 + missing) / 30.0 / 0.75, 22}};
  ASSERT_EQ(run.matches.size(), 4U);
  Values phi;
  for (auto a = expected.begin(), b = run.matches.cbegin(); a != expected.end(); ++a, ++b) {
    EXPECT_NEAR(b->first, a->first, 1e-12);
    EXPECT_EQ(b->second, a->second);
    EXPECT_EQ(run.matchIndex[3][static_cast<int>(phi.size()) + 1], b->second);
    phi.push_back(b->first);
  }
  EXPECT_EQ(run.matchDistance[3], phi);
  // The same-type list: type X only, 18 shifts without position weights.
  EXPECT_EQ(run.sameType, (CandidateMap{{0.5, 2}}));
  EXPECT_TRUE(run.sameTypeChi1[3].empty());  // its chi1 is undefined
}

/// 40 fragments with scores lowest, lowest + 0.02 .. and N shifts 41, 40 .. 2; phi numbers them.
void prepareLadder(Search& run, double lowest) {
  for (int i = 0; i < 40; ++i) {
    run.add('X', static_cast<std::uint32_t>(i), static_cast<float>(41 - i), static_cast<float>(i), -60);
    run.searchPrior[3][i] = lowest + 0.02 * i;
  }
}

TEST(FirstPass, KeepsTwentyFiveByDistanceOrScore) {
  const struct {
    double lowest;
    int zeroScore;                        ///< fragment whose score is set to 0
    std::size_t ranked;                   ///< size of the returned list
    double first, last;                   ///< fragments of the best and the 25th match
  } cases[] = {{0.02, -1, 40, 39, 15},    // nearest first
               {-0.29, 14, 25, 39, 15},   // the 25th best score is positive; a score of 0 is not ranked
               {-0.30, 15, 40, 14, 38}};  // it is 0: 2nd to 26th best score, lowest first
  for (const auto& c : cases) {
    Search run;
    prepareLadder(run, c.lowest);
    if (c.zeroScore >= 0) run.searchPrior[3][c.zeroScore] = 0.0;
    run.first();
    EXPECT_EQ(run.matches.size(), c.ranked) << c.lowest;
    ASSERT_EQ(run.matchPhi[3].size(), 25U);
    EXPECT_EQ(run.matchIndex[3].size(), 25U);
    EXPECT_EQ(run.matchPhi[3].front(), c.first) << c.lowest;
    EXPECT_EQ(run.matchPhi[3].back(), c.last) << c.lowest;
    EXPECT_EQ(run.sameType.size(), 40U);  // as pre-screened
    EXPECT_EQ(run.sameTypeChi1[3], Values(20, -60.0));
    EXPECT_EQ(run.sameTypeIndex[3].at(1), centreOf(39));
    EXPECT_EQ(run.sameTypeIndex[3].size(), 20U);
    EXPECT_NEAR(run.sameTypeDistance[3][0], 4.0 / 18.0 / (c.lowest + 0.78), 1e-6);
  }
}

TEST(FirstPass, LowerScoreStaysAmongEqualDistances) {
  Search run;
  for (const std::uint32_t box : {1U, 2U, 3U}) run.add('X', box, 0);
  run.searchPrior[3] = {{1, 0.4}, {2, 0.2}, {3, 0.3}};
  run.first();
  EXPECT_EQ(run.matches, (CandidateMap{{0.0, centreOf(1)}}));
}

TEST(FirstPass, EmptyAndTinyDatabasesAndShortShiftTables) {
  for (const int entries : {0, 1, 4, 5}) {
    Search run;
    run.add('X', 1, 0);
    run.db.resize(static_cast<std::size_t>(entries));
    run.searchPrior[3] = {{1, 0.5}};
    run.secondaryShift.resize(2);  // residues 3.. lie outside and cost 1.5 each
    run.first();
    ASSERT_EQ(run.matches.size(), entries == 5 ? 1U : 0U);
    if (entries == 5) {
      EXPECT_NEAR(run.matches.begin()->first, 6 * 2.25 * (1 + 0.64 + 0.36) / 30.0 / 0.5, 1e-12);
    }
    run.second();
    EXPECT_EQ(run.matchPhi[3].size(), run.matches.size());
  }
}

TEST(SecondPass, FiltersByPredictedNeighbours) {
  const auto search = [](int neighbourCount, double psi, const CandidateMap& matches) {
    Search run;
    for (int i = 0; i < 4; ++i) run.add('X', 1, 0, static_cast<float>(i), 60.0F);
    run.db[1].phi = 20.0F;     // fragment 0, residue 2: exactly 80 from -60
    run.db[6].phi = 20.5F;     // fragment 1: beyond
    run.db[11].phi = -141.0F;  // fragment 2: 81 below
    run.db[16].psi = 9999.0F;  // fragment 3: undefined
    run.predCount = {{2, neighbourCount}, {3, 9}};
    run.predPhi = {{2, -60.0}, {3, 170.0}};  // that of 3 is below the count: no condition
    run.predPsi[2] = psi;
    run.matches = matches;
    run.second();
    return run.matchPhi[3];
  };
  const CandidateMap byDistance = {{0.1, 2}, {0.2, 7}, {0.3, 12}, {0.4, 17}};
  EXPECT_EQ(search(10, -40.0, byDistance), (Values{0}));
  EXPECT_EQ(search(9, -40.0, byDistance), (Values{0, 1, 2, 3}));
  EXPECT_EQ(search(10, 9999.0, byDistance), Values());
  // A lowest key of 0 marks a list keyed by score, which is not filtered.
  EXPECT_EQ(search(10, -40.0, {{0.0, 2}, {0.2, 7}, {0.3, 12}}), (Values{0, 1, 2}));
}

TEST(SecondPass, KeepsConfidentResiduesAndCutsTheOthers) {
  Search run;
  prepareLadder(run, 0.02);
  for (int i = 0; i < 40; ++i) run.matches[0.5 - 0.01 * i] = centreOf(i);
  run.matchPhi[3] = {77.0};
  run.predCount[3] = 10;
  run.second();
  EXPECT_EQ(run.matchPhi[3], (Values{77.0}));
  run.predCount[3] = 9;
  run.second();
  ASSERT_EQ(run.matchPhi[3].size(), 25U);
  EXPECT_EQ(run.matchPhi[3].front(), 39.0);
}

TEST(SecondPass, RotamerScoresOfTheWorstPrescreened) {
  // 130 same-type fragments: g-, g+, t in turn, every 5th without chi1; keys 1, 2 .. 130.
  Search run;
  for (int i = 0; i < 130; ++i) {
    const float chi1 = i % 5 == 4 ? 9999.0F : i % 3 == 0 ? -60.0F : i % 3 == 1 ? 60.0F : 180.0F;
    run.add('X', 1, 0, i == 0 ? -110.5F : -60.0F, chi1);
    run.sameType[i + 1.0] = centreOf(i);
  }
  run.predCount[3] = 10;  // the residue's own prediction filters too: fragment 0 falls out
  run.predPhi[3] = -60.0;
  run.predPsi[3] = -90.0;  // exactly 50 from the fragments' -40
  run.second();
  ASSERT_EQ(run.sameType.size(), 101U);
  EXPECT_EQ(run.sameType.begin()->first, 2.0);
  EXPECT_EQ(run.sameType.rbegin()->first, 102.0);
  const auto& scores = run.chi1RotamerScores[3];
  EXPECT_EQ(scores.at("g+"), (Values{2, 8, 11, 14, 17, 23, 26, 29, 32, 38}));
  EXPECT_EQ(scores.at("g-"), (Values{4, 7, 13, 16, 19, 22, 28, 31, 34, 37}));
  EXPECT_EQ(scores.at("t"), (Values{3, 6, 9, 12, 18, 21, 24, 27, 33, 36}));
  EXPECT_EQ(scores.at("na"), (Values{5, 10, 15, 20, 25, 30, 35}));  // all full at 38: none at 40
  EXPECT_EQ(run.sameTypeChi1[3].size(), 81U);  // no limit here; without the 20 undefined ones
  EXPECT_EQ(run.sameTypeDistance[3].front(), 2.0);
}

TEST(SearchReport, VerboseLines) {
  Search run;
  run.add('X', 10, 3.0F, -60.5F, 55.0F);
  run.db[1].resid = 2;
  run.quiet = false;
  run.searchPrior[3] = {{10, 0.5}};
  EXPECT_EQ(captured([&] { run.first(); }).out,
            " 2          1  -60.500  -40.000     0.600     0.500  L2   X3   L4   f0\n");
  EXPECT_EQ(captured([&] { run.second(); }).out,
            " checking 1 preliminary fragments\n"
            " 2          1  -60.500  -40.000     0.600     0.600  L2   X3   L4   f0 r2\n"
            " cluster-specific statistics for 1 chi1 prediction: \n"
            "  0 \tbest matched fragments with g- 0 +/- 0\n"
            "  1 \tbest matched fragments with g+ 0.5 +/- 0\n"
            "  0 \tbest matched fragments with t  0 +/- 0\n");
}

}  // namespace
