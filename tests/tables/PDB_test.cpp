// Reference structures: atom records, torsions, disulfide bonds, residue names.
#include "tables/PDB.h"

#include <cmath>

#include "tables/table_test.h"

namespace {

class PDBTest : public TableTest {};

/// An atom record; `name` fills columns 13 to 16.
std::string atom(const char* name, const char* residue, int resid, double x, double y, double z,
                 const char* kind = "ATOM") {
  char line[120];
  std::snprintf(line, sizeof line, "%-6s%5d %-4s %-3s A%4d    %8.3f%8.3f%8.3f%6.2f%6.2f\n", kind, 7, name,
                residue, resid, x, y, z, 1.0, 12.5);
  return line;
}

CORdata at(double x, double y, double z) {
  CORdata a;
  a.atomName = "X";
  a.x = static_cast<float>(x);
  a.y = static_cast<float>(y);
  a.z = static_cast<float>(z);
  return a;
}

TEST_F(PDBTest, ReadsFixedColumns) {
  const PDB pdb(
      file("HEADER\n\n" + atom(" N", "LEU", -5, 1.5, -2.25, 3.125) + atom(" H", "LEU", -5, 1, 2, 3) +
           atom("1HB", "LEU", -5, 1, 2, 3) + atom("2HG1", "LEU", -5, 1, 2, 3) +
           atom(" CA", "MSE", 9, 1, 2, 3, "HETATM") + atom(" N", "LEU", -5, 4, 4, 4).substr(0, 54) + "\r\n" +
           atom(" CA", "HIS", 12, 100.5, -999.999, -100.25) + atom(" C", "HIS", 99, 1, 2, 3).substr(0, 53) +
           "\nATOM\nATOM      1  C   HIS A  98       1.000           3.000\nENDMDL\n" +
           atom(" C", "HIS", 13, 1, 2, 3)));
  EXPECT_FALSE(pdb.isNull());
  EXPECT_EQ(pdb.firstResid, -5);
  EXPECT_EQ(pdb.lastResid, 12);
  const CORdata n = pdb.getEntry(1, -5, "N");
  EXPECT_EQ(n.x, 4.0F) << "the later of equal atoms, though its line ends after z";
  EXPECT_EQ(n.bFactor, 0.0F);
  const CORdata ca = pdb.getEntry(1, 12, "CA");
  EXPECT_EQ(ca.serial, 7);
  EXPECT_EQ(ca.resName + ca.chainID, "HISA");
  EXPECT_EQ(ca.y, -999.999F);
  EXPECT_EQ(ca.z2, -100.25F);
  EXPECT_EQ(ca.bFactor, 12.5F);
  for (const char* name : {"HN", "HB1", "HG12"}) EXPECT_EQ(pdb.getEntry(1, -5, name).atomName, name);
  EXPECT_EQ(pdb.getEntry(1, -5, "H").atomName, "");
  EXPECT_EQ(pdb.getEntry(2, -5, "N").atomName, "");
  EXPECT_EQ(pdb.resName1, (std::map<std::int32_t, std::string>{{-5, "L"}, {12, "H"}}));
  EXPECT_EQ(pdb.resName3.at(12), "HIS");
}

TEST_F(PDBTest, MissingFilesGiveNoStructure) {
  standardErrorOf([&] { EXPECT_TRUE(PDB(path("none")).isNull()); });
  const PDB empty(file("TER\n" + atom(" N", "ALA", 1, 0, 0, 0)));
  EXPECT_FALSE(empty.isNull());
  EXPECT_EQ(empty.firstResid, 9999);
  EXPECT_EQ(empty.lastResid, -9999);
  EXPECT_EQ(empty.getPhi(1, INT32_MIN), 9999.0F);
  EXPECT_EQ(empty.getPsi(1, INT32_MAX), 9999.0F);
}

// Torsions of the fragment below, computed apart from the program with the atan2 formula.
TEST_F(PDBTest, MeasuresTorsions) {
  const auto fragment = [](const char* residue, const char* gamma) {
    return atom(" C", "ALA", 1, 12.713, 4.512, -5.431) + atom(" N", residue, 2, 12.240, 3.401, -4.833) +
           atom(" CA", residue, 2, 11.010, 3.120, -5.560) + atom(" C", residue, 2, 10.244, 4.393, -5.880) +
           atom(" CB", residue, 2, 10.150, 2.155, -4.740) + atom(gamma, residue, 2, 10.702, 0.790, -4.480) +
           atom(" N", "ALA", 3, 10.120, 5.340, -4.951) + atom(" CA", "ALA", 3, 1, 2, 3) +
           atom(" C", "ALA", 3, 4, 2, 3);
  };
  const PDB pdb(file(fragment("LEU", " CG")));
  EXPECT_NEAR(pdb.getPhi(1, 2), -39.8586, 1e-3);
  EXPECT_NEAR(pdb.getPsi(1, 2), -43.0834, 1e-3);
  EXPECT_NEAR(pdb.getChi1(1, 2), -63.4807, 1e-3);
  for (const float undefined : {pdb.getPhi(1, 1), pdb.getPhi(1, 4), pdb.getPsi(1, 3), pdb.getPsi(1, 1),
                                pdb.getChi1(1, 3), pdb.getChi1(1, 77), pdb.getPhi(2, 2)}) {
    EXPECT_EQ(undefined, 9999.0F);
  }
  const struct {
    const char* residue;
    const char* gamma;
    bool defined;
  } cases[] = {{"VAL", " CG1", true}, {"ILE", " CG1", true}, {"THR", " OG1", true}, {"SER", " OG", true},
               {"CYS", " SG", true},  {"UNK", " CG", true},  {"THR", " CG", false}, {"VAL", " CG2", false},
               {"GLY", " CG", false}, {"ALA", " CG", false}};
  for (const auto& c : cases) {
    const PDB other(file(fragment(c.residue, c.gamma)));
    EXPECT_NEAR(other.getChi1(1, 2), c.defined ? -63.4807 : 9999.0, 1e-3) << c.residue << c.gamma;
  }
}

TEST(PDBGeometry, DihedralAngles) {
  const CORdata a = at(1, 0, 0), b = at(0, 0, 0), c = at(0, 0, 1);
  for (int degrees = -170; degrees <= 170; degrees += 10) {
    const double t = degrees * 3.14159265358979 / 180.0;
    EXPECT_NEAR(PDB::getDihedralAngle(a, b, c, at(std::cos(t), std::sin(t), 1.5)), degrees, 2e-4);
  }
  EXPECT_EQ(PDB::getDihedralAngle(a, b, c, at(1, 0, 1)), 0.0F);
  EXPECT_FLOAT_EQ(PDB::getDihedralAngle(a, b, c, at(-1, 0, 1)), 180.0F);
  EXPECT_EQ(PDB::getDihedralAngle(a, b, c, CORdata{}), 9999.0F);
  EXPECT_EQ(PDB::getDihedralAngle(a, b, b, a), 9999.0F) << "no axis";
  EXPECT_EQ(PDB::getDihedralAngle(at(0, 0, -1), b, c, a), 9999.0F) << "three atoms on one line";
  EXPECT_EQ(PDB::getDihedralAngle(at(3e38, 0, 0), at(-3e38, 0, 0), c, a), 9999.0F) << "out of range";
}

TEST(PDBGeometry, ArcCosineBeyondItsRange) {
  EXPECT_EQ(PDB::arccos_(1.0000001F), 0.0F);
  EXPECT_FLOAT_EQ(PDB::arccos_(-1.5F), 3.1415927F);
}

TEST_F(PDBTest, BondsCysteinesAtTwoAndAHalfAngstrom) {
  const auto sulfur = [](int resid, double x) { return atom(" SG", "CYS", resid, x, 0, 0); };
  const struct {
    const char* name;
    std::string atoms;
    std::string codes;
  } cases[] = {{"bonded", sulfur(10, 0) + sulfur(30, 2.0), "cc"},
               {"at the limit", sulfur(10, 0) + sulfur(14, 2.5), "cc"},
               {"too far", sulfur(10, 0) + sulfur(30, 2.501), "CC"},
               {"three apart in sequence", sulfur(10, 0) + sulfur(13, 2.0), "CC"},
               {"no sulfur", atom(" CA", "CYS", 10, 0, 0, 0) + atom(" CA", "CYS", 30, 0, 0, 0), "CC"},
               {"one sulfur, at the origin", sulfur(10, 0) + atom(" CA", "CYS", 30, 0, 0, 0), "CC"},
               {"other residue", sulfur(10, 0) + atom(" SG", "MET", 30, 2, 0, 0), "CM"}};
  for (const auto& c : cases) {
    const PDB pdb(file(c.atoms));
    std::string codes;
    for (const auto& [resid, code] : pdb.resName1) codes += code;
    EXPECT_EQ(codes, c.codes) << c.name;
    EXPECT_EQ(pdb.resName3.at(10), c.codes[0] == 'c' ? "cys" : "CYS") << c.name;
    EXPECT_EQ(pdb.isSSBonded(1, 10), c.codes[0] == 'c') << c.name;
  }
}

TEST(ResidueNames, ConvertToOneLetter) {
  const std::string pairs =
      "ALA A CYS C cys c ASP D GLU E PHE F GLY G HIS H HIS+ H his h ILE I LYS K LYS+ K LEU L MET M ASN N PRO "
      "P GLN Q "
      "ARG R ARG+ R SER S THR T VAL V TRP W TYR Y ala X Ala X UNK X A X AL X ALA+ X HIS- X MSE X ASX X";
  std::istringstream in(pairs);
  for (std::string name, code; in >> name >> code;) EXPECT_EQ(PDB::getOneAAName(name), code) << name;
  EXPECT_EQ(PDB::getOneAAName(""), "X");
}

}  // namespace
