// The real installation on the example input: answers that anyone who knows the fold would accept.
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "support/output_table.h"
#include "support/process.h"

namespace {

namespace fs = std::filesystem;
using support::OutputTable;

const fs::path kInput = fs::path(ORBELN_EXAMPLES) / "ubiquitin" / "ubiquitin.tab";

class Ubiquitin : public testing::Test {
 protected:
  void SetUp() override {
    if (fs::exists(fs::path(ORBELN_INSTALL) / "tab" / "surf20.level2.WL2.tab")) return;
    std::cout << "The installation " << ORBELN_INSTALL << " holds no networks: nothing to predict with.\n";
    GTEST_SKIP();
  }

  /// Runs the example with further arguments; false when a table is missing.
  void predict(std::vector<std::string> arguments) const {
    fs::copy_file(kInput, dir / "ubiquitin.tab", fs::copy_options::overwrite_existing);
    arguments.insert(arguments.begin(), {"-in", "ubiquitin.tab"});
    const support::ProgramRun run = support::runOrbeln(dir.path, ORBELN_INSTALL, arguments);
    ASSERT_EQ(run.status, 0) << run.err;
    for (const char* ending : {"", "All", "ABP", "SS", "S2", "Chi1", "AdjCS"})
      ASSERT_TRUE(fs::exists(dir / ("pred" + std::string(ending) + ".tab"))) << ending;
  }

  const support::TempDir dir;
};

/// How many residues of `from`..`to` have phi and psi within 40 degrees of the given values.
int countNear(const OutputTable& pred, int from, int to, double phi, double psi) {
  int near = 0;
  for (int resid = from; resid <= to; ++resid)
    near += std::abs(pred.number(resid, "PHI") - phi) <= 40.0 &&
            std::abs(pred.number(resid, "PSI") - psi) <= 40.0;
  return near;
}

void expectUbiquitinFold(const OutputTable& pred, const OutputTable& ss) {
  EXPECT_EQ(pred.rows.size(), 76U);
  // The long helix; strands 1, 2, 3 and 5 of the sheet; a left-handed glycine; loose chain ends.
  EXPECT_GE(countNear(pred, 24, 33, -63.0, -42.0), 9);
  EXPECT_GE(countNear(pred, 3, 6, -115.0, 130.0), 3);
  EXPECT_GE(countNear(pred, 41, 45, -115.0, 130.0), 4);
  EXPECT_GE(countNear(pred, 66, 70, -115.0, 130.0), 4);
  EXPECT_GT(pred.number(47, "PHI"), 0.0);
  EXPECT_EQ(pred.text(1, "CLASS") + pred.text(76, "CLASS"), "NoneNone");
  EXPECT_LT(pred.number(75, "S2"), pred.number(28, "S2"));
  int strong = 0;
  for (const auto& row : pred.rows) strong += row.at("CLASS") == "Strong" || row.at("CLASS") == "Generous";
  EXPECT_GE(strong, 50);
  int helix = 0, strand = 0;
  for (int resid = 24; resid <= 33; ++resid) helix += ss.text(resid, "SS_CLASS") == "H";
  for (const int resid : {3, 4, 5, 6, 42, 43, 44, 67, 68, 69}) strand += ss.text(resid, "SS_CLASS") == "E";
  EXPECT_GE(helix, 9);
  EXPECT_GE(strand, 8);
}

TEST_F(Ubiquitin, FoldFromAllShifts) {
  predict({});
  expectUbiquitinFold(OutputTable(dir / "pred.tab"), OutputTable(dir / "predSS.tab"));
}

/// Offset that the check reports for CA and CB when `added` ppm are added to both; 0 when it reports none.
double reportedCarbonOffset(const fs::path& dir, double added) {
  std::ifstream in(kInput);
  std::ofstream out(dir / "moved.tab");
  for (std::string line; std::getline(in, line);) {
    std::istringstream cells(line);
    std::string resid, name, atom;
    double shift = 0.0;
    if (cells >> resid >> name >> atom >> shift && (atom == "CA" || atom == "CB"))
      out << resid << ' ' << name << ' ' << atom << ' ' << shift + added << '\n';
    else
      out << line << '\n';
  }
  out.close();
  const support::ProgramRun run = support::runOrbeln(dir, ORBELN_INSTALL, {"-in", "moved.tab", "-check"});
  EXPECT_NE(run.out.find("Checking Chemical Shift Referencing"), std::string::npos) << run.err;
  const std::string label = "Estimated Referencing Offset for CA/CB:";
  const std::size_t at = run.out.find(label);
  return at == std::string::npos ? 0.0 : std::stod(run.out.substr(at + label.size()));
}

TEST_F(Ubiquitin, ReferencingOffsetIsFoundWhereThereIsOne) {
  EXPECT_EQ(reportedCarbonOffset(dir.path, 0.0), 0.0);
  EXPECT_NEAR(reportedCarbonOffset(dir.path, 2.0), 2.0, 0.25);
  EXPECT_NEAR(reportedCarbonOffset(dir.path, -1.5), -1.5, 0.25);
}

TEST_F(Ubiquitin, FoldWithoutProtons) {
  predict({"-noproton"});
  expectUbiquitinFold(OutputTable(dir / "pred.tab"), OutputTable(dir / "predSS.tab"));
}

}  // namespace
