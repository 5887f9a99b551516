// Reliability class of a prediction.
#include "search/class_rule.h"

#include <gtest/gtest.h>

#include "search/search_fixture.h"

namespace {

using Values = std::vector<double>;
using Reference = std::optional<ReferenceTorsions>;

/// Residues 1 to 20; residue 10 with the matches and count given.
void prepare(ORBEL& run, const Values& phi, const Values& psi, int count, double rci = 0.103) {
  search_test::setQuery(run, "LLLLLLLLLLLLLLLLLLLL");
  run.matchPhi[10] = phi;
  run.matchPsi[10] = psi;
  run.matchDistance[10] = {0.5, 1.5};
  run.predCount[10] = count;
  run.rciValue[10] = rci;
}

const Values kTight = {-62, -58};
const Values kWide = {-90, -30};  // spread 42.4
const Values kPsi = {-42, -38};

TEST(ClassRule, CountSpreadAndDynamics) {
  const struct {
    const char* what;
    int count;
    Values phi, psi;
    double rci;
    const char* name;
  } cases[] = {{"all matches", 25, kTight, kPsi, 0.103, "Strong"},
               {"top count", 10, kTight, kPsi, 0.103, "Generous"},
               {"between", 24, kTight, kPsi, 0.103, "Warn"},
               {"few", 9, kTight, kPsi, 0.103, "Warn"},
               {"wide phi", 25, kWide, kPsi, 0.103, "Warn"},
               {"wide psi", 10, kTight, kWide, 0.103, "Warn"},
               {"flexible", 25, kTight, kPsi, 0.5, "Dyn"},
               {"flexible without consensus", 3, kTight, kPsi, 0.5, "Dyn"},
               {"just flexible", 25, kTight, kPsi, 0.4031, "Dyn"},
               {"just rigid", 25, kTight, kPsi, 0.4029, "Strong"},
               {"undefined order parameter", 25, kTight, kPsi, 9999.0, "Strong"}};
  for (const auto& c : cases) {
    ORBEL run;
    prepare(run, c.phi, c.psi, c.count, c.rci);
    const TorsionPrediction row = classifyResidue(run, 10, {});
    EXPECT_EQ(row.className, c.name) << c.what;
    EXPECT_EQ(row.count, c.count) << c.what;
    EXPECT_NEAR(row.s2, c.rci > 999 ? 0.0 : 1.003 - c.rci, 1e-12) << c.what;
    EXPECT_DOUBLE_EQ(row.phi, -60.0) << c.what;
    EXPECT_DOUBLE_EQ(row.distance, 1.0) << c.what;
  }
  ORBEL run;
  prepare(run, kTight, kPsi, 25);
  run.s2Cutoff = 0.103 - 0.003;  // exactly at the cutoff
  run.topCount = 25;
  EXPECT_EQ(classifyResidue(run, 10, {}).className, "Strong");
}

TEST(ClassRule, NoPredictionAtEndsAndWithoutMatches) {
  const struct {
    const char* what;
    int firstOption, firstShift, lastOption, lastShift;
    bool matches;
    int count;
  } cases[] = {{"range cut at its start", 10, 1, 20, 20, true, 0},
               {"range cut at its end", 1, 1, 10, 20, true, 0},
               {"first residue with shifts", 10, 10, 20, 20, true, 25},
               {"last residue with shifts", 1, 1, 10, 10, true, 25},
               {"no matches", 1, 1, 20, 20, false, 0}};
  for (const auto& c : cases) {
    ORBEL run;
    prepare(run, kTight, kPsi, 25, 0.9);
    run.firstResidOption = c.firstOption;
    run.shiftFirstResid = c.firstShift;
    run.lastResidOption = c.lastOption;
    run.shiftLastResid = c.lastShift;
    if (!c.matches) run.matchPhi[10] = run.matchPsi[10] = {};
    const TorsionPrediction row = classifyResidue(run, 10, {});
    EXPECT_EQ(row.className, "None") << c.what;
    EXPECT_EQ(row.count, c.count) << c.what;
    EXPECT_EQ(row.phi, 9999.0) << c.what;
    EXPECT_EQ(row.dpsi + row.distance + row.s2, 0.0) << c.what;
  }
}

TEST(ClassRule, DeviationFromTheReference) {
  constexpr int kDense = 18 * 6 + 7;
  constexpr int kSparse = 18 * 9 + 9;
  const struct {
    float phi, psi;
    int box, count;
    double rci;
    const char* name;
  } cases[] = {{-60, 19, kDense, 25, 0.1, "Strong"}, {-60, 20, kDense, 25, 0.1, "Bad"},
               {-24, 8, kDense, 10, 0.1, "Bad"},     {-60, 39, kSparse, 10, 0.1, "Generous"},
               {-60, 40, kSparse, 10, 0.1, "Bad"},   {120, 150, 0, 25, 0.1, "Strong"},
               {120, 150, kDense, 9, 0.1, "Warn"},   {120, 150, kDense, 25, 0.6, "Dyn"},
               {9999, -40, kDense, 25, 0.1, "Bad"}};
  for (const auto& c : cases) {
    ORBEL run;
    prepare(run, kTight, kPsi, c.count, c.rci);
    const Reference reference = ReferenceTorsions{c.phi, c.psi, c.box};
    EXPECT_EQ(classifyResidue(run, 10, reference).className, c.name) << c.phi << ' ' << c.psi << ' ' << c.box;
  }
  // Across +-180: 170 and -170 are 20 apart.
  ORBEL run;
  prepare(run, kTight, {169, 171}, 25);
  const Reference near = ReferenceTorsions{-60, -170, kDense};
  EXPECT_EQ(classifyResidue(run, 10, near).className, "Strong");
}

}  // namespace
