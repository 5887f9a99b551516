// Reliability class of a prediction.
#include "search/class_rule.h"

#include <gtest/gtest.h>

namespace {

using Values = std::vector<double>;
using Reference = std::optional<ReferenceTorsions>;

/// Residue 10 of 1 to 20 with the matches and count given.
ClassInput residue10(const Values& phi, const Values& psi, int count, double flexibility = 0.103) {
  return {10, {1, 20, 1, 20}, phi, psi, {0.5, 1.5}, count, flexibility, 10, 0.4};
}

const Values kTight = {-62, -58};
const Values kWide = {-88.5, -31.5};        // spread 40.3
const Values kNearlyWide = {-88.2, -31.8};  // spread 39.9
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
               {"nearly wide", 25, kNearlyWide, kPsi, 0.103, "Strong"},
               {"flexible", 25, kTight, kPsi, 0.5, "Dyn"},
               {"flexible without consensus", 3, kTight, kPsi, 0.5, "Dyn"},
               {"just flexible", 25, kTight, kPsi, 0.4031, "Dyn"},
               {"just rigid", 25, kTight, kPsi, 0.4029, "Strong"},
               {"undefined order parameter", 25, kTight, kPsi, 9999.0, "Strong"}};
  for (const auto& c : cases) {
    const TorsionPrediction row = classifyResidue(residue10(c.phi, c.psi, c.count, c.rci), {});
    EXPECT_EQ(row.className, c.name) << c.what;
    EXPECT_EQ(row.count, c.count) << c.what;
    EXPECT_NEAR(row.s2, c.rci > 999 ? 0.0 : 1.003 - c.rci, 1e-12) << c.what;
    EXPECT_DOUBLE_EQ(row.phi, -60.0) << c.what;
    EXPECT_DOUBLE_EQ(row.distance, 1.0) << c.what;
  }
  ClassInput input = residue10(kTight, kPsi, 25);
  input.s2Cutoff = 0.103 - 0.003;  // exactly at the cutoff
  input.topCount = 25;
  EXPECT_EQ(classifyResidue(input, {}).className, "Strong");
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
    ClassInput input = residue10(kTight, kPsi, 25, 0.9);
    input.span = {c.firstOption, c.lastOption, c.firstShift, c.lastShift};
    if (!c.matches) input.phi = input.psi = {};
    const TorsionPrediction row = classifyResidue(input, {});
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
    const Reference reference = ReferenceTorsions{c.phi, c.psi, c.box};
    EXPECT_EQ(classifyResidue(residue10(kTight, kPsi, c.count, c.rci), reference).className, c.name)
        << c.phi << ' ' << c.psi << ' ' << c.box;
  }
  // Across +-180: 170 and -170 are 20 apart.
  const Reference near = ReferenceTorsions{-60, -170, kDense};
  EXPECT_EQ(classifyResidue(residue10(kTight, {169, 171}, 25), near).className, "Strong");
}

}  // namespace
