// What each option changes, seen through the output.
#include <set>

#include "support/helix_run.h"

namespace {

class Options : public support::HelixRun {
 protected:
  /// The cell in the first row of a residue, or of its atom ("6 CA"); "-" without such a row.
  std::string cell(const std::string& file, const std::string& row, const std::string& column) const {
    const auto key = support::split(row);
    for (const auto& cells : table(file).rows)
      if (cells.at("RESID") == key[0] && (key.size() == 1 || cells.at("ATOMNAME") == key[1]))
        return cells.at(column);
    return "-";
  }
};

TEST_F(Options, CellsThatAnOptionChanges) {
  // Reference shifts 1 ppm lower than those of the installation.
  std::string rows;
  for (const char code : std::string("ALGW"))
    rows += std::string(1, code) + " 123.33 3.27 176.53 51.88 18.30 7.16\n";
  support::writeFile(dir / "coil.tab", "VARS RESNAME N HA C CA CB HN\nFORMAT %s %f %f %f %f %f %f\n" + rows);
  support::writeFile(dir / "none.tab", "VARS RESNAME N HA C CA CB HN\nFORMAT %s %f %f %f %f %f %f\n");
  struct Cell {
    const char *file, *row, *column, *text;
  };
  const struct {
    const char* arguments;
    std::vector<Cell> cells;
  } cases[] = {
      {"", {{"predAdjCS.tab", "6 CA", "SHIFT", "2.400"}, {"predAdjCS.tab", "6 CB", "SHIFT", "-0.400"}}},
      {"-iso",
       {{"predAdjCS.tab", "6 CA", "SHIFT", "2.800"},
        {"predAdjCS.tab", "6 CB", "SHIFT", "0.200"},
        {"predAdjCS.tab", "6 C", "SHIFT", "2.000"}}},
      {"-rand coil.tab", {{"predAdjCS.tab", "6 CA", "SHIFT", "3.400"}}},
      {"-adj none.tab -prev none.tab -next none.tab",
       {{"predAdjCS.tab", "6 N", "SHIFT", "-2.500"},
        {"predAdjCS.tab", "6 CA", "SHIFT", "2.200"},
        {"predAdjCS.tab", "6 HN", "SHIFT", "-0.100"}}},
      // Protons are ignored wherever the flag stands, but listed.
      {"-proton", {{"pred.tab", "6", "CS_COUNT", "12"}, {"predAdjCS.tab", "6 HA", "SHIFT", "-0.300"}}},
      // An artificial end is never predicted; exchanged ends are put right.
      {"-first 20 -last 8",
       {{"pred.tab", "7", "CLASS", "-"},
        {"pred.tab", "8", "CLASS", "None"},
        {"pred.tab", "20", "CLASS", "None"},
        {"pred.tab", "21", "CLASS", "-"}}},
      {"-first 1000 -last 2000", {{"pred.tab", "25", "CLASS", "-"}, {"pred.tab", "26", "CLASS", "None"}}},
      // Five of five matches reach a consensus of five.
      {"-count 5", {{"pred.tab", "3", "CLASS", "Generous"}, {"pred.tab", "3", "COUNT", "5"}}},
      {"-count 6", {{"pred.tab", "3", "CLASS", "Warn"}, {"pred.tab", "6", "CLASS", "Strong"}}},
      {"-count 0", {{"pred.tab", "3", "CLASS", "Warn"}}},
      {"-count text", {{"pred.tab", "3", "CLASS", "Warn"}}},
      // Without estimates of HA its RCI term drops to the floor of 0.5; the fragment search excludes nothing.
      {"-excl library", {{"predS2.tab", "6", "S2", "0.835"}, {"pred.tab", "6", "CLASS", "Strong"}}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    EXPECT_EQ(run(support::split(c.arguments)).status, 0);
    for (const Cell& expected : c.cells)
      EXPECT_EQ(cell(expected.file, expected.row, expected.column), expected.text) << expected.row;
    const std::string adjusted = support::readFile(dir / "predAdjCS.tab");
    EXPECT_EQ(support::contains(adjusted,
                                " Deuterium Isotope Shifts Correction Applied for 13Ca and 13Cb Nuclei\n"),
              std::string(c.arguments) == "-iso");
  }
}

TEST_F(Options, OutputNames) {
  run({"-sum", "a.b.tab", "-out", "c.tab", "-all", "d.tab"});
  for (const char* file :
       {"a.b.tab", "a.bAdjCS.tab", "a.bABP.tab", "a.bSS.tab", "a.bS2.tab", "a.bChi1.tab", "d.tab"})
    EXPECT_TRUE(exists(file)) << file;
  EXPECT_FALSE(exists("c.tab") || exists("pred.tab"));
  // Only a dot of the file name begins an ending.
  std::filesystem::create_directory(dir / "v1.2");
  run({"-sum", "v1.2/result"});
  EXPECT_TRUE(exists("v1.2/result") && exists("v1.2/resultAdjCS.tab") && exists("v1.2/resultAll.tab"));
  run({"-sum", "./plain"});
  EXPECT_TRUE(exists("plainAdjCS.tab") && !exists("AdjCS.tab") && !exists(".AdjCS.tab"));
}

TEST_F(Options, FragmentLength) {
  // The sources hold seven residues, numbered 7 to 13: five fit in around residues 9, 10 and 11, seven only
  // around 10. Eight search as seven do and divide the distance by 48 instead of 42. -alignLen wins over
  // -len.
  const struct {
    std::vector<std::string> arguments;
    const char* query;
    std::set<std::string> centres;
  } cases[] = {{{"-len", "5"}, "?AAAA", {"9", "10", "11"}},
               {{"-alignLen", "8", "-len", "5"}, "??AAAAA", {"10"}}};
  for (const auto& c : cases) {
    run(c.arguments);
    std::set<std::string> centres;
    for (const auto& row : table("predAll.tab").rows) centres.insert(row.at("RESID"));
    EXPECT_EQ(centres, c.centres);
    EXPECT_EQ(table("predAll.tab").rows.front().at("RESNAMES_Q"), c.query);
  }
  EXPECT_NEAR(table("pred.tab").number(6, "DIST"), 0.14047 * 42 / 48, 6e-4);
}

TEST_F(Options, VerboseAndPathLines) {
  const std::string tab = std::string(ORBELN_SYNTHETIC) + "/tab/";
  const struct {
    std::vector<std::string> arguments, said, notSaid;
  } cases[] = {{{"-path", "-nopath"},
                {"Analyzing Chemical Shifts ...\n", "\nSearching database ...\n"},
                {"Reading ", "Residue (center)"}},
               {{"-path"},
                {"Reading Random Coil Shifts from " + tab + "randcoil.tab\n",
                 "ORBEL Weight Factors from " + tab + "weight.tab\nAnalyzing query.tab ...\n",
                 "Reading " + tab + "orbel.tab, 217 Residues Read\nSearching database ...\n"},
                {}},
               {{"-noverb", "-verb"},
                {"\nResidue (center) A 6 of 1 to 26\n", "Searching database using predicted angles ...\n",
                 " checking 25 preliminary fragments\n"},
                {"Residue (center) A 1 of"}}};  // chain ends are not searched
  for (const auto& c : cases) {
    const support::ProgramRun printed = run(c.arguments);
    for (const std::string& line : c.said) EXPECT_TRUE(support::contains(printed.out, line)) << line;
    for (const std::string& line : c.notSaid) EXPECT_FALSE(support::contains(printed.out, line)) << line;
    EXPECT_EQ(printed.err.ends_with("\n\n"), c.arguments.back() != "-verb")
        << "a line end between the passes";
  }
}

}  // namespace
