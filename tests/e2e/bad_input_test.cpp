// Input that no sane program would write: a clear end or a run without nonsense, never a crash.
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

/// Fails when a table in `directory` is missing, has no rows or holds a cell that is not a number.
void expectNoNonNumbers(const fs::path& directory) {
  for (const char* file : {"predAdjCS.tab", "predABP.tab", "predSS.tab", "predS2.tab", "pred.tab",
                           "predChi1.tab", "predAll.tab"}) {
    const support::OutputTable table(directory / file);
    EXPECT_FALSE(table.rows.empty()) << file;
    std::string bad;
    for (const auto& row : table.rows)
      for (const auto& [column, cell] : row)
        for (const char* word : {"nan", "-nan", "inf", "-inf"})
          if (cell == word) bad = row.at("RESID") + ' ' + column + ' ' + cell;
    EXPECT_EQ(bad, "") << file;
  }
}

TEST(BadInput, FilesThatAreNoTables) {
  const TempDir dir;
  fs::create_directory(dir / "folder");
  std::string binary;
  for (int i = 0; i < 40000; ++i) binary += char((i * 7919 + i / 256) % 256);
  support::writeFile(dir / "empty", "");
  support::writeFile(dir / "binary", binary);
  support::writeFile(dir / "line", std::string(10'000'000, 'x'));
  support::writeFile(dir / "words", [] {
    std::string text = "DATA SEQUENCE ";
    while (text.size() < 1'000'000) text += "AAAA ";
    return text;
  }());
  const std::string noSequence = " A full amino acid sequence is required";
  const std::pair<const char*, std::string> cases[] = {{"folder", "\tCan't open file folder for reading\n"},
                                                       {"empty", noSequence},
                                                       {"binary", noSequence},
                                                       {"line", noSequence},
                                                       {"words", " No entry found in the VARS header"}};
  for (const auto& [file, message] : cases) {
    const ProgramRun run = runOrbeln(dir.path, kInstall, {"-in", file});
    EXPECT_EQ(run.status, std::string(file) == "folder" ? 0 : 255) << file;
    EXPECT_NE(run.err.find(message), std::string::npos) << file << '\n' << run.err.substr(0, 2000);
  }
  for (const char* file : {"folder", "empty", "binary", "line"}) {
    support::writeFile(dir / "query.tab", support::helixQuery().table());
    const ProgramRun run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton", "-ref", file});
    EXPECT_EQ(run.status, 0) << file;
    expectNoNonNumbers(dir.path);
  }
}

TEST(BadInput, ShiftsThatAreNoNumbers) {
  const TempDir dir;
  support::Query query = support::helixQuery();
  std::string text = query.table();
  const char* values[] = {"nan",  "-nan", "inf",    "-inf", "1e300", "-1e300",
                          "text", "999",  "1e-320", "0x10", "9999"};
  int resid = 4;
  for (const char* value : values) {
    for (const char* atom : {"CA", "N", "HA"}) {
      const std::string row = '\n' + std::to_string(resid) + ' ' + (resid == 12 ? "L " : "A ") + atom + ' ';
      const std::size_t cell = text.find(row) + row.size();
      ASSERT_GT(cell, row.size());
      text.replace(cell, text.find('\n', cell) - cell, value);
    }
    ++resid;
  }
  support::writeFile(dir / "query.tab", text);
  for (const char* mode : {"-noproton", "-proton", "-offset"}) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton", mode}).status, 0);
    expectNoNonNumbers(dir.path);
  }
}

TEST(BadInput, ResidueNumbersAndNamesOutOfPlace) {
  const TempDir dir;
  const std::string odd =
      support::helixQuery().table() +
      "500 A CA 52.0\n-70 W N 120.0\nx y z 1\n7 SER CA 52.0\n8 averyveryverylongname CA 52.0\n";
  support::writeFile(dir / "query.tab", odd);
  ProgramRun run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton"});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.err.find("Residue 500 SEQUENCE:  Chemical Shift Table: A."), std::string::npos) << run.err;
  expectNoNonNumbers(dir.path);
  // A range of two thousand million residues is a mistake in the file, not a protein.
  support::writeFile(dir / "query.tab", odd + "-2147483648 A CA 50\n2147483647 A CA 50\n");
  run = runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton"});
  EXPECT_EQ(run.status, 255);
  EXPECT_NE(run.err.find("is too long, check the RESID column, exit ...\n"), std::string::npos) << run.err;
}

TEST(BadInput, TinyChains) {
  for (const int length : {1, 2, 3, 4, 5}) {
    SCOPED_TRACE(length);
    const TempDir dir;
    support::Query query = support::helixQuery();
    for (int resid = length + 1; resid <= 26; ++resid) query.removeResidue(resid);
    query.sequence.resize(std::size_t(length));
    support::writeFile(dir / "query.tab", query.table());
    EXPECT_EQ(runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton"}).status, 0);
    EXPECT_EQ(support::OutputTable(dir / "pred.tab").residues().size(), std::size_t(length));
  }
}

TEST(BadInput, CarriageReturnsChangeNothing) {
  const TempDir dir;
  const std::string text = support::helixQuery().table();
  std::string dos;
  for (const char c : text) dos += c == '\n' ? std::string("\r\n") : std::string(1, c);
  support::writeFile(dir / "unix.tab", text);
  support::writeFile(dir / "dos.tab", dos);
  for (const std::string name : {"unix", "dos"})
    ASSERT_EQ(runOrbeln(dir.path, kInstall,
                        {"-in", name + ".tab", "-inTitle", "query", "-sum", name + "_pred.tab", "-noproton"})
                  .status,
              0);
  EXPECT_EQ(support::OutputTable(dir / "unix_pred.tab").rows,
            support::OutputTable(dir / "dos_pred.tab").rows);
  EXPECT_EQ(support::readFile(dir / "unix_predABP.tab"), support::readFile(dir / "dos_predABP.tab"));
}

TEST(BadInput, DatabaseRecords) {
  const TempDir dir;
  const std::string good = support::readFile(kInstall / "tab" / "orbel.tab");
  const std::string record = " A 1 -63 -42 9999 96 -1 1 0.7 1 3 1 3.4 1 0.6 0 0.8 1\n";
  support::writeFile(dir / "query.tab", support::helixQuery().table());
  support::writeFile(dir / "good.tab", good);
  support::writeFile(dir / "odd.tab", good + std::string(100'000, 'n') + record +
                                          "cut A 5 -63.0 -42.0 60\n   \nalone\n" + "words A x y z w v\n" +
                                          "box A 1 -63 -42 60 4000000000 nan 1 inf 1 1e40 1 0 1 0 1 0 1\n" +
                                          std::string(300'000, '#') + "\ncut2 A 5 -63.0");
  ASSERT_EQ(runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton", "-db", "good.tab"}).status, 0);
  const auto rows = support::OutputTable(dir / "pred.tab").rows;
  const ProgramRun run =
      runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton", "-path", "-db", "odd.tab"});
  EXPECT_EQ(run.status, 0);
  // No odd record forms seven consecutive residues of one source, so none can match.
  EXPECT_EQ(support::OutputTable(dir / "pred.tab").rows, rows);
  std::size_t warnings = 0;
  for (std::size_t at = run.err.find("Warning"); at != std::string::npos;
       at = run.err.find("Warning", at + 1))
    ++warnings;
  EXPECT_EQ(warnings, 1U) << run.err;
  support::writeFile(dir / "empty.tab", "");
  EXPECT_EQ(runOrbeln(dir.path, kInstall, {"-in", "query.tab", "-noproton", "-db", "empty.tab"}).status, 0);
  EXPECT_EQ(support::OutputTable(dir / "pred.tab").text(6, "CLASS"), "None");
}

TEST(BadInput, ReferenceTablesWithoutContent) {
  for (const char* table : {"randcoil.tab", "sslimit.tab", "homology.tab", "weight.tab", "BLOSUM62.tab",
                            "orbel_obsCS.tab", "chi1.tab"}) {
    SCOPED_TRACE(table);
    const TempDir dir;
    const fs::path install = support::linkInstallation(dir, {table});
    support::writeFile(install / "tab" / table, "REMARK nothing here\n");
    support::writeFile(dir / "query.tab", support::helixQuery().table());
    const ProgramRun run = runOrbeln(dir.path, install, {"-in", "query.tab", "-noproton"});
    EXPECT_EQ(run.status, 0) << run.err;
  }
}

}  // namespace
