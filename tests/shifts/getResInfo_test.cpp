// Shift intake: sequence, range, cysteines, glycine HA, secondary shifts, offsets.
#include <gtest/gtest.h>

#include "shifts/shift_fixture.h"
#include "support/capture.h"

namespace {

using support::makeShiftRun;
using support::secondary;
/// Runs the intake; returns what it printed.
support::Captured intake(ORBEL& run) {
  return support::captured([&] { run.getResInfo(); });
}

TEST(Intake, SecondaryShiftIsObservedMinusCoilAndNeighbours) {
  // M(-1) K(0) P(1) A(2): K has its own +0.5 and -2.0 from the P behind it; A has +1.0 on N from the P
  // before.
  const auto run = makeShiftRun("MKPA", -1, {"-1 M CA 56", "0 K CA 55.5", "2 A N 122.25", "2 A H 8.5"});
  intake(*run);
  EXPECT_DOUBLE_EQ(secondary(*run, 0, 4), 55.5 - (56 + 0.5 - 2.0));
  EXPECT_DOUBLE_EQ(secondary(*run, 2, 1), 122.25 - 121.0);
  EXPECT_DOUBLE_EQ(secondary(*run, 2, 6), 0.5);
  EXPECT_DOUBLE_EQ(secondary(*run, 2, 4), 9999.0);
  EXPECT_EQ(run->missingCount.at(2), 4);
  EXPECT_EQ(run->missingCount.at(1), 6);
  EXPECT_EQ(run->missingCount.at(-2), 6);
  EXPECT_EQ(run->missingCount.at(3), 6);
  EXPECT_DOUBLE_EQ(run->shiftAdjustment.at(0).at("CA"), 54.5);
  // Four residues x six atoms; the proton keeps the name it came with.
  ASSERT_EQ(run->adjustedShiftTable.entries.size(), 24U);
  EXPECT_EQ(run->adjustedShiftTable.entries.at(24).at("ATOMNAME"), "H");
  EXPECT_EQ(run->adjustedShiftTable.entries.at(10).at("SHIFT"), "1");
  EXPECT_EQ(run->adjustedShiftTable.entries.at(10).at("CS_ADJ"), "54.5");
}

TEST(Intake, GlycineAlphaProton) {
  const struct {
    std::vector<std::string> rows;
    bool noProton;
    double expected;  ///< secondary shift, coil 4
    int missing;      ///< of the glycine, whose CB and other atoms are absent
  } cases[] = {{{"2 G HA2 3.9", "2 G HA3 4.3"}, false, 0.1, 5},
               {{"2 G HA3 4.1"}, false, 0.1, 5},
               {{"2 G HA2 3.9"}, false, -0.1, 5},
               {{"2 G HA 5.0"}, false, 9999 - 4.0, 6},
               {{"2 G HA2 999", "2 G HA3 4.1"}, false, 0.1, 5},
               {{"2 G HA2 3.9", "2 G HA3 999"}, false, -0.1, 5},
               {{"2 G HA2 nan", "2 G HA3 4.1"}, false, 0.1, 5},
               {{"2 G HA2 3.9"}, true, -0.1, 6},
               {{"2 G HA 5.0"}, true, 9999 - 4.0, 6},  // counted once
               {{"2 G HA2 9999"}, false, 9999 - 4.0, 6}};
  for (const auto& c : cases) {
    auto rows = c.rows;
    rows.emplace_back("3 A CA 56");
    const auto run = makeShiftRun("AGA", 1, rows);
    run->noProton = c.noProton;
    intake(*run);
    EXPECT_NEAR(secondary(*run, 2, 2), c.expected, 1e-9) << c.rows[0];
    EXPECT_EQ(run->missingCount.at(2), c.missing) << c.rows[0];
    EXPECT_EQ(run->adjustedShiftTable.entries.at(2).at("ATOMNAME"), "HA") << c.rows[0];
  }
}

TEST(Intake, ResidueWithoutCoilValuesHasNoSecondaryShift) {
  const auto run = makeShiftRun("AXA", 1, {"1 A CA 56", "2 X CA 55", "3 A CA 56"});
  intake(*run);
  EXPECT_DOUBLE_EQ(secondary(*run, 2, 4), 9999.0);
  EXPECT_EQ(run->adjustedShiftTable.entries.at(10).at("SHIFT"), "9999");
}

TEST(Intake, CysteineStateFollowsCB) {
  struct Case {
    const char* shift;
    bool noCheck;
    const char* expected;
  };
  for (const Case& c :
       {Case{"2 C CB 35", false, "c"}, Case{"2 C CB 34.0", false, "c"}, Case{"2 CYS CB 33.99", false, "C"},
        Case{"2 C CB 35", true, "C"}, Case{"2 A CB 35", false, "C"}, Case{"2 C CB 9999", false, "C"},
        Case{"2 C CB nan", false, "C"}}) {
    const auto run = makeShiftRun("ACA", 1, {"1 A CA 56", c.shift, "3 A CA 56"});
    run->noOxiCysCheck = c.noCheck;
    intake(*run);
    EXPECT_EQ(run->sequence.at(2), c.expected) << c.shift;
    EXPECT_EQ(run->sequenceCopy.at(2), "C");
  }
}

TEST(Intake, RangeIsNarrowedToResiduesWithShifts) {
  struct Case {
    int first, last, expectedFirst, expectedLast;
  };
  // Shifts of residues 2 to 4 in a sequence 1 to 6: the last one is raised to 5.
  for (const Case& c : {Case{-999999, 999999, 2, 5}, Case{1000, 999999, 5, 5}, Case{4, 3, 3, 4},
                        Case{-999999, 0, 2, 2}, Case{3, 3, 3, 3}}) {
    const auto run = makeShiftRun("AAAAAA", 1, {"4 A CA 56", "2 A CA 56"});
    run->firstResidOption = c.first;
    run->lastResidOption = c.last;
    intake(*run);
    EXPECT_EQ(run->shiftFirstResid, 2);
    EXPECT_EQ(run->shiftLastResid, 5);
    EXPECT_EQ(run->firstResidOption, c.expectedFirst);
    EXPECT_EQ(run->lastResidOption, c.expectedLast);
  }
}

TEST(Intake, RangeFollowsAnyNumbering) {
  for (const int first : {-3000, 2001}) {
    const std::string row = std::to_string(first + 1) + " A CA ";
    // A row of a missing shift belongs to the range.
    const auto run = makeShiftRun("AAAAAA", first, {row + "56", std::to_string(first + 3) + " A CA 9999"});
    intake(*run);
    EXPECT_EQ(run->firstResidOption, first + 1);
    EXPECT_EQ(run->lastResidOption, first + 4);
    EXPECT_DOUBLE_EQ(secondary(*run, first + 1, 4), 0.0);
    EXPECT_EQ(run->missingCount.at(first + 3), 6);
  }
}

TEST(Intake, MismatchesAreCountedPerRow) {
  const auto run =
      makeShiftRun("AAA", 1, {"1 ALA CA 56", "2 LYS CA 56", "2 K N 120", "2 K HN 8", "2 K C 176"});
  const std::string warning = "WARNING: Residue Type Mismatch: Residue 2 SEQUENCE: A Chemical Shift Table: ";
  const std::string k = warning + "K.\n";
  EXPECT_EQ(intake(*run).err, warning + "LYS.\n" + k + k + k);
  const auto five =
      makeShiftRun("AAA", 1, {"1 A CA 56", "2 K CA 56", "2 K N 120", "2 K HN 8", "2 K C 176", "9 A C 176"});
  EXPECT_NE(intake(*five).err.find("Format Errors: Too Many Sequence Mismatches: 5, 5 Max.\n"),
            std::string::npos);
}

/// CA = 2 + 0.6 d and CB = CA - d with alternating +-0.02 on CA: 2 ppm off before the set corrections.
std::vector<std::string> offsetProtein(int residues) {
  std::vector<std::string> rows;
  for (int i = 1; i <= residues; ++i) {
    const double d = (i % 2 == 0 ? 1.0 : -1.0) * (0.5 + 0.1 * i);
    const double ca = 2.0 + 0.6 * d + (i % 4 < 2 ? 0.02 : -0.02);
    rows.push_back(std::to_string(i) + " A CA " + std::to_string(56 + ca));
    rows.push_back(std::to_string(i) + " A CB " + std::to_string(30 + ca - d));
  }
  return rows;
}

TEST(Referencing, OffsetIsEstimatedReportedAndSubtractedOnRequest) {
  for (const bool apply : {false, true}) {
    const auto run = makeShiftRun(std::string(40, 'A'), 1, offsetProtein(40));
    run->applyOffsets = apply;
    const auto [out, err] = intake(*run);
    // Both lines pass 2.0 within the noise: (2 - 0.094 + 2 - 0.459) / 2 = 1.7235.
    const double offset = run->referencingOffset.at("CA");
    EXPECT_NEAR(offset, 1.7235, 0.01);
    EXPECT_DOUBLE_EQ(run->referencingOffset.at("CB"), offset);
    EXPECT_NE(out.find(" Estimated Referencing Offset for CA/CB:  1.72"), std::string::npos) << out;
    EXPECT_NE(out.find("ppm Size:  40\n"), std::string::npos) << out;
    const double before = secondary(*run, 7, 4);
    const double after = text::toDouble(run->adjustedShiftTable.entries.at(6 * 6 + 4).at("SHIFT"));
    EXPECT_NEAR(before - after, apply ? offset : 0.0, 1e-5);
    EXPECT_EQ(err.find("referencing offset applied for 13Ca and 13Cb chemical shifts") != std::string::npos,
              apply);
  }
}

TEST(Referencing, SmallOrOneSidedSets) {
  // Ten residues, all with d > 0: the total must exceed ten.
  std::vector<std::string> rows;
  for (int i = 1; i <= 11; ++i) {
    rows.push_back(std::to_string(i) + " A CA " + std::to_string(58.0 + 0.1 * i + (i % 2) * 0.01));
    rows.push_back(std::to_string(i) + " A CB " + std::to_string(30.0 + 0.05 * (i % 3)));
  }
  const auto eleven = makeShiftRun(std::string(12, 'A'), 1, rows);
  intake(*eleven);
  EXPECT_TRUE(eleven->referencingOffset.contains("CA"));
  rows.resize(20);
  const auto ten = makeShiftRun(std::string(12, 'A'), 1, rows);
  EXPECT_EQ(intake(*ten).err.find("No enough CA"), std::string::npos);
  EXPECT_FALSE(ten->referencingOffset.contains("CA"));
  rows.resize(18);
  const auto nine = makeShiftRun(std::string(12, 'A'), 1, rows);
  EXPECT_NE(
      intake(*nine).err.find("  No enough CA shifts to check CA/CB chemical shift referencing offset ...\n"),
      std::string::npos);
}

TEST(Referencing, OutlierMarks) {
  const auto run =
      makeShiftRun("AAA", 1, {"1 A CA 56", "2 A CA 68.5", "2 A HA 6.5", "2 A CB 20.5", "3 A HN 8"});
  const std::string out = intake(*run).out;
  EXPECT_NE(out.find("    2 A  CA Secondary Shift:   12.500    Limit:    5.000 !\n"), std::string::npos)
      << out;
  EXPECT_NE(out.find("    2 A  HA Secondary Shift:    2.500    Limit:    1.000\n"), std::string::npos) << out;
  EXPECT_NE(out.find("    2 A  CB Secondary Shift:   -9.500    Limit:   -5.000\n"), std::string::npos) << out;
}

TEST(Referencing, StraightLine) {
  double slope = 0;
  double intercept = 0;
  double error = 7;
  // By hand: mean y 6.02, Sxy 19.4, Sxx 10; residuals 0.06 -0.18 0.08 0.14 -0.10, sd (n - 1) 0.134164.
  EXPECT_TRUE(
      ORBEL::LinearLeastSquareFitting({1, 2, 3, 4, 5}, {2.2, 3.9, 6.1, 8.1, 9.8}, slope, intercept, error));
  EXPECT_NEAR(slope, 1.94, 1e-12);
  EXPECT_NEAR(intercept, 0.20, 1e-12);
  EXPECT_NEAR(error, 0.06, 1e-12);
  EXPECT_FALSE(ORBEL::LinearLeastSquareFitting({1, 2}, {1}, slope, intercept, error));
}

}  // namespace
