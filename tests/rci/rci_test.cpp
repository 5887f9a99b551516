// Random coil index against values computed independently, and the order parameter table.
#include <gtest/gtest.h>

#include <cmath>

#include "ann/weight_files.h"
#include "driver/ORBEL.h"
#include "rci/RCI.h"
#include "support/capture.h"
#include "support/process.h"

namespace {

using support::readFile;

/// Secondary shifts, missing flags and reference values in the order HN, N, HA, C, CA, CB.
struct Residue {
  int resid;
  std::vector<double> shifts, flags, references;
};

/// Residues 1 to 15 of a chain that is numbered -1 to 17. Residue 9 has no vector, 7 misses all shifts.
// clang-format off
const std::vector<Residue> kData{
    {1, {-0.92, -2.91, 0.14, 0.21, 3.07, 5.48}, {0, 0, 0, 0, 0, 0}, {8.51, 115.69, 4.61, 175.18, 59.29, 64.54}},
    {2, {-0.01, 0.06, 0, -0.04, -0.06, 0}, {0, 1, 1, 0, 0, 1}, {8.4, 107.5, 4.02, 174.9, 45.4, 49.99}},
    {3, {0.05, -0.01, 0, -0.05, 0.07, 0.02}, {0, 0, 0, 0, 1, 0}, {50, 49.99, 4.45, 177.81, 63.69, 32.23}},
    {4, {0.01, -0.06, 0, 0, 0.01, 0.02}, {1, 0, 0, 0, 0, 0}, {8.36, 121.58, 4.36, 177.39, 56.7, 33.21}},
    {5, {0.05, -0.09, 0.01, 0.06, 0.06, -0.07}, {1, 0, 0, 0, 0, 0}, {8.32, 122.36, 4.39, 178.15, 55.57, 42.47}},
    {6, {0.03, -0.24, 0.08, -0.33, 0.53, 0.2}, {0, 1, 0, 0, 0, 0}, {8.48, 118.93, 4.61, 175.23, 58.56, 28.23}},
    {7, {0.46, 0.61, 0.1, -0.58, 1.99, -0.17}, {1, 1, 1, 1, 1, 1}, {8.08, 120.86, 4.29, 176.97, 61.75, 38.72}},
    {8, {-0.21, -0.07, -0.22, -0.3, 0.63, 0.46}, {0, 0, 0, 0, 0, 0}, {8.12, 119.19, 4.13, 177.46, 62.62, 31.86}},
    {10, {-0.29, -0.94, -0.01, 0.34, 0.79, 0.24}, {1, 0, 0, 0, 0, 0}, {8.75, 118.02, 4.76, 175.04, 55.23, 28.82}},
    {11, {-0.08, -0.13, 0.1, -0.35, -0.57, 0}, {0, 0, 0, 0, 1, 0}, {49.98, 49.97, 4.6, 50.09, 63.07, 34.78}},
    {12, {-0.09, -0.55, 0, -0.08, 0.39, 0.22}, {0, 0, 0, 0, 0, 0}, {8.56, 118.1, 4.79, 175.05, 55.32, 29.05}},
    {13, {0.01, 0.18, -0.01, -0.13, -0.05, 0.04}, {0, 0, 1, 0, 0, 0}, {8.57, 119.07, 4.82, 175.9, 52.94, 38.32}},
    {14, {0.01, -0.09, 0.01, 0.14, -0.03, 0}, {0, 0, 1, 1, 0, 1}, {8.23, 122.1, 4.7, 177.11, 57.57, 29.8}},
    {15, {-0.1, 0.07, -0.13, -1.07, -0.32, 0.08}, {0, 1, 0, 0, 0, 0}, {8.26, 112.25, 4.39, 175.13, 61.78, 70.05}}
};
// clang-format on
const std::string kSequence = "MASGPKLcIVEph?DWTQF";

struct Input {
  std::map<int, std::vector<double>> shifts;
  std::map<int, std::map<std::string, double>> references;
  std::map<int, std::string> names;
};

/// The chain with residue 1 renumbered to `first`, without the residues after `last`.
Input makeInput(int first, int last = 15) {
  const std::vector<std::string> atoms{"HN", "N", "HA", "C", "CA", "CB"};
  Input input;
  for (const Residue& residue : kData) {
    const int resid = residue.resid - 1 + first;
    for (std::size_t k = 0; k < atoms.size(); ++k) {
      input.references[resid][atoms[k]] = residue.references[k];
      if (residue.resid > last) continue;
      input.shifts[resid].insert(input.shifts[resid].end(), {residue.shifts[k], residue.flags[k]});
    }
    // Values after the twelfth are not used.
    if (residue.resid <= last) input.shifts[resid].insert(input.shifts[resid].end(), 20, 77.0);
  }
  for (std::size_t i = 0; i < kSequence.size(); ++i) {
    input.names[first - 2 + static_cast<int>(i)] = std::string(1, kSequence[i]);
  }
  return input;
}

std::vector<double> flexibility(const Input& input) {
  RCI rci;
  rci.runRCI(input.shifts, input.references, input.names);
  std::vector<double> values;
  for (const auto& entry : rci.s2List) values.push_back(entry.second);
  return values;
}

constexpr double kTolerance = 2e-6;

/// The N-terminal correction depends on the numbering: whole, one residue, none, and from residue 1 on.
TEST(RandomCoilIndex, ChainsByTheirFirstResidueNumber) {
  const std::map<int, std::vector<double>> expected{{1, {0.784152, 0.768571, 0.706651, 0.626973}},
                                                    {3, {0.193813, 0.241337, 0.393550, 0.494683}},
                                                    {5, {0.141350, 0.211117, 0.393550, 0.494683}},
                                                    {-2, {0.141350, 0.211117, 0.393550, 0.494683}}};
  const std::vector<double> rest{0.504975, 0.461438, 0.301678, 0.222622, 0.126604, 0.000007,
                                 0.000008, 0.268236, 0.440047, 0.574259, 0.589949};
  for (auto [first, values] : expected) {
    values.insert(values.end(), rest.begin(), rest.end());
    support::expectNear(flexibility(makeInput(first)), values, std::to_string(first), kTolerance);
  }
}

TEST(RandomCoilIndex, ChainsOfFewerThanFourResidues) {
  const std::vector<std::vector<double>> expected{
      {0.108555}, {0.112290, 0.112290}, {0.418970, 0.444887, 0.465268}};
  for (int n = 1; n <= 3; ++n)
    support::expectNear(flexibility(makeInput(1, n)), expected[static_cast<std::size_t>(n - 1)],
                        std::to_string(n), kTolerance);
  EXPECT_TRUE(flexibility({}).empty());
}

TEST(RandomCoilIndex, WithoutUsableNeighboursTheValueIsUndefined) {
  Input input = makeInput(1);
  for (auto& [resid, values] : input.shifts) {
    for (std::size_t k = 1; k < 12 && resid <= 8; k += 2) values[k] = 1.0;
  }
  RCI rci;
  rci.runRCI(input.shifts, input.references, input.names);
  for (const int resid : {1, 5, 8}) EXPECT_EQ(rci.s2List.at(resid), 9999.0) << resid;
  EXPECT_LT(rci.s2List.at(9), 1.0);  // no vector of its own, but residue 10 has data
  EXPECT_EQ(rci.missCount.at(9), 5);
  EXPECT_EQ(rci.missCount.at(2), 6);  // glycine counts one more
}

TEST(RandomCoilIndex, ValueOfOneResidue) {
  const std::vector<double> weights{0.0, 0.59, 0.85, 0.72, 0.72, 0.15};
  EXPECT_NEAR(RCI::calcRCI({100, 2, 1, 3, -1, 2}, weights), std::pow(1.0 / 5.21, 1.5), 1e-12);
  EXPECT_EQ(RCI::calcRCI({1, 2, 3}, weights), -1.0);
  EXPECT_EQ(RCI::calcRCI({100, 2, 1, 3, -1, 2}, {}), -1.0);
}

TEST(OrderParameterTable, RowsAndCounts) {
  const support::TempDir dir;
  ORBEL run;
  const Input input = makeInput(1);
  run.annResidueInputs = input.shifts;
  run.shiftAdjustment = input.references;
  run.sequence = run.sequenceCopy = input.names;
  run.sequenceCopy[2] = "GLY";
  run.inputTitle = "test";
  run.missingCount = {{1, 0}, {2, 4}, {3, 1}, {15, 2}};
  run.predPrefix = (dir / "pred").string();
  EXPECT_EQ(support::captured([&] { run.runS2_Prediction(); }).out, "RCI prediction ...\n");
  const std::string text = readFile(dir / "predS2.tab");
  EXPECT_EQ(
      text.rfind("REMARK  Predicted order parameter (S2) from backbone chemical shifts for test\nREMARK", 0),
      0U);
  EXPECT_NE(text.find("\n\nVARS RESID RESNAME CS_CNT CS_CNT_R2 S2 \nFORMAT %4d %1s %2d %2d %8.3f \n\n"
                      "    1 S  6 14    0.219\n    2 ?  2 13    0.234\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n   15 T  4 16    0.413\n"), std::string::npos) << text;
  // Residues that had no count are counted as complete from now on.
  EXPECT_EQ(run.missingCount.size(), 17U);
  EXPECT_EQ(run.missingCount.at(0), 0);
  EXPECT_EQ(run.missingCount.at(16), 0);
  EXPECT_NEAR(run.rciValue.at(1), 0.784152, 2e-6);
}

}  // namespace
