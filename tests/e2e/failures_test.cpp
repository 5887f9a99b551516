// Every documented failure as a user sees it: message, stream and exit status.
#include <gtest/gtest.h>

#include "support/output_table.h"
#include "support/process.h"
#include "support/synthetic.h"

namespace {

namespace fs = std::filesystem;
using support::ProgramRun;
using support::runOrbeln;
using support::TempDir;

const fs::path kInstall = ORBELN_SYNTHETIC;

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

struct Case {
  const char* name;
  std::vector<std::string> arguments;
  int status;
  std::string err, out;  ///< parts of the two streams
};

void check(const fs::path& cwd, const Case& c) {
  SCOPED_TRACE(c.name);
  const ProgramRun run = runOrbeln(cwd, kInstall, c.arguments);
  EXPECT_EQ(run.status, c.status);
  EXPECT_TRUE(contains(run.err, c.err)) << run.err;
  EXPECT_TRUE(contains(run.out, c.out)) << run.out;
}

TEST(Failures, UsageText) {
  const TempDir dir;
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"-help"}, {"-in", "query.tab", "-help", "-verb"}}) {
    const ProgramRun run = runOrbeln(dir.path, kInstall, arguments);
    EXPECT_EQ(run.status, 255);
    EXPECT_EQ(run.out, "");
    const std::string rule(1, '*'), line = rule + std::string(68, '-') + rule + '\n';
    EXPECT_EQ(run.err.find(line + " This is the ORBEL-N system"), 0U) << run.err;
    EXPECT_TRUE(contains(run.err, "\nInput Options:\n -in           [None]         Input Shift Table.\n"));
    EXPECT_TRUE(run.err.ends_with("   orbeln -in ubiq.tab -ref ubiq.pdb\n")) << run.err;
  }
}

TEST(Failures, InputTables) {
  const TempDir dir;
  const std::string sequence = "DATA SEQUENCE AAA\n", vars = "VARS RESID RESNAME ATOMNAME SHIFT\n",
                    format = "FORMAT %4d %s %4s %8.3f\n", row = "2 A CA 52.5\n";
  support::writeFile(dir / "format.tab", sequence + vars + "FORMAT %4d %s  %4i  %8.3f\n" + row);
  support::writeFile(dir / "nosequence.tab", vars + format + row);
  support::writeFile(dir / "novars.tab", sequence + row);
  support::writeFile(dir / "norows.tab", sequence + vars + format + "2 A CA\n");
  const Case cases[] = {
      {"no input named", {"-noproton"}, 0, "\tCan't open file  for reading\n", ""},
      {"missing file", {"-in", "none.tab"}, 0, "\tCan't open file none.tab for reading\n", ""},
      {"bad conversion", {"-in", "format.tab"}, 0, "\tBad format syntax '%4i  '\n", ""},
      {"no sequence",
       {"-in", "nosequence.tab"},
       255,
       " A full amino acid sequence is required in the DATA SEQUENCE header, exit ...\n",
       ""},
      {"no columns", {"-in", "novars.tab"}, 255, " No entry found in the VARS header, exit ...\n", ""},
      {"no rows", {"-in", "norows.tab"}, 255, " No chemical shift data found in file norows.tab\n", ""},
  };
  for (const Case& c : cases) check(dir.path, c);
}

TEST(Failures, OptionsOutOfRange) {
  const TempDir dir;
  support::writeFile(dir / "query.tab", support::helixQuery().table());
  const Case cases[] = {
      {"unknown name", {"-frob", "3", "-in", "query.tab", "-check"}, 255, " Invaid arg name -frob\n", ""},
      {"retired names", {"-in", "query.tab", "-nodetail", "-check"}, 255, " Invaid arg name -nodetail\n", ""},
      {"negative value",
       {"-in", "query.tab", "-offset", "-0.5", "-check"},
       255,
       " Invaid arg name -0.5\n",
       ""},
      {"hyphen in a value", {"-in", "my-query.tab"}, 0, "\tCan't open file my for reading\n", ""},
      {"no checkpoint", {"-seqSS", "-blast_check", "none.check"}, 255, "", "\nUnable to open file"},
      {"short fragments", {"-in", "query.tab", "-alignLen", "4"}, 255, "alignLen", ""},
      {"long fragments", {"-in", "query.tab", "-len", "9"}, 255, "5 to 8", ""},
  };
  for (const Case& c : cases) check(dir.path, c);
  EXPECT_FALSE(fs::exists(dir / "pred.tab"));
}

TEST(Failures, CheckOnlyRunReportsAndEndsWith255) {
  const TempDir dir;
  support::writeFile(dir / "query.tab", support::helixQuery().table());
  const ProgramRun run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-check"});
  EXPECT_EQ(run.status, 255);
  EXPECT_TRUE(contains(run.out, "\nChecking for Chemical Shift Outliers ...\n"));
  EXPECT_TRUE(contains(run.out, "\nChecking Chemical Shift Referencing ...\n"));
  EXPECT_FALSE(contains(run.out, "Running time"));
  EXPECT_TRUE(fs::exists(dir / "predAdjCS.tab"));
  EXPECT_FALSE(fs::exists(dir / "predABP.tab"));
}

TEST(Failures, SequenceMismatchesAreCountedPerRow) {
  const TempDir dir;
  // The sequence calls residue 3 tryptophan; the six rows of residue 3 say alanine. A row less is four
  // mismatches more than allowed only with all of them present.
  support::Query query = support::helixQuery();
  const std::string table = query.table();
  const auto write = [&](const std::string& shifts) {
    std::string text = shifts;
    text.replace(text.find("SEQUENCE AAA"), 12, "SEQUENCE AAW");
    support::writeFile(dir / "query.tab", text);
  };
  write(table);
  ProgramRun run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-check"});
  EXPECT_TRUE(contains(run.err,
                       "WARNING: Residue Type Mismatch: Residue 3 SEQUENCE: W Chemical Shift Table: A.\n"
                       "Format Errors: Too Many Sequence Mismatches: 6, 5 Max.\n"))
      << run.err;
  query.shifts.erase({3, "CB"});
  query.shifts.erase({3, "N"});
  write(query.table());
  run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-check"});
  EXPECT_TRUE(contains(run.err, "Residue Type Mismatch: Residue 3"));
  EXPECT_FALSE(contains(run.err, "Too Many")) << run.err;
}

TEST(Failures, MissingReferenceTableEndsTheRunWithStatus0) {
  for (const char* table :
       {"randcoil.tab", "rcadj.tab", "rcprev.tab", "rcnext.tab", "isoadj.tab", "sslimit.tab", "homology.tab",
        "weight.tab", "BLOSUM62.tab", "orbel_obsCS.tab", "chi1.tab"}) {
    SCOPED_TRACE(table);
    const TempDir dir;
    const fs::path install = support::linkInstallation(dir, {table});
    support::writeFile(dir / "query.tab", support::helixQuery().table());
    const ProgramRun run = runOrbeln(dir.path, install, {"-in", "query.tab", "-noproton", "-iso"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(
        run.err.ends_with("\tCan't open file " + (install / "tab" / table).string() + " for reading\n"))
        << run.err;
    EXPECT_FALSE(fs::exists(dir / "predAll.tab"));
  }
}

TEST(Failures, MissingIsotopeTableMattersOnlyWithIso) {
  const TempDir dir;
  const fs::path install = support::linkInstallation(dir, {"isoadj.tab"});
  support::writeFile(dir / "query.tab", support::helixQuery().table());
  EXPECT_EQ(runOrbeln(dir.path, install, {"-in", "query.tab", "-noproton"}).status, 0);
  EXPECT_TRUE(fs::exists(dir / "predAll.tab"));
}

TEST(Failures, MissingDatabase) {
  const TempDir dir;
  support::writeFile(dir / "query.tab", support::helixQuery().table());
  check(dir.path, {"database",
                   {"-in", "query.tab", "-noproton", "-db", "none.tab"},
                   0,
                   "\tCan't open database file none.tab for reading\n",
                   "RCI prediction ...\n"});
}

TEST(Failures, MissingWeightFiles) {
  struct {
    const char* file;
    int inputs;  ///< of the first layer that finds no weights
  } const cases[] = {{"surf20_hyb.level1.WI.tab", 160},
                     {"ss.center.level2.WL2.tab", 6},
                     {"seqSS.level1.WL1.tab", 272},
                     {"chi1_L.level1.WI.tab", 39}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    const TempDir dir;
    const fs::path install = support::linkInstallation(dir, {c.file});
    support::writeFile(dir / "query.tab", support::helixQuery().table());
    const ProgramRun run = runOrbeln(dir.path, install, {"-in", "query.tab", "-noproton"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(contains(run.err, "\tFile Error: Can't open input file for reading\n")) << run.err;
    // Row 0 is created by the look-up, so one empty row faces no bias.
    EXPECT_TRUE(run.err.ends_with(" ANN prediction failed with inconsistent data!\n inp.size():" +
                                  std::to_string(c.inputs) + " w[0].size():0\n w.size():1 b.size():0\n"))
        << run.err;
  }
}

TEST(Failures, UnwritableOutputsAreReportedAndTheRunGoesOn) {
  const TempDir dir;
  support::writeFile(dir / "query.tab", support::helixQuery().table());
  const std::pair<const char*, const char*> messages[] = {
      {"predAdjCS.tab", "\tCan't save file predAdjCS.tab\n"},
      {"predABP.tab", "\tCan't open file write file predABP.tab !!!\n"},
      {"predSS.tab", "\tCan't open write file predSS.tab !!!\n"},
      {"predS2.tab", "\tCan't open file predS2.tab !!!\n"},
      {"pred.tab", "\tCan't save file pred.tab\n"},
      {"predChi1.tab", "\tCan't save file predChi1.tab\n"},
      {"predAll.tab", "\tCan't save file predAll.tab\n"}};
  for (const auto& [file, message] : messages) fs::create_directory(dir / file);
  const ProgramRun run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton"});
  EXPECT_EQ(run.status, 0);
  for (const auto& [file, message] : messages) EXPECT_TRUE(contains(run.err, message)) << file;
  EXPECT_TRUE(contains(run.out, " Running time: "));
}

TEST(Failures, ReferenceStructureThatCannotBeRead) {
  const TempDir dir;
  support::writeFile(dir / "query.tab", support::helixQuery().table());
  ProgramRun run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton", "-ref", "none.pdb"});
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(contains(run.err,
                       "\tPDB error:: Can't open PDB file none.pdb for reading\n"
                       "\tNo reference structure loaded!\n"))
      << run.err;
  const support::OutputTable chi1(dir / "predChi1.tab");
  EXPECT_EQ(chi1.columns.at(3), "Q_Gm") << "no observed chi1 without a structure";
  run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton", "-ref", "None"});
  EXPECT_FALSE(contains(run.err, "PDB error"));
}

}  // namespace
