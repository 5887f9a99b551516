// Every documented failure as a user sees it: message, stream and exit status.
#include "support/helix_run.h"

namespace {

namespace fs = std::filesystem;
using support::contains;
using support::ProgramRun;

class Failures : public support::HelixRun {};

TEST_F(Failures, UsageText) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"-help"}, {"-in", "query.tab", "-help", "-verb"}}) {
    const ProgramRun run = support::runOrbeln(dir.path, ORBELN_SYNTHETIC, arguments);
    EXPECT_EQ(run.status, 255);
    EXPECT_EQ(run.out, "");
    const std::string rule(1, '*'), line = rule + std::string(68, '-') + rule + '\n';
    EXPECT_EQ(run.err.find(line + " This is the ORBEL-N system"), 0U) << run.err;
    EXPECT_TRUE(contains(run.err, "\nInput Options:\n -in           [None]         Input Shift Table.\n"));
    EXPECT_TRUE(run.err.ends_with("   orbeln -in ubiq.tab -ref ubiq.pdb\n")) << run.err;
  }
}

TEST_F(Failures, InputTablesAndOptions) {
  const std::string sequence = "DATA SEQUENCE AAA\n", vars = "VARS RESID RESNAME ATOMNAME SHIFT\n",
                    format = "FORMAT %4d %s %4s %8.3f\n", row = "2 A CA 52.5\n";
  support::writeFile(dir / "format.tab", sequence + vars + "FORMAT %4d %s  %4i  %8.3f\n" + row);
  support::writeFile(dir / "nosequence.tab", vars + format + row);
  support::writeFile(dir / "novars.tab", sequence + row);
  support::writeFile(dir / "norows.tab", sequence + vars + format + "2 A CA\n");
  support::writeFile(dir / "long.tab",
                     "DATA SEQUENCE " + std::string(40001, 'A') + '\n' + vars + format + row);
  support::writeFile(dir / "range.tab", sequence + vars + format + "1 A CA 52\n40001 A CA 52\n");
  support::writeFile(dir / "lowest.tab", "DATA FIRST_RESID -2147483648\n" + sequence + vars + format + row);
  support::writeFile(dir / "highest.tab",
                     sequence + vars + format + "2147483640 A CA 52\n2147483647 A CA 52\n");
  fs::create_directory(dir / "folder");
  const struct {
    const char* arguments;
    int status;
    const char *err, *out;  ///< parts of the two streams
  } cases[] = {{"-noproton", 0, "\tCan't open file  for reading\n", ""},
               {"-in none.tab", 0, "\tCan't open file none.tab for reading\n", ""},
               {"-in format.tab", 0, "\tBad format syntax '%4i  '\n", ""},
               {"-in nosequence.tab", 255,
                " A full amino acid sequence is required in the DATA SEQUENCE header, exit ...\n", ""},
               {"-in novars.tab", 255, " No entry found in the VARS header, exit ...\n", ""},
               {"-in norows.tab", 255, " No chemical shift data found in file norows.tab\n", ""},
               {"-frob 3 -in query.tab -check", 255, " Invaid arg name -frob\n", ""},
               {"-in query.tab -nodetail -check", 255, " Invaid arg name -nodetail\n", ""},
               {"-in query.tab -offset -0.5 -check", 255, " Invaid arg name -0.5\n", ""},
               {"-in my-query.tab", 0, "\tCan't open file my for reading\n", ""},
               {"-seqSS -blast_check none.check", 255, "", "\nUnable to open file"},
               {"-seqSS -blast_check folder", 255, "", "\nUnable to open file"},
               {"-seqSS -blast_check long.tab", 255, " The sequence in checkpoint long.tab is too long", ""},
               {"-in long.tab", 255,
                " The sequence in file long.tab is too long for a protein: more than 40000 residues", ""},
               {"-in range.tab", 255, " Residue range 1 to 40001 in file range.tab is too long", ""},
               {"-in range.tab -last 40000 -check", 255, "", "Chemical Shift Referencing"},
               {"-in lowest.tab", 255, " Residue number -2147483648 in file lowest.tab is out of range", ""},
               {"-in highest.tab -first 2147483600 -last 2147483647", 255,
                " Residue number 2147483640 in file highest.tab is out of range", ""},
               {"-in query.tab -alignLen 4", 255, "alignLen", ""},
               {"-in query.tab -len 9", 255, "5 to 8", ""},
               {"-in query.tab -noproton -db none.tab", 0,
                "\tCan't open database file none.tab for reading\n", "RCI prediction ...\n"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    const ProgramRun run = support::runOrbeln(dir.path, ORBELN_SYNTHETIC, support::split(c.arguments));
    EXPECT_EQ(run.status, c.status);
    EXPECT_TRUE(contains(run.err, c.err)) << run.err;
    EXPECT_TRUE(contains(run.out, c.out)) << run.out;
  }
  EXPECT_FALSE(exists("pred.tab"));
}

TEST_F(Failures, CheckOnlyRunReportsAndEndsWith255) {
  const ProgramRun checked = run({"-check"});
  EXPECT_EQ(checked.status, 255);
  EXPECT_TRUE(contains(checked.out, "\nChecking for Chemical Shift Outliers ...\n"));
  EXPECT_TRUE(contains(checked.out, "\nChecking Chemical Shift Referencing ...\n"));
  EXPECT_FALSE(contains(checked.out, "Running time"));
  EXPECT_TRUE(exists("predAdjCS.tab") && !exists("predABP.tab"));
}

TEST_F(Failures, MissingReferenceTableEndsTheRunWithStatus0) {
  for (const std::string table :
       {"randcoil.tab", "rcadj.tab", "rcprev.tab", "rcnext.tab", "isoadj.tab", "sslimit.tab", "homology.tab",
        "weight.tab", "BLOSUM62.tab", "orbel_obsCS.tab", "chi1.tab"}) {
    SCOPED_TRACE(table);
    const support::TempDir installation;
    const fs::path install = support::linkInstallation(installation, {table});
    const ProgramRun missing = run({"-iso"}, install);
    EXPECT_EQ(missing.status, 0);
    EXPECT_TRUE(
        missing.err.ends_with("\tCan't open file " + (install / "tab" / table).string() + " for reading\n"))
        << missing.err;
    EXPECT_FALSE(exists("predAll.tab"));
    if (table != "isoadj.tab") continue;
    run({}, install);
    EXPECT_TRUE(fs::remove(dir / "predAll.tab")) << "isotope shifts matter only with -iso";
  }
}

TEST_F(Failures, MissingWeightFiles) {
  const std::pair<const char*, int> cases[] = {{"surf20_hyb.level1.WI.tab", 160},
                                               {"ss.center.level2.WL2.tab", 6},
                                               {"seqSS.level1.WL1.tab", 272},
                                               {"chi1_L.level1.WI.tab", 39}};
  for (const auto& [file, inputs] : cases) {  // inputs of the first layer that finds no weights
    SCOPED_TRACE(file);
    const support::TempDir installation;
    const ProgramRun missing = run({}, support::linkInstallation(installation, {file}));
    EXPECT_EQ(missing.status, 0);
    EXPECT_TRUE(contains(missing.err, "\tFile Error: Can't open input file for reading\n")) << missing.err;
    // Row 0 is created by the look-up, so one empty row faces no bias.
    EXPECT_TRUE(missing.err.ends_with(" ANN prediction failed with inconsistent data!\n inp.size():" +
                                      std::to_string(inputs) + " w[0].size():0\n w.size():1 b.size():0\n"))
        << missing.err;
  }
}

TEST_F(Failures, UnwritableOutputsAreReportedAndTheRunGoesOn) {
  const std::pair<const char*, const char*> messages[] = {
      {"predAdjCS.tab", "\tCan't save file predAdjCS.tab\n"},
      {"predABP.tab", "\tCan't open file write file predABP.tab !!!\n"},
      {"predSS.tab", "\tCan't open write file predSS.tab !!!\n"},
      {"predS2.tab", "\tCan't open file predS2.tab !!!\n"},
      {"pred.tab", "\tCan't save file pred.tab\n"},
      {"predChi1.tab", "\tCan't save file predChi1.tab\n"},
      {"predAll.tab", "\tCan't save file predAll.tab\n"}};
  for (const auto& [file, message] : messages) fs::create_directory(dir / file);
  const ProgramRun blocked = run();
  EXPECT_EQ(blocked.status, 0);
  for (const auto& [file, message] : messages) EXPECT_TRUE(contains(blocked.err, message)) << file;
  EXPECT_TRUE(contains(blocked.out, " Running time: "));
}

TEST_F(Failures, ReferenceStructureThatCannotBeRead) {
  const ProgramRun missing = run({"-ref", "none.pdb"});
  EXPECT_EQ(missing.status, 0);
  EXPECT_TRUE(contains(missing.err,
                       "\tPDB error:: Can't open PDB file none.pdb for reading\n"
                       "\tNo reference structure loaded!\n"))
      << missing.err;
  EXPECT_EQ(table("predChi1.tab").columns.at(3), "Q_Gm") << "no observed chi1 without a structure";
  support::writeFile(dir / "empty.pdb", "HEADER    NO ATOMS\n");
  const ProgramRun empty = run({"-ref", "empty.pdb"});
  EXPECT_TRUE(contains(empty.err, "\tNo reference structure loaded!\n")) << empty.err;
  EXPECT_EQ(table("predChi1.tab").columns.at(3), "Q_Gm") << "no comparison with a structure without atoms";
  EXPECT_FALSE(contains(run({"-ref", "None"}).err, "PDB error"));
}

}  // namespace
