// What residues are called in restraints: names and numbers of the shift file, or of the NEF file added to.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "restraints/program.h"
#include "support/process.h"
#include "tools/prediction_tables.h"

namespace {

/// Residue 3 is selenomethionine with an insertion code, residue 4 of unknown type.
class RestraintNames : public testing::Test {
 protected:
  RestraintNames() {
    support::writeFile(dir / "pred.tab", tool_tables::torsionTable("input.tab", 1, "GAMXTH",
                                                                   {{1, 'G', 9999, 9999, 0, 0, "None", 0},
                                                                    {2, 'A', -60, -40, 5, 5, "Strong"},
                                                                    {3, 'M', -60, -40, 5, 5, "Strong"},
                                                                    {4, 'X', -60, -40, 5, 5, "Strong"},
                                                                    {5, 'T', -60, -40, 5, 5, "Strong"},
                                                                    {6, 'H', 9999, 9999, 0, 0, "None", 0}}));
  }
  static std::string inputTable(const std::string& remarks, const std::string& sequence = "GAMXTH") {
    return remarks + "DATA FIRST_RESID 1\nDATA SEQUENCE " + sequence +
           "\n\nVARS RESID RESNAME ATOMNAME SHIFT\nFORMAT %4d %1s %4s %8.3f\n\n   1 G HA2 3.91\n   2 A HN "
           "8.25\n   4 X CA 57.10\n";
  }
  int run(const std::string& options) {
    std::vector<std::string> words = {(dir / "pred.tab").string(), "-o", "-"};
    for (const std::string& word : support::split(options)) {
      words.push_back(word.starts_with("@") ? (dir / word.substr(1)).string() : word);
    }
    out.str("");
    err.str("");
    return restraints::runProgram(words, out, err);
  }
  support::TempDir dir;
  std::ostringstream out, err;
};

constexpr const char* kRemarks =
    "REMARK ENTRY Kinase domain of X\nREMARK CHAIN B\nREMARK NAME 3 MSE\nREMARK NAME of no residue\n"
    "REMARK NAME 2 \x1b[31m\n"
    "REMARK NUMBER 1 20\nREMARK NUMBER 2 21\nREMARK NUMBER 3 21A\nREMARK NUMBER 4 22\nREMARK NUMBER 5 23\n"
    "REMARK NUMBER 6 24\n";

TEST_F(RestraintNames, NotesOfTheInputTable) {
  const std::string twice = std::string(kRemarks) + "REMARK NUMBER 6 20\n";
  const std::string allNamed = std::string(kRemarks) + "REMARK NAME 4 'LIG\nREMARK NAME 6 HIE\n";
  const struct {
    std::string options, input;
    int status;
    std::vector<const char*> parts, absent;
  } cases[] = {
      {"--format xplor",
       inputTable(kRemarks),
       0,
       {"! prediction for Kinase domain of X", "! 21A MSE PHI", "(resid 21A and name CA )",
        "(resid 22 and name C  ) (resid 23 and name N  )",
        "unknown residue type (see --unknown-types): 1 (residues 22)"},
       {"22 and name CA", "prediction for input.tab"}},
      {"--format xplor --numbers table",
       inputTable(kRemarks),
       0,
       {"! 3 MSE PHI", "(resid 3 and name CA )"},
       {"21A"}},
      {"--format xplor --unknown-types",
       inputTable(kRemarks),
       0,
       {"! 22 X PHI", "(resid 22 and name CA )"},
       {}},
      {"--format cyana", inputTable(kRemarks), 1, {"residue 21A: CYANA has no insertion codes"}, {}},
      {"--format cyana --numbers table", inputTable(kRemarks), 0, {"    3 MSE   PHI", "    5 THR   PSI"}, {}},
      {"--format nef",
       inputTable(kRemarks),
       0,
       {"2 B 21 ALA middle", "3 B 21A MSE break", " B 21 ALA N B 21 ALA CA B 21 ALA C B 21A MSE N ",
        "B 20 GLY HAx 3.91", "B 21 ALA H 8.25", "PSI: a residue without a name: 1 (residues 21A)"},
       {" 22 ", "HIE"}},
      {"--format nef --unknown-types",
       inputTable(allNamed),
       0,
       {"B 22 \"'LIG\" CA 57.10", "B 22 \"'LIG\" CA B", "6 B 24 HIS end"},
       {}},
      {"--format star",
       inputTable(kRemarks),
       0,
       {"PHI 1 1 2 2 ALA C C 1 1 3 3 MSE N N", "B 21A MSE CA"},
       {" 22 "}},
      {"--format xplor", inputTable(twice), 1, {"two residues have the original number 20"}, {}},
      {"--format xplor",
       inputTable(kRemarks, "GAMXTA"),
       0,
       {"input table not used", "! prediction for input.tab"},
       {"21A"}},
      {"--format xplor --input-table @input.tab", inputTable(kRemarks, "GAMXTA"), 1, {"residue 6 is A"}, {}},
      {"--format nef", "", 0, {"no input table"}, {"_nef_chemical_shift.", "loop_\n   stop_"}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.options);
    std::filesystem::remove(dir / "input.tab");
    if (!c.input.empty()) support::writeFile(dir / "input.tab", c.input);
    ASSERT_EQ(run(c.options), c.status) << err.str();
    const std::string all = out.str() + err.str();
    for (const char* part : c.parts) EXPECT_NE(all.find(part), std::string::npos) << part << "\n" << all;
    for (const char* part : c.absent) EXPECT_EQ(all.find(part), std::string::npos) << part << "\n" << all;
    EXPECT_EQ(out.str().find("UNK"), std::string::npos);
  }
}

/// Without input.tab the table of secondary shifts has the same remarks and the observed shifts.
TEST_F(RestraintNames, SecondaryShiftsRepeatTheNotes) {
  support::writeFile(
      dir / "predAdjCS.tab",
      std::string(kRemarks) +
          "REMARK Secondary shifts\nDATA FIRST_RESID 1\nDATA SEQUENCE GAMXTH\n\nVARS RESID RESNAME "
          "ATOMNAME SHIFT CS_OBS CS_ADJ\nFORMAT %4d %1s %4s %8.3f %9.3f %9.3f\n\n   2 A HN 0.512 8.812 "
          "8.300\n");
  ASSERT_EQ(run("--format nef"), 0) << err.str();
  for (const char* part : {"# prediction for Kinase domain of X", "B 21 ALA H 8.812", " B 21A MSE N "})
    EXPECT_NE(out.str().find(part), std::string::npos) << part << out.str();
}

constexpr const char* kNef =
    "data_nef_mine\n# a comment that stays\nsave_nef_molecular_system\n"
    "_nef_molecular_system.sf_category nef_molecular_system\nloop_\n_nef_sequence.chain_code\n"
    "_nef_sequence.sequence_code\n_nef_sequence.residue_name\nB 20 GLY B 21 ALA B 21A MSE B 22 LIG B 23 TPO "
    "B 24 HIS\n"
    "Z 1 DA\nstop_\nsave_";

TEST_F(RestraintNames, IntoTheUsersNef) {
  support::writeFile(dir / "input.tab", inputTable(kRemarks));
  const auto changed = [](std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  };
  std::string crLf = kNef;
  for (std::size_t at = 0; (at = crLf.find('\n', at)) != std::string::npos; at += 2) crLf.insert(at, "\r");
  const struct {
    const char* name;
    std::string nef, options;
    int status;
    std::string part;
  } cases[] = {{"names of the file", kNef, "", 0, "B 22 LIG C B 23 TPO N B 23 TPO CA B 23 TPO C"},
               {"insertion code", kNef, "", 0, "save_nef_dihedral_restraint_list_orbeln\n"},
               {"frame name taken",
                changed(kNef, "save_nef_mol", "save_nef_dihedral_restraint_list_orbeln\nsave_\nsave_nef_mol"),
                "", 0, "save_nef_dihedral_restraint_list_orbeln_2\n"},
               {"other line ends", crLf, "", 0, "   stop_\r\nsave_\r\n"},
               {"numbers of the table", kNef, "--numbers table", 1, "residue 1 of chain B is not there"},
               {"other chain", kNef, "--chain C", 1, "no chain C"},
               {"other type", changed(kNef, "21 ALA", "21 VAL"), "", 1,
                "residue 21 of chain B is VAL, the prediction has ALA"},
               {"two blocks", std::string("data_other\n") + kNef, "", 1, "several data blocks"},
               {"broken", changed(kNef, "B 24 HIS", "B 24"), "", 1, "mine.nef:"},
               {"no sequence", "data_nef_x\nsave_a\n_a.b 1\nsave_\n", "", 1, "no loop _nef_sequence"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    support::writeFile(dir / "mine.nef", c.nef);
    ASSERT_EQ(run("--into @mine.nef " + c.options), c.status) << err.str();
    EXPECT_NE((out.str() + err.str()).find(c.part), std::string::npos) << out.str() << err.str();
    EXPECT_EQ(out.str().starts_with(c.nef), c.status == 0);
  }
}

}  // namespace
