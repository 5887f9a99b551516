// Tables of shifts in the dialects of programs of the field: which column is what, and what is said about it.
#include <gtest/gtest.h>

#include "convert_support.h"
#include "support/process.h"

namespace {

using support::Converted;
using support::convertString;
using support::with;

using Rows = std::vector<std::string>;

const Rows kRows = {"5 M N 120.51", "5 M HN 8.12", "5 M CA 55.10", "5 M CB 32.95",
                    "6 K N 121.30", "6 K HN 8.31", "6 K CA 56.20", "6 K CB 33.01"};

enum Said { kNothing, kGuess };

struct Dialect {
  const char* name;
  std::string text;
  Said said;
};

/// One line for each shift of kRows, made by `line(residue, letter, three letters, atom, value)`.
template <class Line>
std::string list(Line line) {
  std::string text;
  int count = 0;
  for (const std::string& row : kRows) {
    const auto words = support::split(row);
    text += line(++count, words[0], words[1], words[1] == "M" ? "MET" : "LYS", words[2], words[3]) + "\n";
  }
  return text;
}

std::string commas(const std::string& number) {
  return support::replaced(number, ".", ",");
}

std::vector<Dialect> dialects() {
  using S = const std::string&;
  std::vector<Dialect> found = {
      {"row counter before the residue",
       "num,resid,resname,atom,shift\n" + list([](int i, S n, S, S three, S a, S v) {
         return std::to_string(i + 6) + "," + n + "," + three + "," + a + "," + v;
       }),
       kNothing},
      {"assignment program, newline in a header cell",
       "uniqueId,\"Value\n(ppm)\",\"Value Error\n(ppm)\",SequenceCode,ResidueType,AtomName\n"
       "9,40.1,0,5-1,None,CA\n" +
           list([](int i, S n, S, S three, S a, S v) {
             return std::to_string(i) + "," + v + ",None," + n + "," + three + "," + a;
           }),
       kNothing},
      {"assignment in one word",
       "#\tIsotope\tAssign Name\tShift\tSD\n" + list([](int i, S n, S, S three, S a, S v) {
         return std::to_string(i) + "\t13C\t" + n + three + a + "\t" + v + "\t0.1";
       }),
       kNothing},
      {"archive as CSV with author numbers",
       "_Atom_chem_shift.ID,_Atom_chem_shift.Entity_ID,_Atom_chem_shift.Comp_index_ID,_Atom_chem_shift.Comp_"
       "ID,"
       "_Atom_chem_shift.Atom_ID,_Atom_chem_shift.Val,_Atom_chem_shift.Val_err,_Atom_chem_shift.Auth_seq_"
       "ID\n" +
           list([](int i, S n, S, S three, S a, S v) {
             return std::to_string(i) + ",1," + (n == "5" ? "1" : "2") + "," + three + "," + a + "," + v +
                    ",.," + n;
           }),
       kNothing},
      {"archive rows without a header", list([](int i, S n, S, S three, S a, S v) {
         return std::to_string(i) + " " + n + " " + three + " " + a + " " + a.substr(0, 1) + " " + v + " . 1";
       }),
       kGuess},
      {"decimal comma with semicolons",
       "Residue number;Amino acid;Atom;\"\xCE\xB4 (ppm)\";Error\n" + list([](int, S n, S, S three, S a, S v) {
         return n + ";" + three + ";" + a + ";" + commas(v) + ";0,02";
       }),
       kNothing},
      {"decimal comma with blanks",
       list([](int, S n, S c, S, S a, S v) { return n + " " + c + " " + a + " " + commas(v); }), kGuess},
      {"data frame with an index and numbers with a point",
       ",resid,aa,atom,ppm\n" + list([](int i, S n, S c, S, S a, S v) {
         return std::to_string(i) + "," + n + ".0," + c + "," + a + "," + v;
       }),
       kNothing},
      {"printed data frame", "  resid resname atom shift\n" + list([](int i, S n, S, S three, S a, S v) {
                               return std::to_string(i) + "  " + n + " " + three + " " + a + " " + v;
                             }),
       kNothing},
      {"letter and number", "Residue,Atom,Shift [ppm]\n" + list([](int, S n, S c, S, S a, S v) {
                              return c + n + "," + a + "," + v;
                            }),
       kNothing},
      {"number and name", "Residue,Atom,Shift\n" + list([](int, S n, S, S three, S a, S v) {
                            return n + three + "," + a + "," + v;
                          }),
       kNothing},
      {"dash that is no sign", "Residue,Atom,Shift\n" + list([](int, S n, S, S three, S a, S v) {
                                 return three + "-" + n + "," + a + "," + v;
                               }),
       kNothing},
      {"chain, residue and atom joined",
       list([](int, S n, S, S three, S a, S v) { return "A." + n + "." + three + "." + a + " " + v + " 1"; }),
       kGuess},
      {"headings exchanged", "resname,resid,atom,shift\n" + list([](int, S n, S, S three, S a, S v) {
                               return n + "," + three + "," + a + "," + v;
                             }),
       kGuess},
      {"table with bars",
       "| Residue | Type | Atom | Shift |\n|---|---|---|---|\n" + list([](int, S n, S c, S, S a, S v) {
         return "| " + n + " | " + c + " | " + a + " | " + v + " |";
       }),
       kNothing},
      {"wide with isotopes and symbols",
       "Protein X;;;;;\n\nResidue;AA;15N;NH;13C\xCE\xB1;C\xCE\xB2;CA(i-1)\n"
       "5;M;120,51;8,12;55,10;32,95;\n6;K;121,30;8,31;56,20;33,01;55,10\n",
       kNothing},
      {"wide with labels and marks of nothing",
       "Res\tN (ppm)\tHN (ppm)\tC'\tCA\tCB\nMet5\t120.51\t8.12\tn.d.\t55.10\t32.95\n"
       "Lys6\t121.30\t8.31\t-\t56.20\t33.01\n",
       kNothing},
      {"SHIFTY with stars",
       "#NUM AA N15 HN HA CA CB\n5 M 120.51 8.12 **** 55.10 32.95\n6 K 121.30 8.31 **** 56.20 33.01\n",
       kNothing},
      {"PIPP",
       "SHIFT_FL_FRMT RES_SIA\nRES_ID 5\nRES_TYPE MET\nSPIN_SYSTEM_ID 5\n N 120.51\n HN 8.12\n CA 55.10\n CB "
       "32.95\n"
       " HB1|HB2 2.0\nEND_RES_DEF\n\nRES_ID 6\nRES_TYPE LYS\n N 121.30\n HN 8.31\n CA 56.20\n CB "
       "33.01\nEND_RES_DEF\n",
       kNothing},
      {"referencing input",
       "5 11 55.10 32.95 -100.00 -100.00 8.12 120.51 6.50\n6 9 56.20 33.01 -100.00 -100.00 8.31 121.30 "
       "6.50\n",
       kGuess},
      {"Sparky without a sequence",
       " Group Atom Nuc Shift SDev Assignments\n" +
           list([](int, S n, S, S three, S a, S v) { return n + three + " " + a + " 13C " + v + " 0.0 1"; }),
       kNothing}};
  return found;
}

TEST(ConvertColumns, DialectsOfTheFieldGiveTheSameRows) {
  for (const Dialect& dialect : dialects()) {
    const Converted result = convertString(dialect.text);
    EXPECT_EQ(result.rows(), kRows) << dialect.name << "\n" << dialect.text << result.report();
    EXPECT_EQ(result.conversion.sequence, "MK") << dialect.name;
    const bool guessed = result.log.count(tools::Severity::Warning) > 0;
    EXPECT_EQ(guessed, dialect.said == kGuess) << dialect.name << result.report();
    EXPECT_EQ(convertString(dialect.text, with(&convert::Settings::strict, true)).ok, !guessed)
        << dialect.name;
  }
}

TEST(ConvertColumns, TheChoiceIsSaid) {
  const Converted counter = convertString("num,resid,resname,atom,shift\n7,1,MET,CA,55.1\n8,2,LYS,CA,56.2\n");
  EXPECT_EQ(counter.rows(), (Rows{"1 M CA 55.1", "2 K CA 56.2"}));
  EXPECT_NE(counter.report().find("residue number from 'resid' (not from 'num')"), std::string::npos)
      << counter.report();
  const Converted wide = convertString("Residue,13Ca,1H(N),Cb(i-1)\nM1,55.1,8.2,33.0\nK2,56.2,8.3,32.9\n");
  EXPECT_EQ(wide.rows(), (Rows{"1 M HN 8.2", "1 M CA 55.1", "2 K HN 8.3", "2 K CA 56.2"}));
  EXPECT_NE(wide.report().find("not used: 'Cb(i-1)'"), std::string::npos) << wide.report();
}

TEST(ConvertColumns, TheUserNamesThem) {
  const std::string odd = "a,b,c,d,e\n1,55.1,CA,LYS,9\n2,56.2,CA,MET,9\n";
  const std::string plain = "x 1 55.1 9.9 CA LYS\nx 2 56.2 9.9 CA MET\n";
  const std::string wide = "n,t,p,q\n1,K,55.1,33.0\n2,M,56.2,34.0\n";
  const Rows rows = {"1 K CA 55.1", "2 M CA 56.2"};
  const struct {
    const std::string& text;
    const char* columns;
    Rows rows;
    const char* error;
  } cases[] = {{odd, "resid=a,resname=d,atom=c,shift=b", rows, ""},
               {odd, "resid=1,resname=4,atom=3,shift=2", rows, ""},
               {plain, "resid=2,resname=6,atom=5,shift=3", rows, ""},
               {wide, "resid=n,resname=t,CA=p", rows, ""},
               {odd, "resid=a,shift=ppm", {}, "heading 'ppm'"},
               {odd, "resid=7,shift=b", {}, "no column 7"},
               {odd, "resid", {}, "not of the form"},
               {odd, "number=a,shift=b", {}, "'number' is none of"}};
  for (const auto& c : cases) {
    const Converted result = convertString(c.text, with(&convert::Settings::columns, c.columns));
    EXPECT_EQ(result.rows(), c.rows) << c.columns << result.report();
    EXPECT_NE(result.error().text.find(c.error), std::string::npos) << c.columns << result.report();
  }
}

TEST(ConvertColumns, WithoutTypesTheSequenceDecides) {
  const support::TempDir folder;
  support::writeFile(folder / "s.fasta", ">x\nMK\n");
  convert::Settings settings = with(&convert::Settings::sequenceFile, (folder / "s.fasta").string());
  const std::string ppm = "  1.CA  55.1 1\n  1.CB 32.9 1\n  2.CA  56.2 1\n  2.CB 33.1 2\n";
  EXPECT_EQ(convertString(ppm, settings).rows(),
            (Rows{"1 M CA 55.1", "1 M CB 32.9", "2 K CA 56.2", "2 K CB 33.1"}))
      << convertString(ppm, settings).report();
  EXPECT_NE(convertString(ppm).error().text.find("--sequence"), std::string::npos);
  const std::string prot = "1 55.1 . CA 1\n2 32.9 . CB 1\n";
  EXPECT_EQ(convertString(prot, settings).rows(), (Rows{"1 M CA 55.1", "1 M CB 32.9"}));
}

TEST(ConvertColumns, ASequenceAloneGivesTheSequence) {
  for (const std::string text :
       {">x\nMKVLAAGI\nVA\n", "MKVLAAGIVA\n", "MET 1\nLYS\nVAL\nLEU\nALA\nALA\nGLY\nILE\nVAL\nALA\n"}) {
    const Converted result = convertString(text);
    EXPECT_TRUE(result.ok) << text << result.report();
    EXPECT_EQ(result.conversion.sequence, "MKVLAAGIVA");
    EXPECT_NE(result.report().find("no shifts"), std::string::npos) << result.report();
    EXPECT_EQ(result.rows(), (Rows{"1 M CA 9999.000"}))
        << "the prediction wants a row and takes 9999 as missing";
  }
  EXPECT_TRUE(convertString(">a\nMKVL\n>b\nMKV\n").ambiguous);
}

TEST(ConvertColumns, NoDigitIsLost) {
  const support::TempDir folder;
  const std::string path = (folder / "out.tab").string();
  const Converted first = convertString(
      "resid,resname,atom,shift\n1,MET,CA,5.510123456e+01\n2,LYS,CA,173.073111116886\n"
      "3,LYS,N,1.2e2\n");
  ASSERT_EQ(convert::writeTable(first.conversion, first.log, path), "");
  const Converted second = convertString(support::readFile(path));
  ASSERT_EQ(second.conversion.rows.size(), 3U) << second.report();
  for (std::size_t i = 0; i < 3; ++i)
    EXPECT_EQ(second.conversion.rows[i].value, first.conversion.rows[i].value);
}

}  // namespace
