// Chi1 rotamers and the chi1 table.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "search/search_fixture.h"
#include "support/output_table.h"
#include "support/process.h"

namespace {

using support::OutputTable;
using Values = std::vector<double>;

TEST(Chi1Rotamer, Boundaries) {
  const std::pair<float, const char*> cases[] = {{-180.0F, "t"},
                                                 {-120.0F, "t"},
                                                 {-119.9F, "g-"},
                                                 {0.0F, "g-"},
                                                 {0.1F, "g+"},
                                                 {120.0F, "g+"},
                                                 {120.1F, "t"},
                                                 {999.0F, "t"},
                                                 {999.1F, "na"},
                                                 {9999.0F, "na"},
                                                 {std::numeric_limits<float>::quiet_NaN(), "t"}};
  for (const auto& [chi1, name] : cases) EXPECT_EQ(ORBEL::getChi1Rotamer(chi1), name) << chi1;
}

const std::string kColumns = "RESNAME CS_COUNT Q_Gm Q_Gp Q_T CLASS CHI1 DCHI1";

/// A run whose chi1.tab gives type L the weights 10, 9 .. 0 by bin, V 100 times the bin, and others rows.
class Chi1Table : public testing::Test {
 protected:
  void SetUp() override {
    std::string table = "VARS RESNAME 0 1 2 3 4 5 6 7 8 9 10\nFORMAT %s";
    for (int i = 0; i <= 10; ++i) table += " %f";
    table += "\nL 1 1 1 1 1 1 1 1 1 1 1\nL 10 9 8 7 6 5 4 3 2 1 0.5\nC 6 4 4 4 4 4 4 4 4 4 0\n";
    table += "V 1 2 4 8 16 32 64 128 256 512 0\nS 0 0 0 0 0 0 0 0 0 0 0\nK 0.5996 0.4004 0 0 0 0 0 0 0 0 0\n";
    support::writeFile(directory / "chi1.tab", table);
    run.tabDir = directory.path.string();
    run.pathSeparator = "/";
    run.predPrefix = (directory / "pred").string();
    run.inputTitle = "demo";
  }

  OutputTable write() {
    run.writeChi1Predictions();
    return OutputTable(directory / "predChi1.tab");
  }
  void scores(int resid, double gMinus, double gPlus, double trans) {
    run.chi1RotamerScores[resid] = {
        {"g-", Values(3, gMinus)}, {"g+", Values(3, gPlus)}, {"t", Values(3, trans)}, {"na", Values(5, 0.0)}};
  }

  support::TempDir directory;
  ORBEL run;
};

TEST_F(Chi1Table, RowsClassesAndAngles) {
  search_test::setQuery(run, "LAGPcLLSLXK");
  scores(1, 0.95, 0.05, 1.2);  // weights 1, 10, 0.5
  run.sameTypeChi1[1] = {-60, 50, 70, 180};
  scores(5, 1.5, -0.3, 0.15);  // c reads row C: 0, 6, 4: exactly 0.6
  scores(6, 0.45, 0.45, 0.45);
  scores(7, 1.0, 0.0, 1.0);
  run.chi1RotamerScores[7]["g+"].pop_back();  // two scores count as none
  run.sequenceCopy[9] = "LX";
  run.missingCount = {{1, 2}, {2, 1}};
  scores(11, 0.05, 0.15, 0.95);  // best 0.5996, below 0.6
  run.sameTypeChi1[5] = {-60};
  const OutputTable table = write();
  EXPECT_EQ(table.residues(), (std::vector<int>{1, 5, 6, 7, 8, 9, 10, 11}));  // no A, G, P
  const std::pair<int, const char*> rows[] = {
      {1, "L 15 0.087 0.870 0.043 g+ 60.0 14.1"},
      {5, "c 18 0.000 0.600 0.400 g+ 9999.0 0.0"},  // no g+ among its chi1 values
      {6, "L 18 0.333 0.333 0.333 na 9999.0 9999.0"},
      {7, "L 18 0.333 0.333 0.333 na 9999.0 9999.0"},
      {8, "S 18 0.000 0.000 0.000 na 9999.0 9999.0"},   // all weights 0
      {9, "? 18 0.333 0.333 0.333 na 9999.0 9999.0"},   // never searched
      {10, "X 18 0.000 0.000 0.000 na 9999.0 9999.0"},  // not in chi1.tab
      {11, "K 18 0.600 0.400 0.000 na 9999.0 9999.0"}};
  for (const auto& [resid, row] : rows) EXPECT_EQ(table.texts(resid, kColumns), row) << resid;
  EXPECT_EQ(run.sameTypeChi1.size(), 2U);
}

TEST_F(Chi1Table, ValineIsNamed120DegreesLower) {
  search_test::setQuery(run, "VVL");
  scores(1, 0.0, 0.1, 0.55);  // slot g+ from t: 32, g- from g+: 2, t from g-: 1
  run.sameTypeChi1[1] = {180, 60, -60, -175, 999};
  const OutputTable table = write();
  EXPECT_EQ(table.texts(1, kColumns), "V 18 0.057 0.914 0.029 g+ 62.5 3.5");
  EXPECT_EQ(run.sameTypeChi1[1], (Values{60, -60, -180, 65, 9999}));
  EXPECT_EQ(run.sameTypeChi1.count(2), 0U);

  support::writeFile(directory / "ref.pdb",  // the torsion of a reference is not rotated
                     "ATOM      1  N   VAL A   2       1.000   0.000   0.000  1.00  0.00\n"
                     "ATOM      2  CA  VAL A   2       0.000   0.000   0.000  1.00  0.00\n"
                     "ATOM      3  CB  VAL A   2       0.000   1.500   0.000  1.00  0.00\n"
                     "ATOM      4  CG1 VAL A   2       0.000   1.500   1.500  1.00  0.00\n");
  run.referenceFile = (directory / "ref.pdb").string();
  run.referenceStructure = std::make_unique<PDB>(run.referenceFile);
  const OutputTable compared = write();
  EXPECT_EQ(compared.text(1, "CHI1_OBS"), "9999.000");
  EXPECT_DOUBLE_EQ(std::abs(compared.number(2, "CHI1_OBS")), 90.0);
}

TEST_F(Chi1Table, TakesTheFirst25AnglesOfTheRotamer) {
  search_test::setQuery(run, "L");
  scores(1, 1.0, 0.0, 1.0);
  run.sameTypeChi1[1] = Values(7, -60.0);
  run.sameTypeChi1[1].resize(32, 60.0);
  run.sameTypeChi1[1].resize(82, 90.0);
  EXPECT_EQ(write().text(1, "CHI1"), "60.0");
}

}  // namespace
