// Plain shift lists: XEASY, Sparky, SHIFTY, CSV and TSV, the program's own table; sequences beside them.
#include <gtest/gtest.h>

#include "convert/readers.h"
#include "convert_support.h"
#include "support/process.h"

namespace {

using support::Converted;
using support::convertString;
using support::with;

using Rows = std::vector<std::string>;

convert::Settings withSequence(const support::TempDir& folder, const std::string& text,
                               const std::string& name = "sequence.fasta") {
  support::writeFile(folder / name, text);
  return with(&convert::Settings::sequenceFile, (folder / name).string());
}

const std::string kProt =
    "# shifts\n  1  8.310 0.020 HN   7\n  2 61.900 0.200 CA  7\n  3 999.000 0.000 CB 7\n"
    "  4 3.90 0.02 HA1 8\n  5 4.10 0.02 HA2 8\n  6 57.0 0.2 CA 9\n  7 176.1 0.2 C 21\n";

TEST(ConvertLists, XeasyPairWithVariantsAndLinkers) {
  const support::TempDir folder;
  const std::string seq = "THR 7\nGLY\nASP-\n# chains are joined\nPL\nLL5 11\nLP\nCYSS 20\ncPRO\nARG+\n";
  const Converted both = convertString(kProt, withSequence(folder, seq, "a.seq"));
  EXPECT_TRUE(both.ambiguous) << both.report();
  convert::Settings settings = withSequence(folder, seq, "a.seq");
  settings.chain = "A";
  const Converted first = convertString(kProt, settings);
  EXPECT_EQ(first.rows(),
            (Rows{"7 T HN 8.310", "7 T CA 61.900", "8 G HA2 3.90", "8 G HA3 4.10", "9 D CA 57.0"}));
  EXPECT_EQ(first.conversion.sequence, "TGD");
  settings.chain = "B";
  const Converted second = convertString(kProt, settings);
  EXPECT_EQ(second.rows(), (Rows{"21 P C 176.1"})) << second.report();
  EXPECT_EQ(second.conversion.sequence, "cPR");
}

TEST(ConvertLists, XeasyFindsTheSequenceBesideIt) {
  const support::TempDir folder;
  support::writeFile(folder / "x.seq", "THR 7\nGLY\nASP\n");
  const std::string shifts = kProt.substr(0, kProt.find("  7 176.1"));
  const Converted result = convertString(shifts, {}, (folder / "x.prot").string());
  EXPECT_EQ(result.conversion.sequence, "TGD") << result.report();
  EXPECT_FALSE(convertString(shifts, {}, (folder / "other.prot").string()).ok);
  const Converted fasta = convertString(shifts, withSequence(folder, ">x\nMKTGD\n"));
  EXPECT_EQ(fasta.conversion.firstResid, 1) << "nothing tells the numbers of unnamed residues";
}

const std::string kSparky =
    "  Group   Atom  Nuc    Shift   SDev  Assignments\n\n"
    "  T7  CA 13C 61.900 0.031 3\n  T7 HN 1H 8.31 0.0 1\n  G8 HA# 1H 3.95 0.0 2\n  ? N 15N 110.0 0 1\n  ALA9 "
    "CO 13C 177.2 0 1\n";

TEST(ConvertLists, SparkyTakesASequenceThatFits) {
  const support::TempDir folder;
  const Rows rows = {"7 T HN 8.31", "7 T CA 61.900", "8 G HA2 3.95", "9 A C 177.2"};
  EXPECT_EQ(convertString(kSparky).conversion.sequence, "TGA") << "put together from the groups";
  const Converted whole = convertString(kSparky, withSequence(folder, ">p\nMKQLEFTG\nAK*\n"));
  EXPECT_EQ(whole.rows(), rows) << whole.report();
  EXPECT_EQ(whole.conversion.sequence, "MKQLEFTGAK");
  EXPECT_EQ(whole.conversion.firstResid, 1);
  const Converted shifted = convertString(kSparky, withSequence(folder, "kqleftgak\n"));
  EXPECT_EQ(shifted.rows(), rows) << "the residue types place the sequence" << shifted.report();
  EXPECT_EQ(shifted.conversion.firstResid, 2);
  const Converted wrong = convertString(kSparky, withSequence(folder, ">p\nMKQLEFSSSK\n"));
  EXPECT_FALSE(wrong.ok);
  EXPECT_GT(wrong.error().line, 0);
}

TEST(ConvertLists, SparkyChains) {
  const support::TempDir folder;
  convert::Settings settings = withSequence(folder, "TG");
  const std::string text =
      "T1.A CA 13C 61.0 0 1\nG2.A CA 13C 45.0 0 1\nB:T1 CA 13C 62.0 0 1\nB:G2 CA 13C 46.0 0 1\n";
  EXPECT_TRUE(convertString(text, settings).ambiguous);
  settings.chain = "B";
  EXPECT_EQ(convertString(text, settings).rows(), (Rows{"1 T CA 62.0", "2 G CA 46.0"}));
}

TEST(ConvertLists, ShiftyZeroIsMissing) {
  const Converted result = convertString(
      "#NUM AA HA CA CB CO N HN\n3 T 4.3 61.9 0.00 175.0 115.2 8.1\n4 G 3.9 45.1 0 0 0 0\n7 A 0 52.0 19.0 0 "
      "0 0\n");
  EXPECT_EQ(result.rows(), (Rows{"3 T N 115.2", "3 T HN 8.1", "3 T HA 4.3", "3 T C 175.0", "3 T CA 61.9",
                                 "4 G HA2 3.9", "4 G CA 45.1", "7 A CA 52.0", "7 A CB 19.0"}))
      << result.report();
  EXPECT_EQ(result.conversion.sequence, "TGXXA");
}

TEST(ConvertLists, DelimitedUnderAnyColumnNames) {
  const Rows rows = {"3 T HN 8.1", "3 T CA 61.9", "4 G CA 45.1"};
  const std::vector<std::string> texts = {
      "resid,resname,atom,shift\n3,THR,H,8.1\n3,THR,CA,61.9\n4,GLY,CA,45.1\n",
      "Seq_ID\tComp_ID\tAtom_ID\tValue\tnote\n3\tThr\tHN\t8.1\ta b\n3\tThr\tCA\t61.9\t\n4\tGly\tCA\t45.1\t\n",
      "ppm;atom;residue;resname\n8.1;H;3;T\n61.9;CA;3;T\n45.1;CA;4;G\n",
      "\"resid\",\"resname\",\"atom\",\"shift\"\r\n3,\"THR\",\"H\",8.1\r\n\r\n3,THR,CA,61.9\r\n4,GLY,CA,45.1",
      "resid resname atom shift\n3 T H 8.1\n3 T CA 61.9\n3 T CB NA\n4 G CA 45.1\n"};
  for (const std::string& text : texts) {
    const Converted result = convertString(text);
    EXPECT_EQ(result.rows(), rows) << text << result.report();
    EXPECT_EQ(result.conversion.sequence, "TG");
  }
}

TEST(ConvertLists, OwnTableComesBackAsItIs) {
  const support::TempDir folder;
  const std::string table =
      "REMARK from somewhere\nDATA FIRST_RESID -1\nDATA SEQUENCE GcA\nVARS RESID RESNAME ATOMNAME SHIFT\n"
      "FORMAT %4d %1s %4s %8.3f\n -1 G HA2 3.9\n 0 c CB 41.23456\n 1 A HN 8.1\n";
  const Converted first = convertString(table);
  ASSERT_TRUE(first.ok) << first.report();
  const std::string path = (folder / "out.tab").string();
  EXPECT_EQ(convert::writeTable(first.conversion, first.log, path), "");
  const Converted second = convertString(support::readFile(path));
  ASSERT_EQ(second.conversion.rows.size(), 3U) << second.report();
  EXPECT_EQ(second.conversion.sequence, "GcA");
  EXPECT_EQ(second.conversion.firstResid, -1);
  EXPECT_EQ(second.conversion.rows[1].value, 41.23456) << "no digit is lost";
}

}  // namespace
