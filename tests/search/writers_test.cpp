// Text of the summary and the comprehensive table.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include "search/search_fixture.h"
#include "support/capture.h"
#include "support/output_table.h"
#include "support/process.h"
#include "support/tables.h"

namespace {

using support::OutputTable;
using Lines = std::vector<std::string>;

/// The last `n` lines of a file.
Lines tail(const std::filesystem::path& file, std::size_t n) {
  Lines lines;
  std::istringstream in(support::readFile(file));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return {lines.end() - static_cast<std::ptrdiff_t>(std::min(n, lines.size())), lines.end()};
}

class Writers : public testing::Test {
 protected:
  void SetUp() override {
    run.predFile = (directory / "pred.tab").string();
    run.predAllFile = (directory / "predAll.tab").string();
    run.inputTitle = "demo";
    run.inputTable.firstResid = 1;
    run.inputTable.setData("SEQUENCE", "LKXVE");
    search_test::setQuery(run, "LKXVE");
    run.matchPhi[3] = {-62, -58};
    run.matchPsi[3] = {-42, -38};
    run.matchDistance[3] = {0.25, 0.75};
    run.matchInCluster[3] = {1, 0};
    run.matchIndex[3] = {{1, 2}, {2, 3}};
    run.predCount[3] = 10;
    run.rciValue[3] = 0.153;
  }

  support::TempDir directory;
  ORBEL run;
};

TEST_F(Writers, SummaryRows) {
  run.sequenceCopy[2] = "KK";
  run.missingCount[4] = 5;
  run.matchDistance[3][0] = std::numeric_limits<double>::infinity();  // no cell is inf
  EXPECT_EQ(support::captured([&] { run.writeTorsionPredictions(); }).out,
            "Summarizing Phi/Psi Predictions ...\n");
  EXPECT_EQ(tail(directory / "pred.tab", 8),
            (Lines{"VARS   RESID RESNAME PHI PSI DPHI DPSI DIST S2 COUNT CS_COUNT CLASS ",
                   "FORMAT %4d %s %8.3f %8.3f %8.3f %8.3f %8.3f %5.3f %2d %2d %s", "",
                   "   1 L 9999.000 9999.000    0.000    0.000    0.000 0.000  0 18 None",
                   "   2 ? 9999.000 9999.000    0.000    0.000    0.000 0.000  0 18 None",
                   "   3 X  -60.000  -40.000    2.828    2.828 9999.000 0.850 10 13 Generous",
                   "   4 V 9999.000 9999.000    0.000    0.000    0.000 0.000  0 13 None",
                   "   5 E 9999.000 9999.000    0.000    0.000    0.000 0.000  0 13 None"}));
  const OutputTable table(directory / "pred.tab");
  EXPECT_EQ(table.data, (Lines{"DATA FIRST_RESID 1", "DATA SEQUENCE LKXVE"}));
  EXPECT_EQ(table.remarks[1], "  Prediction Summary for Chemical Shift Input demo");
  EXPECT_EQ(table.remarks[2], " ");
  EXPECT_EQ(table.remarks.back(), " " + ORBEL::versionBanner());
  EXPECT_EQ(run.missingCount.size(), 5U);
}

TEST_F(Writers, ComprehensiveRows) {
  std::vector<search_test::DbResidue> db;
  for (int i = 0; i < 6; ++i) {
    db.push_back(
        {.source = "1abcA",
         .code = "LKcGEX"[i],
         .resid = 40 + i,
         .phi = -60.0F - static_cast<float>(i),
         .chi1 = i == 2 ? 9999.0F : 62.5F,
         .shifts = {1.25F + static_cast<float>(i), 1, 0.11F, 1, 0.22F, 1, -0.33F, 1, 0.44F, 1, 0.55F, 1}});
  }
  installDatabase(run, db);
  run.sequence.erase(5);
  run.matchPhi[1] = run.matchPsi[1] = run.matchDistance[1] = run.matchInCluster[1] = {1};  // chain end
  run.matchIndex[1] = {{1, 2}};
  run.writePredAll();
  const Lines lines = tail(directory / "predAll.tab", 5);
  EXPECT_EQ(
      lines[0],
      "VARS   INDEX RESID_Q_CENTER RESNAMES_Q DIST W RESNAMES_DB RESID_L1 PHI_L1 PSI_L1 CHI1_L1 HN_L1 N_L1 "
      "HA_L1 C_L1 CA_L1 CB_L1 RESID PHI PSI CHI1 HN N HA C CA CB RESID_R1 PHI_R1 PSI_R1 CHI1_R1 HN_R1 "
      "N_R1 HA_R1 C_R1 CA_R1 CB_R1 SOURCE ");
  const std::string position = " %4d %6.1f %6.1f %4.0f %5.2f %5.1f %5.2f %5.1f %5.1f %5.1f";
  EXPECT_EQ(lines[1], "FORMAT %4d %4d %7s %6.3f %4.2f  %s" + position + position + position + " %s");
  EXPECT_EQ(lines[3],
            "   1    3   LKXV?  0.250 1.00  LKcGE   41  -61.0  -40.0   62  0.55   2.2  0.11   0.2  -0.3   0.4"
            "   42  -62.0  -40.0 9999  0.55   3.2  0.11   0.2  -0.3   0.4"
            "   43  -63.0  -40.0   62  0.55   4.2  0.11   0.2  -0.3   0.4 1abcA");
  EXPECT_EQ(lines[4].substr(0, 45), "   2    3   LKXV?  0.750 0.00  KcGEX   42  -6");
  EXPECT_EQ(OutputTable(directory / "predAll.tab").rows.size(), 2U);
}

}  // namespace
