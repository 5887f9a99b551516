// Whole runs on the synthetic installation, whose results are worked out by hand (support/synthetic.h).
#include <algorithm>

#include "support/helix_run.h"

namespace {

using support::OutputTable;

class Prediction : public support::HelixRun {};

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

TEST_F(Prediction, TorsionsOfTheSyntheticHelix) {
  ASSERT_EQ(run().status, 0);
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

TEST_F(Prediction, OtherTablesOfTheSyntheticHelix) {
  ASSERT_EQ(run().status, 0);
  const OutputTable adjusted(dir / "predAdjCS.tab"), boxes(dir / "predABP.tab"), ss(dir / "predSS.tab"),
      s2(dir / "predS2.tab"), chi1(dir / "predChi1.tab"), all(dir / "predAll.tab");
  // Reference of glycine's HA 4.27, observed (3.87 + 4.07) / 2; the row follows N.
  const auto glycine = adjusted.rows.at(17 * 6 + 1);
  EXPECT_EQ(glycine.at("RESID") + glycine.at("ATOMNAME"), "18HA");
  EXPECT_EQ(std::stod(glycine.at("SHIFT")), -0.3);
  EXPECT_EQ(std::stod(glycine.at("CS_OBS")), 3.97);
  EXPECT_EQ(adjusted.rows.size(), 26U * 6 - 1);

  // ss 0.7 0.2 0.1 and ss5 0.5 0.1 0.4 added and normalised. Leucine 12: five g- fragments (mean score in bin
  // 2) and four t (bin 5); g+ has none (bin 10). The chi1 values are -70 to -50. The weights of tryptophan
  // are all 0.
  const struct {
    const OutputTable& table;
    int resid;
    const char *columns, *cells;
  } cases[] = {{boxes, 6, "Q_96 Q_209 CLUST_N CLUST_1_PER", "0.900 0.000 1 1.000"},
               {boxes, 18, "Q_209", "0.900"},
               {ss, 6, "Q_H Q_E SS_CLASS", "0.600 0.150 H"},
               {s2, 6, "S2", "0.872"},
               {chi1, 12, "Q_Gm Q_Gp Q_T CLASS CHI1 DCHI1", "0.900 0.040 0.060 g- -60.0 7.9"},
               {chi1, 22, "Q_T CLASS CHI1", "0.000 na 9999.0"}};
  for (const auto& c : cases) EXPECT_EQ(c.table.texts(c.resid, c.columns), c.cells) << c.columns;
  EXPECT_EQ(ss.data.at(2), "DATA PREDICTED_SS LHHHHHHHHH HHHHHHHHHH HHHHHL");
  EXPECT_EQ(ss.data.at(3), "DATA CONFIDENCE   0333333333 3333333333 333330");
  EXPECT_EQ(chi1.residues(), (std::vector<int>{12, 22}));

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

/// With protons, numbers below zero, three-letter names and protons named H: the same helix.
TEST_F(Prediction, ProtonShiftsBringInTheTwoLevelNetwork) {
  for (const int first : {1, -9}) {
    SCOPED_TRACE(first);
    support::Query query = support::helixQuery(first);
    for (int resid = first; first == 1 && resid <= 26; ++resid) {
      query.shifts[{resid, "H"}] = query.shifts.at({resid, "HN"});
      query.shifts.erase({resid, "HN"});
    }
    support::writeFile(dir / "query.tab", query.table(first == 1));
    const auto run = support::runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-in", "query.tab"});
    EXPECT_FALSE(support::contains(run.err, "Mismatch")) << run.err;
    expectHelix(table("pred.tab"), first - 1);
    const OutputTable boxes = table("predABP.tab");
    // Five-residue windows that reach beyond the chain end fall back on the one-level network.
    const std::pair<int, double> expected[] = {{2, 0.900}, {3, 0.880}, {24, 0.880}, {25, 0.900}};
    for (const auto& [resid, value] : expected) EXPECT_EQ(boxes.number(resid + first - 1, "Q_96"), value);
    EXPECT_EQ(boxes.number(17 + first, "Q_209"), 0.900);
    EXPECT_EQ(table("pred.tab").number(5 + first, "CS_COUNT"), 18);
    EXPECT_EQ(table("predSS.tab").text(first, "SS_CLASS"), "L");
    EXPECT_EQ(table("predChi1.tab").residues(), (std::vector<int>{11 + first, 21 + first}));
  }
}

TEST_F(Prediction, GapsInTheShifts) {
  support::Query query = support::helixQuery();
  query.removeResidue(7);
  write(query);
  run();
  // One residue without shifts: its neighbours carry it, each with its own secondary structure network.
  EXPECT_EQ(table("pred.tab").text(7, "CLASS"), "Strong");
  OutputTable ss = table("predSS.tab");
  EXPECT_EQ(ss.text(6, "SS_CLASS") + ss.text(7, "SS_CLASS") + ss.text(8, "SS_CLASS"), "HEL");

  query.removeResidue(8);
  write(query);
  run();
  // Two in a row: too little for the search; the secondary structure comes from the sequence.
  const OutputTable pred = table("pred.tab");
  EXPECT_EQ(pred.text(6, "CLASS") + pred.text(7, "CLASS") + pred.text(8, "CLASS"), "StrongNoneNone");
  EXPECT_EQ(pred.texts(7, "PHI S2"), "9999.000 0.000");
  EXPECT_EQ(table("predSS.tab").text(7, "SS_CLASS"), "c");
}

TEST_F(Prediction, ComparisonWithAReferenceStructure) {
  // Residue 6 has phi and psi 90, leucine 12 has chi1 90; other torsions are unknown.
  std::string pdb;
  for (const char* atom :
       {"C   ALA A   5       0.000   1.000   0.000", "N   ALA A   6       0.000   0.000   0.000",
        "CA  ALA A   6       1.500   0.000   0.000", "C   ALA A   6       1.500   0.000   1.500",
        "N   ALA A   7       1.500   1.500   1.500", "N   LEU A  12       0.000   1.000   0.000",
        "CA  LEU A  12       0.000   0.000   0.000", "CB  LEU A  12       1.500   0.000   0.000",
        "CG  LEU A  12       1.500   0.000   1.500"})
    pdb += std::string("ATOM      1  ") + atom + "  1.00 10.00\n";
  support::writeFile(dir / "reference.pdb", pdb);
  run({"-ref", "reference.pdb", "-refTitle", "made up"});
  const OutputTable pred(dir / "pred.tab"), chi1(dir / "predChi1.tab");
  EXPECT_EQ(pred.text(5, "CLASS") + pred.text(6, "CLASS") + pred.text(7, "CLASS"), "StrongBadStrong");
  EXPECT_EQ(std::count(pred.remarks.begin(), pred.remarks.end(),
                       "    Bad:  predictions with large deviation to reference PDB."),
            1);
  EXPECT_EQ(
      std::count(pred.remarks.begin(), pred.remarks.end(), "  Predictions Compared to PDB Input made up"), 1);
  EXPECT_EQ(chi1.number(12, "CHI1_OBS"), 90.0);
  EXPECT_EQ(chi1.number(22, "CHI1_OBS"), 9999.0);
}

TEST_F(Prediction, FlexibleResiduesAreDynamic) {
  support::Query query = support::helixQuery();
  // The random-coil shifts of poly-alanine themselves, and no estimates of the missing protons: every shift
  // at the floor of 0.5 gives RCI (1 / 1.515)^1.5 / 1.125 and S2 0.105 inside the chain.
  for (auto& [key, ppm] : query.shifts) {
    const std::map<std::string, double> coil{{"N", 123.83}, {"HA", 4.27},  {"C", 177.53},
                                             {"CA", 52.68}, {"CB", 19.30}, {"HN", 8.26}};
    if (coil.contains(key.second)) ppm = coil.at(key.second);
  }
  write(query);
  const std::pair<const char*, const char*> cases[] = {{"0.6", "Dyn"}, {"0.05", "Strong"}, {"2", "Dyn"}};
  for (const auto& [threshold, shape] : cases) {
    run({"-excl", "library", "-s2Thresh", threshold});
    const OutputTable pred = table("pred.tab");
    EXPECT_EQ(pred.text(6, "CLASS"), shape) << threshold;
    EXPECT_NEAR(pred.number(6, "S2"), 0.105, 6e-4);
    EXPECT_EQ(pred.text(1, "CLASS"), "None");
  }
}

}  // namespace
