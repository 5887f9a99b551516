// The phi/psi and secondary structure stages on the synthetic networks, whose outputs are known numbers.
#include <gtest/gtest.h>

#include "base/box_prior.h"
#include "driver/ORBEL.h"
#include "support/capture.h"
#include "support/output_table.h"
#include "support/process.h"
#include "support/tables.h"

namespace {

using support::OutputTable;

/// A chain of alanines 1..n with the missing counts given (0 where none is), output into a directory of its
/// own.
class NetworkStages : public testing::Test {
 protected:
  NetworkStages() {
    run.tabDir = (std::filesystem::path(ORBELN_SYNTHETIC) / "tab").string();
    run.predPrefix = (dir / "pred").string();
    run.inputTitle = "test";
    run.tripletLibrary = std::make_shared<TripletLibrary>();
    run.blosumScaled["A"] = std::vector<double>(20, 0.0);
    run.blosumProfile["A"] = run.blosumProfile["C"] = std::vector<double>(20, 0.0);
  }
  void makeChain(int length, const std::map<int, int>& missing) {
    run.sequenceStart = run.shiftFirstResid = run.firstResidOption = 1;
    run.sequenceLength = run.shiftLastResid = run.lastResidOption = length;
    for (int r = 1; r <= length; ++r) run.sequence[r] = run.sequenceCopy[r] = "A";
    for (int r = 0; r <= length + 1; ++r) run.missingCount[r] = r < 1 || r > length ? 6 : 0;
    for (const auto& [r, count] : missing) run.missingCount[r] = count;
    run.adjustedShiftTable = support::makeTable("RESID ATOMNAME SHIFT", "%d %s %f", {});
  }
  void prepareInputs() {
    run.annResidueInputs.clear();
    support::captured([&] { run.prepareResidueInputs(); });
  }
  /// Box 96 of each row: 0.880 full network, 0.900 hybrid, 0.000 none.
  std::map<int, std::string> helixBox() {
    output = support::captured([&] { run.runABP_Prediction(); }).out;
    std::map<int, std::string> boxes;
    const OutputTable table(dir / "predABP.tab");
    for (const int r : table.residues()) boxes[r] = table.text(r, "Q_96");
    return boxes;
  }
  support::TempDir dir;
  ORBEL run;
  std::string output;
};

const std::string kFull = "0.880";
const std::string kHybrid = "0.900";
const std::string kZero = "0.000";

TEST_F(NetworkStages, DistributionFollowsTheMissingShifts) {
  // 10 lacks five shifts: hybrid for 8..12. The window of 22 lacks 24 of 30, that of 32 one more.
  makeChain(
      40,
      {{10, 5}, {15, 4}, {20, 6}, {21, 6}, {22, 6}, {23, 6}, {30, 6}, {31, 6}, {32, 6}, {33, 6}, {34, 1}});
  const auto boxes = helixBox();
  EXPECT_EQ(output,
            "Preparing inputs for ANN prediction ...\n"
            "ANN prediction using standard 1H/13C/15N parameters ...\n");
  const std::map<int, std::string> expected{{2, kHybrid},  {4, kFull},    {8, kHybrid}, {10, kHybrid},
                                            {12, kHybrid}, {13, kFull},   {15, kFull},  {18, kHybrid},
                                            {22, kHybrid}, {25, kHybrid}, {26, kFull},  {31, kHybrid},
                                            {32, kZero},   {33, kHybrid}, {36, kFull},  {39, kHybrid}};
  for (const auto& [resid, value] : expected) EXPECT_EQ(boxes.at(resid), value) << resid;
  EXPECT_FALSE(boxes.contains(1));  // selects the hybrid prediction, which the first residue does not have
  const OutputTable table(dir / "predABP.tab");
  EXPECT_EQ(table.texts(32, "CLUST_N CLUST_1_PER CS_CNT5"), "0 0.000 5");
  EXPECT_EQ(table.text(10, "CS_CNT_R2"), "1");
  EXPECT_EQ(table.texts(13, "CLUST_N CLUST_1_PER"), "1 1.000");
  EXPECT_EQ(run.clusterInfo.at(13).seed(1), 96);
  EXPECT_NEAR(run.phiPsiBoxProb.at(13).at(96), 0.88, 1e-6);

  run.noProton = true;
  const auto withoutProtons = helixBox();
  EXPECT_NE(output.find("ANN prediction using 13C/15N parameters only ...\n"), std::string::npos);
  EXPECT_EQ(withoutProtons.size(), 38U);  // the ends have no hybrid prediction
  for (const auto& [r, value] : withoutProtons) EXPECT_EQ(value, r == 32 ? kZero : kHybrid) << r;
}

TEST_F(NetworkStages, EndsOfARangeInsideTheShifts) {
  // Whole ends, cut ends, and a cut end whose neighbour's window lacks 25 of 30 shifts.
  makeChain(30, {{19, 5}, {20, 5}, {21, 5}, {22, 5}, {23, 5}});
  run.missingCount[0] = run.missingCount[31] = 0;
  const struct {
    int first, last;
    std::map<int, std::string> expected;
  } cases[] = {{1, 30, {{1, kFull}, {2, kFull}, {3, kFull}, {28, kFull}, {29, kFull}, {30, kFull}}},
               {5, 16, {{5, kZero}, {6, kHybrid}, {7, kFull}, {14, kFull}, {15, kHybrid}, {16, kZero}}},
               {20, 30, {{20, kZero}, {21, kZero}, {22, kHybrid}, {29, kFull}, {30, kFull}}}};
  for (const auto& c : cases) {
    run.firstResidOption = c.first;
    run.lastResidOption = c.last;
    run.annResidueInputs.clear();
    const auto boxes = helixBox();
    for (const auto& [resid, value] : c.expected)
      EXPECT_EQ(boxes.at(resid), value) << c.first << ' ' << resid;
  }
}

TEST_F(NetworkStages, NetworkInputsOfAResidue) {
  makeChain(2, {});
  run.sequence[2] = "c";
  run.blosumScaled["C"] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19};
  run.ssLimitTable = support::makeTable(
      "RESNAME HN_MIN HN_MAX N_MIN N_MAX HA_MIN HA_MAX C_MIN C_MAX CA_MIN CA_MAX CB_MIN CB_MAX",
      "%s %f %f %f %f %f %f %f %f %f %f %f %f", {"c -1 1 -5 5 -1 1 -3 3 -3 3 -3 3"});
  run.adjustedShiftTable = support::makeTable(
      "RESID ATOMNAME SHIFT", "%d %s %f", {"2 N 1.5", "2 HA 0.25", "2 C -7", "2 CA 0", "2 CB 9999", "2 H 4"});
  prepareInputs();
  std::vector<double> expected{1, 0, 1.5, 0, 0.25, 0, -3, 0, 0.001, 0, 0, 1};  // HN N HA C CA CB with flags
  for (int k = 0; k < 20; ++k) expected.push_back(k);
  EXPECT_EQ(run.annResidueInputs.at(2), expected);

  run.noProton = true;
  run.blosumScaled.erase("A");
  prepareInputs();
  expected[0] = expected[4] = 0.0;
  expected[1] = expected[5] = 1.0;
  EXPECT_EQ(run.annResidueInputs.at(2), expected);
  EXPECT_FALSE(run.annResidueInputs.contains(1));  // no residue type values
}

TEST_F(NetworkStages, BoxTableLayout) {
  makeChain(5, {});
  run.sequenceCopy[3] = "ALA";
  helixBox();
  const std::string text = support::readFile(dir / "predABP.tab");
  const std::string head =
      "REMARK  Neural network predicted 2D Phi/Psi distribution map for test\n\n"
      "REMARK  Ramachandran map is grouped into 18x18 Phi/Psi boxes\n"
      "REMARK  Q_k: predicted likelihood of a residue residing in the k-th box\n\n"
      "REMARK  Phi/Psi box index matrix\n"
      "REMARK    PHI:       -180 -160 -140 -120 -100  -80  -60  -40  -20    0   20   40   60   80  100  120  "
      "140  160 \n"
      "REMARK --------------------------------------------------------------------\n"
      "REMARK    PSI=  160:   17   35   53   71   89  107  125  143  161  179  197  215  233  251  269  287  "
      "305  323 \n";
  EXPECT_EQ(text.substr(0, head.size()), head);
  for (const char* part : {"REMARK    PSI= -180:    0   18 ",
                           "306 \n\nVARS RESID RESNAME CS_CNT5 CS_CNT_R2 CLUST_N CLUST_1_PER Q_0 ",
                           "Q_323 \nFORMAT %4d %1s %2d %2d  %2d  %5.2f   %5.3f ",
                           "%5.3f \n\n    2 A 24  6   1 1.000   0.000 0.000 ", "\n    3 ? 30  6 "})
    EXPECT_NE(text.find(part), std::string::npos) << part;
}

TEST_F(NetworkStages, SecondaryStructureNetworkByMissingShifts) {
  makeChain(50, {{6, 4}, {12, 4}, {13, 5}, {20, 3}});
  for (int r = 1; r <= 50; ++r) run.annResidueInputs[r] = std::vector<double>(32, 0.0);
  run.firstResidOption = 3;
  run.lastResidOption = 45;
  run.sequence[30] = "c";
  run.sequenceCopy[31] = "ALA";
  run.sequenceCopy[32] = "";
  run.runSS_Prediction();
  const OutputTable table(dir / "predSS.tab");
  // Shift network and five-residue network (0.5 0.1 0.4) averaged; 0.2 0.2 0.6 from sequence.
  const std::map<int, std::string> expected{{4, "0.600 0.150 0.250 0.35 H"},   // complete
                                            {6, "0.300 0.450 0.250 0.15 E"},   // centre hidden
                                            {7, "0.350 0.150 0.500 0.15 L"},   // previous hidden
                                            {5, "0.650 0.100 0.250 0.40 H"},   // next hidden
                                            {12, "0.200 0.200 0.600 0.40 c"},  // two in a row
                                            {20, "0.600 0.150 0.250 0.35 H"},
                                            {3, "0.200 0.200 0.600 0.40 c"},   // cut end of the range
                                            {46, "0.200 0.200 0.600 0.40 c"},  // outside the range
                                            {1, "0.200 0.200 0.600 0.40 c"}};
  for (const auto& [r, row] : expected)
    EXPECT_EQ(table.texts(r, "Q_H Q_E Q_L CONFIDENCE SS_CLASS"), row) << r;
  EXPECT_EQ(table.texts(12, "CS_CNT CS_CNT_R2"), "9 2");
  EXPECT_EQ(table.text(31, "RESNAME"), "?");
  EXPECT_EQ(table.residues().size(), 49U);  // no row for 32, whose code is empty
  // Fifty residues fill one block; a second one follows without residues.
  ASSERT_EQ(table.data.size(), 7U);
  EXPECT_EQ(table.data[1], "DATA SEQUENCE     AAAAAAAAAA AAAAAAAAAA AAAAAAAAAc AAAAAAAAAA AAAAAAAAAA ");
  EXPECT_EQ(table.data[2].substr(0, 29), "DATA PREDICTED_SS cccHHELHHH ");
  EXPECT_EQ(table.data[3].substr(0, 22), "DATA CONFIDENCE   4443");
  EXPECT_EQ(table.data[5], "DATA PREDICTED_SS ");
}

}  // namespace
