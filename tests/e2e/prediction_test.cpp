// Whole runs on the synthetic installation, whose results are worked out by hand (support/synthetic.h).
#include <gtest/gtest.h>

#include <algorithm>

#include "support/output_table.h"
#include "support/process.h"
#include "support/synthetic.h"

namespace {

namespace fs = std::filesystem;
using support::OutputTable;
using support::ProgramRun;
using support::runOrbeln;
using support::TempDir;

/// Runs `query` in `dir` as query.tab with further arguments.
ProgramRun predict(const TempDir& dir, const support::Query& query,
                   std::vector<std::string> arguments = {"-noproton"}) {
  support::writeFile(dir / "query.tab", query.table());
  arguments.insert(arguments.begin(), {"-in", "query.tab"});
  const ProgramRun run = runOrbeln(dir.path, ORBELN_SYNTHETIC, arguments);
  EXPECT_EQ(run.status, 0) << run.err;
  return run;
}

struct Expected {
  int first, last;  ///< residues
  double phi, psi, dphi, dpsi;
  int count;
  const char* shape;  ///< the class
};

// Fragment i has phi -75 + i, psi -36 - i / 2 and, in the window of an alanine inside the helix, the
// pre-screen score 4.392 - 0.0196 (i / 5) - 0.0256 (i % 5): 4.88 position weights x 0.90, less 0.04 x 0.49
// three before and 0.04 x 0.64 two after the centre. All 25 scores differ, so all match: phi -63, psi -42,
// and the spread of 25 consecutive integers, sqrt(1300 / 24) = 7.360, half of it in psi.
//
// Where the box three before the centre does not count, since that query residue has no distribution (chain
// ends have none) or is the glycine (-9.99 for every helical box), only five scores differ; of equal scores
// the last fragment stays: i = 20 to 24, phi -53, psi -47, spread sqrt(10 / 4). Where the box two after the
// centre does not count, i = 4, 9, 14, 19, 24 stay: phi -61, psi -43, spread sqrt(250 / 4). Five matches of
// five in the cluster are below the ten that a consensus needs: Warn.
//
// Glycine 18 has four candidates; the second pass drops the one with an extended neighbour: phi 55, 57, 62.
// Tryptophan 22 matches only the last source of the database; one value has the spread 180.
const Expected kHelix[] = {{1, 1, 9999, 9999, 0, 0, 0, "None"},
                           {2, 4, -53, -47, 1.581, 0.791, 5, "Warn"},
                           {5, 15, -63, -42, 7.360, 3.680, 25, "Strong"},
                           {16, 16, -61, -43, 7.906, 3.953, 5, "Warn"},
                           {17, 17, -63, -42, 7.360, 3.680, 25, "Strong"},
                           {18, 18, 58, 44, 3.606, 4.000, 3, "Warn"},
                           {19, 20, -63, -42, 7.360, 3.680, 25, "Strong"},
                           {21, 21, -53, -47, 1.581, 0.791, 5, "Warn"},
                           {22, 22, -68, -40, 180, 180, 1, "Warn"},
                           {23, 23, -63, -42, 7.360, 3.680, 25, "Strong"},
                           {24, 25, -61, -43, 7.906, 3.953, 5, "Warn"},
                           {26, 26, 9999, 9999, 0, 0, 0, "None"}};

/// Compares pred.tab with kHelix; `shift` is added to the residue numbers.
void expectHelix(const OutputTable& pred, int shift = 0) {
  EXPECT_EQ(pred.rows.size(), 26U);
  for (const Expected& e : kHelix)
    for (int resid = e.first + shift; resid <= e.last + shift; ++resid) {
      SCOPED_TRACE(resid);
      EXPECT_NEAR(pred.number(resid, "PHI"), e.phi, 6e-4);
      EXPECT_NEAR(pred.number(resid, "PSI"), e.psi, 6e-4);
      EXPECT_NEAR(pred.number(resid, "DPHI"), e.dphi, 6e-4);
      EXPECT_NEAR(pred.number(resid, "DPSI"), e.dpsi, 6e-4);
      EXPECT_EQ(pred.number(resid, "COUNT"), e.count);
      EXPECT_EQ(pred.text(resid, "CLASS"), e.shape);
    }
}

TEST(Prediction, TorsionsOfTheSyntheticHelix) {
  const TempDir dir;
  predict(dir, support::helixQuery());
  const OutputTable pred(dir / "pred.tab");
  expectHelix(pred);
  // Every atom of the seven residues is 1 off, CB costs 1.5: D = 3.5 x (5 + 2.25), DIST the mean of D / 42 /
  // score over scores from 4.392 down to 4.2112: 0.14047. Beside the glycine the scores themselves are the
  // keys: at 15 it takes 0.49 x 0.90 off and adds 0.49 x -9.99 and -0.1 (dissimilar types): 4.3016 - 5.4361.
  EXPECT_NEAR(pred.number(6, "DIST"), 0.1405, 6e-4);
  EXPECT_NEAR(pred.number(15, "DIST"), -1.1345, 6e-4);
  // RCI shifts N -2, HA -0.3, C 2, CA 2.4, CB -0.4, scaled by weight 5 x (1.18 + 2.55 + 3.6 + 4.32 + 0.15) /
  // 5 = 11.8; RCI = 11.8^-1.5 / 1.125 = 0.02193; S2 = 1.003 - 0.4 ln(1 + 17.7 RCI).
  EXPECT_NEAR(pred.number(6, "S2"), 0.872, 6e-4);
  EXPECT_EQ(pred.number(6, "CS_COUNT"), 12);   // three residues without HA and HN
  EXPECT_EQ(pred.number(17, "CS_COUNT"), 11);  // glycine has no CB either
  EXPECT_EQ(pred.number(1, "CS_COUNT"), 8);
  EXPECT_EQ(pred.data.at(1), "DATA SEQUENCE AAAAAAAAAAALAAAAAGAAAWAAAA");
}

TEST(Prediction, OtherTablesOfTheSyntheticHelix) {
  const TempDir dir;
  predict(dir, support::helixQuery());
  const OutputTable adjusted(dir / "predAdjCS.tab"), boxes(dir / "predABP.tab"), ss(dir / "predSS.tab"),
      s2(dir / "predS2.tab"), chi1(dir / "predChi1.tab"), all(dir / "predAll.tab");
  // Reference of glycine's HA 4.27, observed (3.87 + 4.07) / 2; the row follows N.
  const auto glycine = adjusted.rows.at(17 * 6 + 1);
  EXPECT_EQ(glycine.at("RESID") + glycine.at("ATOMNAME"), "18HA");
  EXPECT_EQ(std::stod(glycine.at("SHIFT")), -0.3);
  EXPECT_EQ(std::stod(glycine.at("CS_OBS")), 3.97);
  EXPECT_EQ(adjusted.rows.size(), 26U * 6 - 1);

  EXPECT_EQ(boxes.number(6, "Q_96"), 0.900);
  EXPECT_EQ(boxes.number(6, "Q_209"), 0.000);
  EXPECT_EQ(boxes.number(18, "Q_209"), 0.900);
  EXPECT_EQ(boxes.number(6, "CLUST_N"), 1);
  EXPECT_EQ(boxes.number(6, "CLUST_1_PER"), 1.0);

  // ss 0.7 0.2 0.1 and ss5 0.5 0.1 0.4 added and normalised.
  EXPECT_EQ(ss.number(6, "Q_H"), 0.600);
  EXPECT_EQ(ss.number(6, "Q_E"), 0.150);
  EXPECT_EQ(ss.text(6, "SS_CLASS"), "H");
  EXPECT_EQ(ss.text(1, "SS_CLASS"), "L");
  EXPECT_EQ(ss.data.at(2), "DATA PREDICTED_SS LHHHHHHHHH HHHHHHHHHH HHHHHL");
  EXPECT_EQ(ss.data.at(3), "DATA CONFIDENCE   0333333333 3333333333 333330");
  EXPECT_NEAR(s2.number(6, "S2"), 0.872, 6e-4);

  // Leucine 12: five g- fragments (mean score in bin 2) and four t (bin 5); g+ has none (bin 10). The chi1
  // values are -70 to -50. The weights of tryptophan are all 0.
  EXPECT_EQ(chi1.residues(), (std::vector<int>{12, 22}));
  EXPECT_NEAR(chi1.number(12, "Q_Gm"), 0.90, 1e-6);
  EXPECT_NEAR(chi1.number(12, "Q_Gp"), 0.04, 1e-6);
  EXPECT_NEAR(chi1.number(12, "Q_T"), 0.06, 1e-6);
  EXPECT_EQ(chi1.text(12, "CLASS") + ' ' + chi1.text(12, "CHI1") + ' ' + chi1.text(12, "DCHI1"),
            "g- -60.0 7.9");
  EXPECT_EQ(chi1.text(22, "CLASS") + ' ' + chi1.text(22, "CHI1") + ' ' + chi1.text(22, "Q_T"),
            "na 9999.0 0.000");

  // 15 residues with 25 matches, 7 with 5, glycine 3 and tryptophan 1.
  EXPECT_EQ(all.rows.size(), 15U * 25 + 7 * 5 + 3 + 1);
  const auto first = std::find_if(all.rows.begin(), all.rows.end(),
                                  [](const auto& row) { return row.at("RESID_Q_CENTER") == "6"; });
  ASSERT_NE(first, all.rows.end());
  EXPECT_EQ(first->at("SOURCE"), "helix0") << "the highest score is the nearest at equal shift distances";
  EXPECT_EQ(first->at("DIST"), "0.138");
  EXPECT_EQ(first->at("W"), "1.00");
  EXPECT_EQ(first->at("RESNAMES_DB") + ' ' + first->at("PHI") + ' ' + first->at("PHI_R1"),
            "AAAAAAA -75.0 -63.0");
  EXPECT_EQ(all.rows.back().at("INDEX"), std::to_string(all.rows.size()));
}

TEST(Prediction, ProtonShiftsBringInTheTwoLevelNetwork) {
  const TempDir dir;
  predict(dir, support::helixQuery(), {});
  expectHelix(OutputTable(dir / "pred.tab"));
  const OutputTable boxes(dir / "predABP.tab");
  // Five-residue windows that reach beyond the chain end fall back on the one-level network.
  EXPECT_EQ(boxes.number(2, "Q_96"), 0.900);
  EXPECT_EQ(boxes.number(3, "Q_96"), 0.880);
  EXPECT_EQ(boxes.number(24, "Q_96"), 0.880);
  EXPECT_EQ(boxes.number(25, "Q_96"), 0.900);
  EXPECT_EQ(boxes.number(18, "Q_209"), 0.900);
  EXPECT_EQ(OutputTable(dir / "pred.tab").number(6, "CS_COUNT"), 18);
}

TEST(Prediction, NumberingMayBeNegative) {
  const TempDir dir;
  predict(dir, support::helixQuery(-9));
  expectHelix(OutputTable(dir / "pred.tab"), -10);
  const OutputTable ss(dir / "predSS.tab");
  EXPECT_EQ(ss.text(-9, "SS_CLASS"), "L");
  EXPECT_EQ(ss.text(0, "SS_CLASS"), "H");
  EXPECT_EQ(OutputTable(dir / "predChi1.tab").residues(), (std::vector<int>{2, 12}));
}

TEST(Prediction, ThreeLetterNamesAndProtonNamedH) {
  const TempDir dir;
  support::Query query = support::helixQuery();
  for (int resid = 1; resid <= 26; ++resid) {
    query.shifts[{resid, "H"}] = query.shifts.at({resid, "HN"});
    query.shifts.erase({resid, "HN"});
  }
  support::writeFile(dir / "query.tab", query.table(true));
  const ProgramRun run = runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-in", "query.tab"});
  EXPECT_EQ(run.err.find("Mismatch"), std::string::npos) << run.err;
  expectHelix(OutputTable(dir / "pred.tab"));
}

TEST(Prediction, GapsInTheShifts) {
  const TempDir dir;
  support::Query query = support::helixQuery();
  query.removeResidue(7);
  predict(dir, query);
  // One residue without shifts: its neighbours carry it, each with its own secondary structure network.
  EXPECT_EQ(OutputTable(dir / "pred.tab").text(7, "CLASS"), "Strong");
  OutputTable ss(dir / "predSS.tab");
  EXPECT_EQ(ss.number(6, "Q_H"), 0.650);  // ss.next 0.8 0.1 0.1
  EXPECT_EQ(ss.number(7, "Q_E"), 0.450);  // ss.center 0.1 0.8 0.1
  EXPECT_EQ(ss.number(8, "Q_L"), 0.500);  // ss.prev 0.2 0.2 0.6
  EXPECT_EQ(ss.text(6, "SS_CLASS") + ss.text(7, "SS_CLASS") + ss.text(8, "SS_CLASS"), "HEL");

  query.removeResidue(8);
  predict(dir, query);
  // Two in a row: too little for the search; the secondary structure comes from the sequence (0.2 0.2 0.6).
  const OutputTable pred(dir / "pred.tab");
  EXPECT_EQ(pred.text(7, "CLASS") + pred.text(8, "CLASS"), "NoneNone");
  EXPECT_EQ(pred.text(7, "PHI") + ' ' + pred.text(7, "S2"), "9999.000 0.000");
  EXPECT_EQ(pred.text(6, "CLASS"), "Strong");
  EXPECT_EQ(OutputTable(dir / "predSS.tab").text(7, "SS_CLASS"), "c");
  EXPECT_EQ(OutputTable(dir / "predSS.tab").number(7, "Q_L"), 0.600);
}

TEST(Prediction, ComparisonWithAReferenceStructure) {
  const TempDir dir;
  // Residues 5 to 13: residue 6 is extended (psi 138, off by 180), the others agree; leucine 12 has chi1 -65.
  std::vector<support::Torsions> torsions(9, {-63, -42, 180});
  torsions[1].psi = 138;
  torsions[7].chi1 = -65;
  support::writeFile(dir / "reference.pdb", support::peptidePdb(5, torsions));
  predict(dir, support::helixQuery(), {"-noproton", "-ref", "reference.pdb", "-refTitle", "made up"});
  const OutputTable pred(dir / "pred.tab"), chi1(dir / "predChi1.tab");
  EXPECT_EQ(pred.text(5, "CLASS") + pred.text(6, "CLASS") + pred.text(7, "CLASS"), "StrongBadStrong");
  EXPECT_EQ(
      std::count(pred.remarks.begin(), pred.remarks.end(), "  Predictions Compared to PDB Input made up"), 1);
  EXPECT_NEAR(chi1.number(12, "CHI1_OBS"), -65.0, 0.2);
  EXPECT_EQ(chi1.number(22, "CHI1_OBS"), 9999.0);
}

TEST(Prediction, FlexibleResiduesAreDynamic) {
  const TempDir dir;
  support::Query query = support::helixQuery();
  // The random-coil shifts of poly-alanine themselves, and no estimates of the missing protons: every shift
  // at the floor of 0.5 gives RCI (1 / 1.515)^1.5 / 1.125 and S2 0.105 inside the chain.
  for (auto& [key, ppm] : query.shifts) {
    const std::map<std::string, double> coil{{"N", 123.83}, {"HA", 4.27},  {"C", 177.53},
                                             {"CA", 52.68}, {"CB", 19.30}, {"HN", 8.26}};
    if (coil.contains(key.second)) ppm = coil.at(key.second);
  }
  struct {
    const char *threshold, *shape;
  } const cases[] = {{"0.6", "Dyn"}, {"0.05", "Strong"}, {"0.2", "Dyn"}, {"2", "Dyn"}};
  for (const auto& c : cases) {
    predict(dir, query, {"-noproton", "-excl", "library", "-s2Thresh", c.threshold});
    const OutputTable pred(dir / "pred.tab");
    EXPECT_EQ(pred.text(6, "CLASS"), c.shape) << c.threshold;
    EXPECT_NEAR(pred.number(6, "S2"), 0.105, 6e-4);
    EXPECT_EQ(pred.text(1, "CLASS"), "None");
  }
}

}  // namespace
