// What each option changes, seen through the output.
#include <gtest/gtest.h>

#include <set>

#include "support/output_table.h"
#include "support/process.h"
#include "support/synthetic.h"

namespace {

namespace fs = std::filesystem;
using support::OutputTable;
using support::ProgramRun;
using support::runOrbeln;
using support::TempDir;

class Options : public testing::Test {
 protected:
  Options() { support::writeFile(dir / "query.tab", support::helixQuery().table()); }

  ProgramRun run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"-in", "query.tab", "-noproton"});
    return runOrbeln(dir.path, ORBELN_SYNTHETIC, arguments);
  }
  OutputTable table(const std::string& name) const { return OutputTable(dir / name); }
  bool exists(const std::string& name) const { return fs::exists(dir / name); }
  /// SHIFT of the adjusted table, "-" when there is no row.
  std::string secondaryShift(const std::string& resid, const std::string& atom) const {
    for (const auto& row : table("predAdjCS.tab").rows)
      if (row.at("RESID") == resid && row.at("ATOMNAME") == atom) return row.at("SHIFT");
    return "-";
  }

  const TempDir dir;
};

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(Options, LaterInputReplacesTheEarlier) {
  support::writeFile(dir / "other.tab", support::helixQuery(100).table());
  run({"-in", "other.tab"});
  EXPECT_EQ(table("pred.tab").residues().front(), 100);
  run({"-star", "other.tab"});
  EXPECT_EQ(table("pred.tab").residues().front(), 100);
  EXPECT_TRUE(contains(support::readFile(dir / "pred.tab"), "Chemical Shift Input query.tab\n"));
}

TEST_F(Options, OutputNames) {
  struct {
    std::vector<std::string> arguments;
    std::vector<std::string> files;
  } const cases[] = {{{"-sum", "result"}, {"result", "resultAll.tab", "resultSS.tab", "resultChi1.tab"}},
                     {{"-out", "run.1.tab"}, {"run.1.tab", "run.1All.tab", "run.1ABP.tab", "run.1S2.tab"}},
                     {{"-sum", "a.tab", "-out", "b.tab", "-all", "c.tab"}, {"a.tab", "aAdjCS.tab", "c.tab"}}};
  for (const auto& c : cases) {
    run(c.arguments);
    for (const std::string& file : c.files) EXPECT_TRUE(exists(file)) << file;
  }
  EXPECT_FALSE(exists("b.tab"));
  EXPECT_FALSE(exists("pred.tab"));
}

TEST_F(Options, FirstAndLastResidue) {
  struct {
    const char *first, *last;
    int from, to;
  } const cases[] = {{"8", "20", 8, 20}, {"20", "8", 8, 20}, {"1000", "2000", 26, 26}, {"10", "10", 10, 10}};
  for (const auto& c : cases) {
    run({"-first", c.first, "-last", c.last});
    const OutputTable pred = table("pred.tab");
    ASSERT_FALSE(pred.rows.empty());
    EXPECT_EQ(pred.residues().front(), c.from);
    EXPECT_EQ(pred.residues().back(), c.to);
    EXPECT_EQ(pred.text(c.from, "CLASS"), "None") << "an artificial end is never predicted";
  }
}

TEST_F(Options, ConsensusSize) {
  // Five of five matches reach a consensus of five.
  struct {
    const char *count, *shape;
  } const cases[] = {{"5", "Generous"}, {"6", "Warn"}, {"0", "Warn"}, {"text", "Warn"}};
  for (const auto& c : cases) {
    run({"-count", c.count});
    EXPECT_EQ(table("pred.tab").text(3, "CLASS"), c.shape) << c.count;
    EXPECT_EQ(table("pred.tab").number(3, "COUNT"), 5);
    EXPECT_EQ(table("pred.tab").text(6, "CLASS"), "Strong");
  }
}

TEST_F(Options, FragmentLength) {
  // The sources hold seven residues, numbered 7 to 13: five fit in around residues 9, 10 and 11, seven only
  // around 10. Eight search as seven do and divide the distance by 48 instead of 42. -alignLen wins over
  // -len.
  const auto centres = [&] {
    std::set<std::string> numbers;
    for (const auto& row : table("predAll.tab").rows) numbers.insert(row.at("RESID"));
    return numbers;
  };
  run({"-len", "5"});
  EXPECT_EQ(table("predAll.tab").rows.front().at("RESNAMES_Q"), "?AAAA");
  EXPECT_EQ(centres(), (std::set<std::string>{"9", "10", "11"}));
  run({"-alignLen", "8", "-len", "5"});
  EXPECT_EQ(table("predAll.tab").rows.front().at("RESNAMES_Q"), "??AAAAA");
  EXPECT_EQ(centres(), std::set<std::string>{"10"});
  EXPECT_NEAR(table("pred.tab").number(6, "DIST"), 0.14047 * 42 / 48, 6e-4);
}

TEST_F(Options, DeuteriumIsotopeShifts) {
  run({});
  EXPECT_EQ(secondaryShift("6", "CA") + ' ' + secondaryShift("6", "CB"), "2.400 -0.400");
  run({"-iso"});
  EXPECT_EQ(secondaryShift("6", "CA") + ' ' + secondaryShift("6", "CB"), "2.800 0.200");
  EXPECT_EQ(secondaryShift("6", "C"), "2.000");
  EXPECT_TRUE(
      contains(support::readFile(dir / "predAdjCS.tab"), "Deuterium Isotope Shifts Correction Applied"));
}

TEST_F(Options, ReferencingOffset) {
  // Secondary CA on a line against CA - CB that crosses zero 0.4 ppm above its usual place for positive
  // values (0.459), with a little noise that the fit averages out.
  support::Query query = support::helixQuery();
  for (int resid = 2; resid <= 16; ++resid) {
    const double d = 0.4 * resid, ca = 0.859 + 0.5 * d + (resid % 2 == 0 ? 0.01 : -0.01);
    query.shifts[{resid, "CA"}] = 52.68 + ca;
    query.shifts[{resid, "CB"}] = 19.30 + ca - d;
  }
  for (const int resid : {1, 11, 12, 16}) query.shifts.erase({resid, "CA"});  // other neighbours
  for (int resid = 17; resid <= 26; ++resid) query.removeResidue(resid);
  support::writeFile(dir / "query.tab", query.table());
  EXPECT_TRUE(contains(run({}).out, " Estimated Referencing Offset for CA/CB:  0.4"));
  const double before = std::stod(secondaryShift("6", "CA")), beforeCB = std::stod(secondaryShift("6", "CB"));
  const ProgramRun corrected = run({"-offset"});
  EXPECT_TRUE(contains(corrected.err, " ppm referencing offset applied for 13Ca and 13Cb chemical shifts\n"));
  EXPECT_NEAR(std::stod(secondaryShift("6", "CA")), before - 0.4, 0.02);
  EXPECT_NEAR(std::stod(secondaryShift("6", "CB")), beforeCB - 0.4, 0.02);
}

TEST_F(Options, CysteineOxidation) {
  support::Query query = support::helixQuery();
  query.sequence[5] = 'C';
  query.sequence[7] = 'C';
  query.shifts[{6, "CB"}] = 34.0;
  query.shifts[{8, "CB"}] = 33.9;
  support::writeFile(dir / "query.tab", query.table());
  run({});
  EXPECT_TRUE(contains(table("predSS.tab").data.at(1), "AAAAAcACAA"));
  EXPECT_EQ(table("pred.tab").text(6, "RESNAME"), "C") << "the residue name as read";
  run({"-noOxiCysCheck"});
  EXPECT_TRUE(contains(table("predSS.tab").data.at(1), "AAAAACACAA"));
  run({"-noOxiCysCheck", "-OxiCysCheck"});
  EXPECT_TRUE(contains(table("predSS.tab").data.at(1), "AAAAAcACAA"));
}

TEST_F(Options, ProtonsAreIgnoredWhereverTheFlagStands) {
  const ProgramRun run =
      runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-noproton", "-in", "query.tab", "-proton", "-sum", "pred.tab"});
  EXPECT_TRUE(contains(run.out, "ANN prediction using 13C/15N parameters only ..."));
  EXPECT_EQ(table("pred.tab").number(6, "CS_COUNT"), 12);
  EXPECT_EQ(secondaryShift("6", "HA"), "-0.300") << "the shifts are still listed";
}

TEST_F(Options, ExcludedLibrarySourcesGiveNoEstimates) {
  // Without estimates of HA its RCI term drops to the floor of 0.5: S2 0.835 instead of 0.872.
  const ProgramRun excluding = run({"-excl", "some library other"});
  EXPECT_TRUE(contains(excluding.out, "Excluding Sources in Database: some library other\n"));
  EXPECT_NEAR(table("predS2.tab").number(6, "S2"), 0.835, 6e-4);
  EXPECT_EQ(table("pred.tab").text(6, "CLASS"), "Strong") << "the fragment search excludes nothing";
}

TEST_F(Options, TablesByName) {
  // Reference shifts 1 ppm lower than those of the installation.
  std::string rows;
  for (const char code : std::string("ALGW"))
    rows += std::string(1, code) + " 123.33 3.27 176.53 51.88 18.30 7.16\n";
  support::writeFile(dir / "coil.tab", "VARS RESNAME N HA C CA CB HN\nFORMAT %s %f %f %f %f %f %f\n" + rows);
  support::writeFile(dir / "none.tab", "VARS RESNAME N HA C CA CB HN\nFORMAT %s %f %f %f %f %f %f\n");
  run({"-rand", "coil.tab"});
  EXPECT_EQ(secondaryShift("6", "CA"), "3.400");
  run({"-adj", "none.tab", "-prev", "none.tab", "-next", "none.tab"});
  EXPECT_EQ(secondaryShift("6", "N"), "-2.500");
  EXPECT_EQ(secondaryShift("6", "CA"), "2.200");
  EXPECT_EQ(secondaryShift("6", "HN"), "-0.100");
}

TEST_F(Options, InstallationDirectory) {
  fs::create_directory_symlink(ORBELN_SYNTHETIC, dir / "installation");
  fs::create_directory_symlink(fs::path(ORBELN_SYNTHETIC) / "tab", dir / "tab");
  struct {
    fs::path environment;
    std::vector<std::string> arguments;
  } const cases[] = {{"", {}},         // ./tab
                     {"nowhere", {}},  // a name without separator stands for the working directory
                     {"/nowhere", {"-orbelnDir", "installation"}},
                     {"/nowhere", {"-orbelnDir", "no", "-orbelNDir", "no", "-orbelDir", "installation"}},
                     {"/nowhere", {"-tabDir", "installation/tab"}}};
  int number = 0;
  for (const auto& c : cases) {
    const std::string name = "run" + std::to_string(++number) + ".tab";
    std::vector<std::string> arguments{"-in", "query.tab", "-noproton", "-sum", name};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    runOrbeln(dir.path, c.environment, arguments);
    EXPECT_EQ(table(name).text(6, "CLASS"), "Strong") << name;
  }
}

TEST_F(Options, VerboseAndPathLines) {
  ProgramRun plain = run({"-path", "-nopath"});
  EXPECT_FALSE(contains(plain.out, "Reading "));
  EXPECT_TRUE(contains(plain.out, "Analyzing Chemical Shifts ...\n"));
  EXPECT_TRUE(contains(plain.out, "\nSearching database ...\n"));
  EXPECT_TRUE(plain.err.ends_with("\n\n")) << "a line end between the passes";
  EXPECT_FALSE(contains(plain.out, "Residue (center)"));

  plain = run({"-path"});
  const std::string tab = std::string(ORBELN_SYNTHETIC) + "/tab/";
  EXPECT_EQ(plain.out.find("Reading Random Coil Shifts from " + tab + "randcoil.tab\n"), 0U) << plain.out;
  EXPECT_TRUE(
      contains(plain.out, "ORBEL Weight Factors from " + tab + "weight.tab\nAnalyzing query.tab ...\n"));
  EXPECT_TRUE(
      contains(plain.out, "Reading " + tab + "orbel.tab, 217 Residues Read\nSearching database ...\n"));

  const ProgramRun verbose = run({"-noverb", "-verb"});
  EXPECT_TRUE(contains(verbose.out, "\nResidue (center) A 6 of 1 to 26\n"));
  EXPECT_TRUE(contains(verbose.out, "Searching database using predicted angles ...\n"));
  EXPECT_TRUE(contains(verbose.out, " checking 25 preliminary fragments\n"));
  EXPECT_FALSE(contains(verbose.out, "Residue (center) A 1 of")) << "chain ends are not searched";
}

}  // namespace
