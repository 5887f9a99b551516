// NMR-STAR 3.x and 2.1: sequences, chains, lists and the syntax they are written in.
#include <gtest/gtest.h>

#include <algorithm>

#include "convert_support.h"

namespace {

using support::Converted;
using support::convertString;
using support::replaced;
using support::with;

// Five residues, the third a phosphoserine; a glycine with two HA; rows out of order.
const std::string kEntry = R"(data_77001
save_entry
_Entry.Sf_category entry_information
_Entry.ID 77001
_Entry.NMR_STAR_version 3.2.6.0
save_
save_protein_A
_Entity.Sf_category entity
_Entity.ID 1
_Entity.Name 'test protein'
_Entity.Type polymer
_Entity.Polymer_type polypeptide(L)
_Entity.Polymer_seq_one_letter_code
;
GAXLK
;
_Entity.Thiol_state 'not present'
loop_
_Entity_poly_seq.Num _Entity_poly_seq.Mon_ID _Entity_poly_seq.Comp_index_ID _Entity_poly_seq.Entity_ID
1 GLY 1 1   2 ALA 2 1   3 SEP 3 1   4 LEU 4 1   5 LYS 5 1
stop_
save_
save_shifts_1
_Assigned_chem_shift_list.Sf_category assigned_chemical_shifts
_Assigned_chem_shift_list.ID 1
_Assigned_chem_shift_list.Sample_condition_list_label $conditions_1
loop_
_Atom_chem_shift.ID _Atom_chem_shift.Entity_assembly_ID _Atom_chem_shift.Comp_index_ID
_Atom_chem_shift.Comp_ID _Atom_chem_shift.Atom_ID _Atom_chem_shift.Atom_type _Atom_chem_shift.Val
_Atom_chem_shift.Ambiguity_code _Atom_chem_shift.Auth_seq_ID
1 1 2 ALA CA C 52.40 1 102
2 1 1 GLY HA2 H 3.91 2 101
3 1 1 GLY HA3 H 4.02 2 101
4 1 2 ALA HB1 H 1.39 1 102
5 1 2 ALA H H 8.25 1 102
6 1 3 SEP CA C 58.1 1 103
7 1 4 LEU CA C 55.1 5 104
8 1 4 LEU CB C . 1 104
9 1 5 LYS C C 176.512 1 105
stop_
save_
)";

bool has(const std::vector<std::string>& lines, const std::string& wanted) {
  return std::find(lines.begin(), lines.end(), wanted) != lines.end();
}

const std::vector<std::string> kRows = {"101 G HA2 3.91", "101 G HA3 4.02", "102 A HN 8.25",
                                        "102 A CA 52.40", "104 L CA 55.1",  "105 K C 176.512"};

TEST(ConvertNmrStar, TakesTheBackboneAndSaysWhatItSkips) {
  const Converted result = convertString(kEntry);
  ASSERT_TRUE(result.ok) << result.report();
  EXPECT_EQ(result.rows(), kRows);
  EXPECT_EQ(result.conversion.sequence, "GAXLK");
  EXPECT_EQ(result.conversion.firstResid, 101);
  const std::string report = result.report();
  for (const char* part : {"NMR-STAR 3.2.6.0", "103 SEP", "H to HN (1)", "1 shifts without a value",
                           "1 shifts of other atoms", "ambiguous"}) {
    EXPECT_NE(report.find(part), std::string::npos) << part << "\n" << report;
  }
}

TEST(ConvertNmrStar, SameResultHoweverItIsWritten) {
  std::string reordered = replaced(kEntry, "_Atom_chem_shift.ID _Atom_chem_shift.Entity_assembly_ID",
                                   "_Atom_chem_shift.Entity_assembly_ID\n_atom_chem_shift.id");
  for (int id = 1; id <= 9; ++id) {
    const std::string n = std::to_string(id);
    reordered = replaced(reordered, "\n" + n + " 1 ", "\n1 row" + n + " ");
  }
  const std::vector<std::pair<const char*, std::string>> variants = {
      {"CR LF", replaced(kEntry, "\n", "\r\n")},
      {"byte order mark is taken off by the file reader, tabs", replaced(kEntry, " ", "\t")},
      {"columns in another order", reordered},
      {"comments", replaced(kEntry, "ALA CA C 52.40", "ALA # here\n# and save_ there\n CA C 52.40")},
      {"quoted names", replaced(replaced(kEntry, "GLY HA2", "\"GLY\" 'HA2'"), "LYS C C", "LYS 'C' C")},
      {"no stop_", replaced(kEntry, "stop_\n", "")},
      {"keywords in capitals", replaced(replaced(kEntry, "loop_", "LOOP_"), "save_", "SAVE_")},
      {"one line", replaced(replaced(replaced(kEntry, "\n;\nGAXLK\n;\n", " . "), "\n", " "), "  ", " ")},
      {"tags of version 3.0", replaced(replaced(replaced(kEntry, "shift.Val", "shift.Chem_shift_val"),
                                                "shift.Auth_seq_ID", "shift.Author_seq_code"),
                                       "shift.Ambiguity_code", "shift.Chem_shift_ambiguity_code")},
      {"a title that looks like another format",
       replaced(kEntry, "_Entry.ID 77001",
                "_Entry.ID 77001\n_Entry.Title\n;\n_nef_sequence.x\n_atom_site.id\n;")},
      {"remarks in front", "exported by a program\n\n" + kEntry},
      {"no end of the last line", kEntry.substr(0, kEntry.size() - 1)},
      {"text with keywords", replaced(kEntry, "GAXLK", "GAXLK\nloop_\n_Tag 'open")}};
  for (const auto& [name, text] : variants) {
    const Converted result = convertString(text);
    EXPECT_EQ(result.rows(), kRows) << name << "\n" << result.report();
  }
}

TEST(ConvertNmrStar, SequenceFromTheBestSourceThereIs) {
  const std::string loop = kEntry.substr(kEntry.find("loop_\n_Entity_poly_seq"),
                                         kEntry.find("stop_") + 6 - kEntry.find("loop_\n_Entity_poly_seq"));
  const std::string frame = kEntry.substr(kEntry.find("save_protein_A"),
                                          kEntry.find("save_shifts_1") - kEntry.find("save_protein_A"));
  const std::string index =
      "loop_\n_Entity_comp_index.ID\n_Entity_comp_index.Auth_seq_ID\n_Entity_comp_index.Comp_ID\n"
      "2 102 ALA\n1 101 GLY\n3 103 SEP\n4 104 LEU\n5 105 LYS\n";
  const struct {
    const char* name;
    std::string text, sequence;
    bool warns;
  } cases[] = {
      {"comp_index by number", replaced(kEntry, loop, index), "GAXLK", false},
      {"one-letter text", replaced(replaced(kEntry, loop, ""), "GAXLK", "GA(SEP)\nLK"), "GAXLK", false},
      {"shift rows", replaced(kEntry, frame, ""), "GAXLK", false},
      {"shift rows with a gap", replaced(replaced(kEntry, frame, ""), "6 1 3 SEP CA C 58.1 1 103\n", ""),
       "GAXLK", true}};
  for (const auto& c : cases) {
    const Converted result = convertString(c.text);
    EXPECT_EQ(result.conversion.sequence, c.sequence) << c.name << result.report();
    EXPECT_EQ(result.rows(), kRows) << c.name;
    EXPECT_EQ(result.report().find("--sequence") != std::string::npos, c.warns) << c.name << result.report();
  }
}

TEST(ConvertNmrStar, BareShiftLoopWithUnknownColumns) {
  const Converted result = convertString(
      "loop_\n_Atom_chem_shift.Entity_assembly_ID\n_Atom_chem_shift.Comp_index_ID\n_Atom_chem_shift.Seq_ID\n"
      "_Atom_chem_shift.Comp_ID\n_Atom_chem_shift.Atom_ID\n_Atom_chem_shift.Val\n_Atom_chem_shift.Details\n"
      "? ? -1 MET CA 55.3 $frame\n? ? 0 LEU CA 54.4 ?\n");
  ASSERT_TRUE(result.ok) << result.report();
  EXPECT_EQ(result.rows(), (std::vector<std::string>{"-1 M CA 55.3", "0 L CA 54.4"}));
  EXPECT_EQ(result.conversion.firstResid, -1);
}

// 101 102 103 104 105 with some of them changed: what becomes of the sequence, and whose number is whose.
TEST(ConvertNmrStar, GapsAreFilledAndNumbersThatCannotBeKeptAreMapped) {
  const auto numbered = [](const std::string& ala, const std::string& leu, const std::string& lys) {
    const std::string text =
        replaced(replaced(kEntry, " 102\n", " " + ala + "\n"), " 104\n", " " + leu + "\n");
    return replaced(text, " 105\n", " " + lys + "\n");
  };
  const std::string ten(10, 'X');
  const struct {
    const char* name;
    std::string text, sequence;
    int first;
    std::string last, number;
  } cases[] = {
      {"gap", numbered("102", "107", "108"), "GAXXXXLK", 101, "108 K C 176.512", ""},
      {"gap too long", numbered("102", "304", "305"), "GAX" + ten + "LK", 1, "15 K C 176.512", "15 305"},
      {"insertion code", numbered("101A", "104", "105"), "GAXLK", 1, "5 K C 176.512", "2 101A"},
      {"falling", numbered("102", "104", "99"), "GAXLK", 1, "5 K C 176.512", "5 99"}};
  for (const auto& c : cases) {
    const Converted result = convertString(c.text);
    ASSERT_TRUE(result.ok) << c.name << result.report();
    EXPECT_EQ(result.conversion.sequence, c.sequence) << c.name;
    EXPECT_EQ(result.conversion.firstResid, c.first) << c.name;
    EXPECT_EQ(result.rows().back(), c.last) << c.name;
    EXPECT_EQ(result.log.count(tools::Severity::Warning) > 1, true) << c.name << result.report();
    EXPECT_EQ(has(result.conversion.marks, "NUMBER " + c.number), !c.number.empty()) << c.name;
    EXPECT_FALSE(convertString(c.text, with(&convert::Settings::strict, true)).ok) << c.name;
  }
  EXPECT_EQ(convertString(cases[2].text, with(&convert::Settings::firstResid, "-3")).rows().front(),
            "-3 G HA2 3.91");
}

// Rows of two chains, a heme, a nucleotide and an unknown amino acid, with no molecule described.
TEST(ConvertNmrStar, OnlyTheProteinChainOfBareRowsMakesTheSequence) {
  const auto bare = [](const std::string& rows) {
    std::string text = "loop_";
    for (const char* tag :
         {"Entity_assembly_ID", "Auth_asym_ID", "Comp_index_ID", "Comp_ID", "Atom_ID", "Val"})
      text += std::string("\n_Atom_chem_shift.") + tag;
    return text + "\n" + rows;
  };
  const std::string protein = "1 A 4 MET CA 55.3\n2 A 4 MET HA 4.4\n1 A 5 LEU CA 54.4\n1 A 7 LYS CA 56.1\n";
  const std::string others =
      "1 A 6 XYZ CA 58.0\n1 A 6 XYZ N 120.0\n1 A 201 HEM HMA 3.1\n1 A 201 HEM CAA 20.1\n1 A 202 CA CA 50.0\n"
      "1 A 4 G H1' 5.9\n1 A 9 DA H8 8.1\n";
  const Converted one = convertString(bare(protein + others));
  ASSERT_TRUE(one.ok) << one.report();
  EXPECT_EQ(one.conversion.sequence, "MLXK");
  EXPECT_EQ(one.rows(),
            (std::vector<std::string>{"4 M HA 4.4", "4 M CA 55.3", "5 L CA 54.4", "7 K CA 56.1"}));
  EXPECT_NE(
      one.report().find("5 shifts of molecules that are no part of a protein chain: HEM 2, CA 1, G 1, DA 1"),
      std::string::npos)
      << one.report();
  EXPECT_TRUE(has(one.conversion.marks, "NAME 6 XYZ") && has(one.conversion.marks, "CHAIN A"));

  const std::string two = bare(protein + others + "1 B 4 MET CA 55.9\n");
  EXPECT_TRUE(convertString(two).ambiguous);
  EXPECT_EQ(convertString(two, with(&convert::Settings::chain, "B")).rows(),
            (std::vector<std::string>{"4 M CA 55.9"}));
  // One letter for both subunits: an atom that both have tells them apart.
  const std::string shared = bare(protein + "2 A 4 MET CA 55.9\n");
  EXPECT_EQ(convertString(shared, with(&convert::Settings::chain, "2")).rows(),
            (std::vector<std::string>{"4 M HA 4.4", "4 M CA 55.9"}));
}

TEST(ConvertNmrStar, ModifiedResiduesKeepTheirName) {
  const struct {
    const char* name;
    char code, parent;  // by default, and with --modified-as-parent
    bool shiftKept, marked;
  } cases[] = {{"MSE", 'X', 'M', true, true},  {"SEP", 'X', 'S', false, true}, {"HIP", 'H', 'H', true, true},
               {"CYX", 'c', 'c', true, true},  {"CME", 'X', 'c', true, true},  {"PHF", 'X', 'F', true, true},
               {"QQQ", 'X', 'X', false, true}, {"SER", 'S', 'S', true, false}};
  for (const auto& c : cases) {
    const std::string text = replaced(kEntry, "SEP", c.name);
    const Converted plain = convertString(text);
    const Converted parent = convertString(text, with(&convert::Settings::modifiedAsParent, true));
    EXPECT_EQ(plain.conversion.sequence, std::string("GA") + c.code + "LK") << c.name << plain.report();
    EXPECT_EQ(parent.conversion.sequence, std::string("GA") + c.parent + "LK") << c.name;
    const std::string row = std::string("103 ") + c.parent + " CA 58.1";
    EXPECT_EQ(has(parent.rows(), row), c.shiftKept) << c.name << parent.report();
    EXPECT_EQ(has(plain.conversion.marks, std::string("NAME 103 ") + c.name), c.marked) << c.name;
  }
}

// Two copies of the protein in the assembly, shifts for the first one; then for both.
TEST(ConvertNmrStar, ChainsAndListsAreChosenWhenItMatters) {
  const std::string assembly =
      "save_assembly\nloop_\n_Entity_assembly.ID\n_Entity_assembly.Entity_assembly_name\n"
      "_Entity_assembly.Entity_ID\n_Entity_assembly.Entity_label\n_Entity_assembly.PDB_chain_ID\n"
      "1 'subunit 1' 1 $protein_A P\n2 'subunit 2' 1 $protein_A Q\nstop_\nsave_\n";
  const std::string dimer = replaced(kEntry, "save_entry\n", assembly + "save_entry\n");
  const Converted first = convertString(dimer);
  EXPECT_EQ(first.rows(), kRows);
  EXPECT_NE(first.report().find("Chain 2 (Q, subunit 2) is not converted: it has no shifts"),
            std::string::npos)
      << first.report();

  const std::string both = replaced(dimer, "9 1 5 LYS C C 176.512", "9 2 5 LYS C C 176.512");
  const Converted undecided = convertString(both);
  EXPECT_TRUE(undecided.ambiguous);
  for (const char* choice : {"--chain", "1 (P, subunit 1)", "2 (Q, subunit 2)"}) {
    EXPECT_NE(undecided.error().text.find(choice), std::string::npos) << undecided.error().text;
  }
  for (const char* name : {"2", "Q", "subunit 2"}) {
    EXPECT_EQ(convertString(both, with(&convert::Settings::chain, name)).rows(),
              (std::vector<std::string>{"105 K C 176.512"}))
        << name;
  }

  // Subunits that are numbered in the rows and listed nowhere.
  const std::string numbered = replaced(replaced(kEntry, "9 1 5 LYS", "9 2 5 LYS"), "shift.ID ",
                                        "shift.ID _Atom_chem_shift.Entity_ID ");
  std::string unlisted = replaced(numbered, "\n9 2 5", "\n9 1 2 5");
  for (char id = '1'; id <= '8'; ++id) {
    const std::string row = std::string("\n") + id + " 1 ";
    unlisted = replaced(unlisted, row, row + "1 ");
  }
  EXPECT_EQ(convertString(unlisted, with(&convert::Settings::chain, "2")).rows(),
            (std::vector<std::string>{"105 K C 176.512"}))
      << convertString(unlisted).report();

  std::string second = kEntry.substr(kEntry.find("save_shifts_1"));
  second = replaced(replaced(second, "save_shifts_1", "save_reduced"), "shift_list.ID 1", "shift_list.ID 2");
  const std::string twoLists = kEntry + replaced(second, "52.40", "52.90");
  EXPECT_TRUE(convertString(twoLists).ambiguous);
  EXPECT_NE(convertString(twoLists).error().text.find("2 (reduced"), std::string::npos);
  EXPECT_EQ(convertString(twoLists, with(&convert::Settings::list, "reduced")).rows()[3], "102 A CA 52.90");
  // The save frame is the key: one number for both, in one block or in two, merges nothing.
  const std::string sameNumber = replaced(twoLists, "shift_list.ID 2", "shift_list.ID 1");
  const std::string twoBlocks =
      replaced(replaced(sameNumber, "save_reduced", "data_2\nsave_shifts_1"), "reduced", "");
  for (const auto& [text, name] : {std::pair(sameNumber, "reduced"), std::pair(twoBlocks, "2:shifts_1")}) {
    EXPECT_TRUE(convertString(text).ambiguous) << name;
    EXPECT_TRUE(convertString(text, with(&convert::Settings::list, "1")).ambiguous) << "both have the number";
    const Converted chosen = convertString(text, with(&convert::Settings::list, name));
    EXPECT_EQ(chosen.rows().size(), kRows.size()) << chosen.report();
    EXPECT_TRUE(has(chosen.rows(), "102 A CA 52.90")) << name;
  }
}

TEST(ConvertNmrStar, OptionsForDoubtfulRows) {
  EXPECT_EQ(convertString(kEntry, with(&convert::Settings::skipAmbiguous, true)).rows().size(),
            kRows.size() - 1);
  EXPECT_FALSE(convertString(kEntry, with(&convert::Settings::strict, true)).ok);
  const std::string mse = replaced(kEntry, "SEP", "MSE");
  EXPECT_EQ(convertString(mse).conversion.sequence, "GAXLK");
  EXPECT_EQ(convertString(mse, with(&convert::Settings::mseAsMet, true)).conversion.sequence, "GAMLK");
  EXPECT_EQ(convertString(mse, with(&convert::Settings::mseAsMet, true)).rows().size(), kRows.size() + 1);
  const std::string oxidized =
      replaced(replaced(kEntry, "LYS", "CYS"), "'not present'", "'all disulfide bound'");
  EXPECT_EQ(convertString(oxidized).conversion.sequence, "GAXLc");
}

TEST(ConvertNmrStar, HintsFollowTheSampleNotTheSolvent) {
  const auto sample = [](const std::string& protein, const std::string& solvent) {
    return "save_sample\nloop_\n_Sample_component.Mol_common_name\n_Sample_component.Isotopic_labeling\n"
           "_Sample_component.Entity_ID\nprotein " +
           protein + " 1\nD2O " + solvent + " .\nstop_\nsave_\n" + kEntry;
  };
  const struct {
    std::string text;
    bool iso, noProton;
  } cases[] = {{sample("'[U-13C; U-15N; U-2H]'", "'natural abundance'"), true, false},
               {sample("'[U-13C; U-15N]'", "'[U-2H]'"), false, false},
               {replaced(replaced(kEntry, "GLY HA", "GLY HX"), "ALA H ", "ALA HX "), true, true}};
  for (const auto& c : cases) {
    const std::string report = convertString(c.text).report();
    EXPECT_EQ(report.find("-iso") != std::string::npos, c.iso) << report;
    EXPECT_EQ(report.find("-noproton") != std::string::npos, c.noProton) << report;
  }
}

TEST(ConvertNmrStar, Version2) {
  const Converted result = convertString(R"(data_4000
save_HEWL
_Saveframe_category monomeric_polymer
_Mol_polymer_class protein
_Mol_residue_sequence
;
KVF
G
;
loop_ _Residue_seq_code _Residue_author_seq_code _Residue_label
1 -1 LYS   2 0 VAL   3 1 PHE   4 2 GLY
stop_
save_
save_shifts
_Saveframe_category assigned_chemical_shifts
_Sample_conditions_label $cond
loop_ _Atom_shift_assign_ID _Residue_seq_code _Residue_label
_Atom_name _Atom_type _Chem_shift_value _Chem_shift_value_error _Chem_shift_ambiguity_code
1 1 LYS HA H 4.1 0.02 1
2 4 GLY HA3 H 4.3 . 2
3 3 PHE N N 120.1 @ 1
stop_
save_
)");
  ASSERT_TRUE(result.ok) << result.report();
  EXPECT_EQ(result.conversion.sequence, "KVFG");
  EXPECT_EQ(result.rows(), (std::vector<std::string>{"-1 K HA 4.1", "1 F N 120.1", "2 G HA3 4.3"}));
}

}  // namespace
