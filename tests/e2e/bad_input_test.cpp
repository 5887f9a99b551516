// Input that no sane program would write: a clear end or a run without nonsense, never a crash.
#include <set>

#include "support/helix_run.h"

namespace {

namespace fs = std::filesystem;
using support::ProgramRun;

class BadInput : public support::HelixRun {
 protected:
  /// The bytes of the seven tables, with their names.
  std::string outputs() const {
    std::string all;
    for (const char* file : kTables) all += file + ('\n' + support::readFile(dir / file));
    return all;
  }
  static constexpr const char* kTables[] = {"predAdjCS.tab", "predABP.tab",  "predSS.tab", "predS2.tab",
                                            "pred.tab",      "predChi1.tab", "predAll.tab"};
  /// Fails when a table is missing, has no rows or holds a cell that is not a number.
  void expectNoNonNumbers() const {
    for (const char* file : kTables) {
      EXPECT_FALSE(table(file).rows.empty()) << file;
      for (const auto& row : table(file).rows)
        for (const auto& [column, cell] : row)
          for (const char* word : {"nan", "-nan", "inf", "-inf"})
            EXPECT_NE(cell, word) << file << ' ' << row.at("RESID") << ' ' << column;
    }
  }
};

TEST_F(BadInput, FilesThatAreNoTables) {
  fs::create_directory(dir / "folder");
  std::string binary;
  for (int i = 0; i < 40000; ++i) binary += char((i * 7919 + i / 256) % 256);
  support::writeFile(dir / "empty", "");
  support::writeFile(dir / "binary", binary);
  support::writeFile(dir / "line", std::string(10'000'000, 'x'));
  std::string words = "DATA SEQUENCE ";
  while (words.size() < 1'000'000) words += "AAAA ";
  support::writeFile(dir / "words", words);
  const std::string noSequence = " A full amino acid sequence is required";
  const std::pair<const char*, std::string> cases[] = {{"folder", "\tCan't open file folder for reading\n"},
                                                       {"empty", noSequence},
                                                       {"binary", noSequence},
                                                       {"line", noSequence},
                                                       {"words", " No entry found in the VARS header"}};
  for (const auto& [file, message] : cases) {
    const ProgramRun run = support::runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-in", file});
    EXPECT_EQ(run.status, std::string(file) == "folder" ? 0 : 255) << file;
    EXPECT_TRUE(support::contains(run.err, message)) << file << '\n' << run.err.substr(0, 2000);
  }
  for (const char* file : {"folder", "empty", "binary", "line"}) {
    EXPECT_EQ(run({"-ref", file}).status, 0) << file;
    expectNoNonNumbers();
  }
}

TEST_F(BadInput, ShiftsThatAreNoNumbers) {
  std::string text = support::helixQuery().table();
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
    EXPECT_EQ(run({mode}).status, 0);
    expectNoNonNumbers();
  }
}

TEST_F(BadInput, ResidueNumbersAndNamesOutOfPlace) {
  const std::string odd =
      support::helixQuery().table() +
      "500 A CA 52.0\n-70 W N 120.0\nx y z 1\n7 SER CA 52.0\n8 averyveryverylongname CA 52.0\n";
  support::writeFile(dir / "query.tab", odd);
  const ProgramRun tolerated = run();
  EXPECT_EQ(tolerated.status, 0);
  EXPECT_TRUE(support::contains(tolerated.err, "Residue 500 SEQUENCE:  Chemical Shift Table: A."))
      << tolerated.err;
  expectNoNonNumbers();
  // A range of two thousand million residues is a mistake in the file, not a protein.
  support::writeFile(dir / "query.tab", odd + "-2147483648 A CA 50\n2147483647 A CA 50\n");
  const ProgramRun refused = run();
  EXPECT_EQ(refused.status, 255);
  EXPECT_TRUE(
      support::contains(refused.err, " Residue range -999999 to 999999 in file query.tab is too long"))
      << refused.err;
}

TEST_F(BadInput, TinyChains) {
  for (const int length : {1, 2, 3, 4, 5}) {
    SCOPED_TRACE(length);
    support::Query query = support::helixQuery();
    for (int resid = length + 1; resid <= 26; ++resid) query.removeResidue(resid);
    query.sequence.resize(std::size_t(length));
    write(query);
    EXPECT_EQ(run().status, 0);
    EXPECT_EQ(table("pred.tab").residues().size(), std::size_t(length));
  }
}

TEST_F(BadInput, CarriageReturnsChangeNothing) {
  const std::string text = "REMARK  a  note\n" + support::helixQuery().table();
  std::string dos;
  for (const char c : text) dos += c == '\n' ? std::string("\r\n") : std::string(1, c);
  support::writeFile(dir / "query.tab", text);
  ASSERT_EQ(run().status, 0);
  const auto expected = outputs();
  support::writeFile(dir / "query.tab", dos);
  ASSERT_EQ(run().status, 0);
  EXPECT_EQ(outputs(), expected);
}

/// The table with the shifts of `cells` ("6 CA") given as `values` in turn, or without their rows.
std::string withMissing(const std::string& text, const std::set<std::string>& cells,
                        const std::vector<std::string>& values) {
  std::string result;
  std::size_t from = 0, replaced = 0;
  while (from < text.size()) {
    const std::size_t end = text.find('\n', from) + 1;
    const std::string line = text.substr(from, end - from);
    from = end;
    const auto words = support::split(line);
    if (words.size() != 4 || !cells.contains(words[0] + ' ' + words[2])) {
      result += line;
    } else if (!values.empty()) {
      result += words[0] + ' ' + words[1] + ' ' + words[2] + ' ' + values[replaced++ % values.size()] + '\n';
    }
  }
  return result;
}

TEST_F(BadInput, RowsOfMissingShiftsActAsAbsent) {
  // Single atoms, a glycine's proton, a whole residue, and a missing HN beside a row named H or a second HN.
  std::set<std::string> cells = {"4 CB", "5 N", "6 CA", "7 HA", "7 C", "12 HN", "15 HN", "18 HA2"};
  for (const char* atom : {"N", "HA", "C", "CA", "CB", "HN"}) cells.insert(std::string("9 ") + atom);
  const std::string text = support::helixQuery().table();
  const std::string more = "\n12 L H 8.1\n";
  const std::vector<std::vector<std::string>> values = {
      {"999"}, {"9999.000"}, {"nan"}, {"999.000", "1e30", "-nan", "inf", "-inf", "-", "?"}};
  for (const char* mode :
       {"-in query.tab", "-in query.tab -noproton -iso", "-in query.tab -noproton -offset"}) {
    SCOPED_TRACE(mode);
    const auto outputsOf = [&](const std::vector<std::string>& missing) {
      support::writeFile(dir / "query.tab", withMissing(text, cells, missing) + more + "15 A HN 8.0\n");
      EXPECT_EQ(support::runOrbeln(dir.path, ORBELN_SYNTHETIC, support::split(mode)).status, 0);
      return outputs();
    };
    const std::string expected = outputsOf({});
    for (const auto& missing : values) EXPECT_EQ(outputsOf(missing), expected) << missing[0];
  }
}

TEST_F(BadInput, DatabaseRecords) {
  const std::string good = support::readFile(fs::path(ORBELN_SYNTHETIC) / "tab" / "orbel.tab");
  const std::string record = " A 1 -63 -42 9999 96 -1 1 0.7 1 3 1 3.4 1 0.6 0 0.8 1\n";
  support::writeFile(dir / "good.tab", good);
  support::writeFile(dir / "odd.tab", good + std::string(100'000, 'n') + record +
                                          "cut A 5 -63.0 -42.0 60\n   \nalone\n" + "words A x y z w v\n" +
                                          "box A 1 -63 -42 60 4000000000 nan 1 inf 1 1e40 1 0 1 0 1 0 1\n" +
                                          std::string(300'000, '#') + "\ncut2 A 5 -63.0");
  ASSERT_EQ(run({"-db", "good.tab"}).status, 0);
  const auto rows = table("pred.tab").rows;
  const ProgramRun odd = run({"-path", "-db", "odd.tab"});
  EXPECT_EQ(odd.status, 0);
  // No odd record forms seven consecutive residues of one source, so none can match.
  EXPECT_EQ(table("pred.tab").rows, rows);
  EXPECT_NE(odd.err.find("Warning"), std::string::npos);
  EXPECT_EQ(odd.err.find("Warning"), odd.err.rfind("Warning")) << odd.err;
  support::writeFile(dir / "empty.tab", "");
  EXPECT_EQ(run({"-db", "empty.tab"}).status, 0);
  EXPECT_EQ(table("pred.tab").text(6, "CLASS"), "None");
}

TEST_F(BadInput, ReferenceTablesWithoutContent) {
  for (const char* name : {"randcoil.tab", "sslimit.tab", "homology.tab", "weight.tab", "BLOSUM62.tab",
                           "orbel_obsCS.tab", "chi1.tab"}) {
    const support::TempDir installation;
    const fs::path install = support::linkInstallation(installation, {name});
    support::writeFile(install / "tab" / name, "REMARK nothing here\n");
    EXPECT_EQ(run({}, install).status, 0) << name;
  }
}

}  // namespace
