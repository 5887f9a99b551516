// The report page and its exports made from a small set of tables.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string_view>

#include "report/program.h"
#include "support/process.h"
#include "tools/prediction_tables.h"

namespace {

/// Whether a text follows the JSON grammar: strings, numbers and words become 0, then arrays and objects from
/// the inside out.
bool isJson(std::string text) {
  const std::pair<std::regex, const char*> atoms[] = {
      {std::regex(R"re("(\\(["\\/bfnrt]|u[0-9a-f]{4})|[^"\\\x00-\x1f])*")re"), "S"},
      {std::regex(R"(-?\d+(\.\d+)?|true|false|null)"), "0"},
      {std::regex(R"(\s)"), ""}};
  for (const auto& [pattern, replacement] : atoms) text = std::regex_replace(text, pattern, replacement);
  const std::regex group(R"(\[([S0](,[S0])*)?\]|\{(S:[S0](,S:[S0])*)?\})");
  for (std::string before; before != text;) {
    before = text;
    text = std::regex_replace(before, group, "0");
  }
  return text == "0";
}

constexpr const char* kTitle = "a <b> & \"c\" \\ x";

std::string boxTable() {
  std::string names, formats, row;
  for (int k = 0; k < 324; ++k) {
    names += "Q_" + std::to_string(k) + " ";
    formats += "%5.3f ";
    row += k == 95 ? "0.750 " : k == 96 ? "0.250 " : "0.000 ";
  }
  return "REMARK boxes\n\nVARS RESID RESNAME CS_CNT5 CS_CNT_R2 CLUST_N CLUST_1_PER " + names +
         "\nFORMAT %4d %1s %2d %2d  %2d  %5.2f   " + formats + "\n\n    3 V 28  6   1 0.800   " + row + "\n";
}

std::string matchTable() {
  std::string names = "INDEX RESID_Q_CENTER RESNAMES_Q DIST W RESNAMES_DB RESID PHI PSI SOURCE";
  return "REMARK matches\n\nVARS   " + names +
         "\nFORMAT %4d %4d %7s %6.3f %4.2f  %s %4d %6.1f %6.1f %s\n\n"
         "   1    3   GALVT 10.000 1.00  GALVT    9  -65.0  -41.0 1abcA\n"
         "   2    3   GALVT 11.000 0.00  GALVT    9  120.0   15.0 1abcB\n";
}

class ReportProgram : public testing::Test {
 protected:
  ReportProgram() {
    write("pred.tab", tool_tables::torsionTable(kTitle, 1, "MKVTA",
                                                {{1, 'M', 9999, 9999, 0, 0, "None", 0},
                                                 {2, 'K', -178.5, 150.25, 12.5, 8, "Strong"},
                                                 {3, 'V', -63.1, -42.2, 5, 6, "Generous"},
                                                 {4, 'T', -80, 10, 50, 44, "Warn"},
                                                 {5, 'A', 9999, 9999, 0, 0, "None", 0}}));
    write(
        "predSS.tab",
        "REMARK SS\n \nDATA FIRST_RESID 1\n\nVARS RESID RESNAME CS_CNT CS_CNT_R2 Q_H Q_E Q_L CONFIDENCE "
        "SS_CLASS\n"
        "FORMAT %4d %1s %2d %2d %8.3f %8.3f %8.3f %4.2f %s\n\n"
        "    2 K 18  6    0.100    0.850    0.050 0.75 E\n    3 V 18  6    0.700    0.200    0.100 0.50 h\n");
    write("predS2.tab",
          "REMARK S2\n\nVARS RESID RESNAME CS_CNT CS_CNT_R2 S2 \nFORMAT %4d %1s %2d %2d %8.3f \n\n"
          "    2 K  6 18    0.912\n    3 V  6 18 9999.000\n");
    write("predChi1.tab", tool_tables::chi1Table({{2, 'K', 0.2, 0.3, 0.5, "na", 9999, 9999},
                                                  {3, 'V', 0.9, 0.06, 0.04, "g-", -62, 9}}));
    write("predABP.tab", boxTable());
    write("predAll.tab", matchTable());
    write("predAdjCS.tab",
          "REMARK  2.104 ppm referencing offset applied for 13Ca and 13Cb chemical shifts\n\n"
          "VARS   RESID RESNAME ATOMNAME SHIFT CS_OBS CS_ADJ \n"
          "FORMAT %4d %1s %4s %8.3f %9.3f %9.3f\n\n   2   K   H  0.512  8.812  8.300\n");
  }
  void write(const std::string& name, const std::string& content) { support::writeFile(dir / name, content); }

  /// Leaves the summary table alone.
  void removeOptionalTables() const {
    for (const char* name : {"SS", "S2", "Chi1", "ABP", "AdjCS", "All"})
      std::filesystem::remove(dir / ("pred" + std::string(name) + ".tab"));
  }
  void expectParts(const std::vector<std::string>& parts) const {
    for (const std::string& part : parts) EXPECT_NE(out.str().find(part), std::string::npos) << part;
  }
  int run(std::vector<std::string> options) {
    options.insert(options.begin(), dir.path.string());
    out.str("");
    err.str("");
    return report::runProgram(options, out, err);
  }

  support::TempDir dir;
  std::ostringstream out, err;
};

TEST_F(ReportProgram, PageIsSelfContained) {
  ASSERT_EQ(run({"-o", "-"}), 0) << err.str();
  std::string page = out.str();
  EXPECT_TRUE(page.starts_with("<!DOCTYPE html>"));
  EXPECT_TRUE(page.ends_with("</html>\n"));
  EXPECT_NE(page.find("a &lt;b&gt; &amp; &quot;c&quot; \\ x"), std::string::npos);
  for (char& c : page) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const char* banned : {"<b> &", "http", "src=", "<script", "<link", "@import", "url(", ">nan", "nan<",
                             "\"nan", " nan", ">inf<", "9999"}) {
    EXPECT_EQ(page.find(banned), std::string::npos) << banned;
  }
}

TEST_F(ReportProgram, PageSaysWhatTheTablesSay) {
  ASSERT_EQ(run({"-o", "-"}), 0) << err.str();
  expectParts({"1 of 5 residues are Strong and 1 Generous", "Not to be used: 1 Warn, 2 None",
               "CA/CB referencing was 2.10 ppm too high and was corrected", "2 K Strong: phi -178.5 ± 12.5°",
               "2 K Strong: psi 150.2 ± 8.0°", "2 K: S2 0.912", "3 V: g- 0.90, g+ 0.06, t 0.04; class g-",
               "<td>58.0 ± 9.0</td>",  // true chi1 of valine
               "class=\"q6\"",         // boxes with 75 and 25 % in the darkest shade
               // Box 95 is phi index 5 and psi index 5, box 96 the next psi: one rectangle two boxes high.
               "d=\"M5 11h1v2h-1z\"",
               // Error bar of residue 2 at the seam: phi -178.5 +- 12.5, panel from y 36 (180 degrees) to 156
               // (-180): lower piece 156 to 151.33, upper piece from 169 degrees, y 39.67, to 36.
               "d=\"M79 156V151.33M79 39.67V36\""});
  EXPECT_EQ(out.str().find("3 V: S2"), std::string::npos) << "a missing order parameter is not drawn";
  EXPECT_EQ(out.str().find("class=\"q5\""), std::string::npos);
}

TEST_F(ReportProgram, JsonIsValidAndComplete) {
  ASSERT_EQ(run({"--json", "-"}), 0) << err.str();
  EXPECT_TRUE(isJson(out.str())) << out.str();
  expectParts(
      {R"("input": "a <b> & \"c\" \\ x")", R"("sequence": "MKVTA")", R"("first_residue": 1,)",
       R"("offsets": [{"nuclei": "CA/CB", "offset": 2.104, "error": null, "shifts": null, "applied": true}])",
       R"("resid": 1, "resname": "M", "phi": null, "psi": null, "dphi": null, "dpsi": null, "dist": null, )"
       R"("s2": null, "count": 25, "cs_count": 18, "class": "None", "ss": null, "chi1": null, "clusters": null)",
       R"("resid": 2, "resname": "K", "phi": -178.500, "psi": 150.250, "dphi": 12.500, "dpsi": 8.000, )"
       R"("dist": 12.500, "s2": 0.912, "count": 25, "cs_count": 18, "class": "Strong", )"
       R"("ss": {"H": 0.100, "E": 0.850, "L": 0.050, "confidence": 0.75, "class": "E"}, )"
       R"("chi1": {"gm": 0.200, "gp": 0.300, "t": 0.500, "class": null, "angle": null, "sd": null, )"
       R"("torsion": null}, "clusters": null, )"
       R"("secondary_shifts": {"N": null, "HA": null, "C": null, "CA": null, "CB": null, "HN": 0.512}})",
       R"("chi1": {"gm": 0.900, "gp": 0.060, "t": 0.040, "class": "g-", "angle": -62.0, "sd": 9.0, )"
       R"("torsion": 58.0}, "clusters": 1,)"});
  EXPECT_EQ(out.str().find("\"resid\": 6"), std::string::npos);
  EXPECT_EQ(out.str().find("9999"), std::string::npos);
}

TEST_F(ReportProgram, TsvRowsFitTheHeader) {
  ASSERT_EQ(run({"--tsv", "-"}), 0) << err.str();
  std::istringstream lines(out.str());
  std::vector<std::vector<std::string>> rows;
  for (std::string line, cell; std::getline(lines, line);) {
    rows.emplace_back();
    for (std::istringstream cells(line + "\t"); std::getline(cells, cell, '\t');) rows.back().push_back(cell);
  }
  ASSERT_EQ(rows.size(), 6U);
  for (const auto& row : rows) EXPECT_EQ(row.size(), rows[0].size());
  const struct {
    std::size_t row;
    const char *column, *value;
  } cells[] = {{2, "psi", "150.250"},
               {2, "secondary_shift_HN", "0.512"},
               {3, "chi1_torsion", "58.0"},
               {3, "cluster1_share", "0.800"},
               {1, "phi", ""},
               {5, "ref_chi1", ""}};
  for (const auto& c : cells) {
    const auto column = std::find(rows[0].begin(), rows[0].end(), c.column) - rows[0].begin();
    EXPECT_EQ(rows[c.row].at(static_cast<std::size_t>(column)), c.value) << c.column;
  }
}

TEST_F(ReportProgram, MissingTablesAreSaidAndLeftOut) {
  const std::map<std::string, std::string> sections = {{"predS2.tab", "id=\"s2\""},
                                                       {"predChi1.tab", "id=\"chi1\""}};
  for (const auto& [name, heading] : sections) {
    ASSERT_EQ(run({"-o", "-"}), 0);
    expectParts({heading});
    std::filesystem::remove(dir / name);
    ASSERT_EQ(run({"-o", "-"}), 0);
    EXPECT_EQ(out.str().find(heading), std::string::npos);
    expectParts({"left out: " + name});
    EXPECT_NE(err.str().find(name + " not found"), std::string::npos);
  }
  removeOptionalTables();
  ASSERT_EQ(run({"--json", "-", "--quiet"}), 0);
  EXPECT_TRUE(isJson(out.str())) << out.str();
  EXPECT_EQ(err.str(), "");
  ASSERT_EQ(run({"-o", "-", "--title", "other"}), 0) << err.str();
  expectParts({"chemical shifts: other</h1>"});
  std::filesystem::remove(dir / "pred.tab");
  EXPECT_EQ(run({"-o", (dir / "r.html").string()}), 1);
  EXPECT_NE(err.str().find("pred.tab: cannot be opened"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir / "r.html"));
}

/// One message with file and line, and nothing written, for each faulty table.
TEST_F(ReportProgram, FaultyTablesAreNamed) {
  const struct {
    const char *file, *from, *to, *message;
  } cases[] = {{"pred.tab", "-178.500", "-278.500", "pred.tab:11: an angle beyond 180 degrees"},
               {"predSS.tab", "0.75 E", "0.75 Q", "predSS.tab:8: SS_CLASS is 'Q'"},
               {"predSS.tab", "0.850", "", "predSS.tab:8: expected 9 values, found 8"},
               {"predS2.tab", "0.912", "o.912", "predS2.tab:6: S2 is 'o.912'"},
               {"predChi1.tab", "g- ", "g? ", "predChi1.tab:8: CLASS is 'g?'"},
               {"predABP.tab", "Q_17 ", "Q_a ", "predABP.tab: no column Q_17"},
               {"predAll.tab", "   2    3", "   2   33",
                "predAll.tab:7: a residue that the summary table does not have"},
               {"predAdjCS.tab", "0.512", "0,512", "predAdjCS.tab:6: SHIFT is '0,512'"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    const std::string good = support::readFile(dir / c.file);
    ASSERT_NE(good.find(c.from), std::string::npos);
    std::string bad = good;
    bad.replace(bad.find(c.from), std::string_view(c.from).size(), c.to);
    write(c.file, bad);
    EXPECT_EQ(run({"-o", (dir / "r.html").string(), "--json", (dir / "r.json").string()}), 1);
    EXPECT_NE(err.str().find(c.message), std::string::npos) << err.str();
    EXPECT_FALSE(std::filesystem::exists(dir / "r.html") || std::filesystem::exists(dir / "r.json"));
    write(c.file, good);
  }
}

/// A planar zigzag chain, in which every torsion is 180 degrees.
std::string zigzag(int residues) {
  std::string pdb;
  int serial = 0;
  for (int resid = 1; resid <= residues; ++resid) {
    for (const char* atom : {"N", "CA", "C"}) {
      ++serial;
      pdb += tool_tables::line("ATOM  %5d  %-3s ALA A%4d    %8.3f%8.3f%8.3f  1.00  0.00\n", serial, atom,
                               resid, 1.2 * serial, serial % 2 == 0 ? 0.8 : 0.0, 0.0);
    }
  }
  return pdb;
}

TEST_F(ReportProgram, ReferenceStructureIsShownAndCompared) {
  write("ref.pdb", zigzag(5));
  std::string table = support::readFile(dir / "pred.tab");
  for (const char* className : {"Generous", "Bad"}) {  // what the run called it changes no figure
    write("pred.tab", table.replace(table.find("Generous"), 8, className));
    ASSERT_EQ(run({"-o", "-", "--ref", (dir / "ref.pdb").string()}), 0) << err.str();
    expectParts({"Against the reference ref.pdb, 1 of 2 reliable residues lie within 30°", "class=\"ref\"",
                 "60° or more away in both together: residues 3."});
    if (className[0] == 'G') continue;
    expectParts(
        {"2 of 5 residues are Strong and 0 Generous: phi and psi of these 2 can be used. Among them, "
         "class Bad because far from the reference structure: residues 3. Not to be used: 1 Warn, 2 None."});
  }
  ASSERT_EQ(run({"--json", "-", "--ref", (dir / "ref.pdb").string()}), 0);
  EXPECT_TRUE(isJson(out.str()));
  expectParts({R"("reference": {"phi": 180.0, "psi": 180.0, "chi1": null})", R"("reference": {"phi": null)"});
  write("far.pdb", "ATOM      1  CA  ALA A 900       1.000   1.000   1.000  1.00  0.00\n");
  const std::pair<const char*, const char*> useless[] = {
      {"far.pdb", "no residue of the prediction has phi and psi there"}, {"none.pdb", "cannot be opened"}};
  for (const auto& [file, reason] : useless) {
    EXPECT_EQ(run({"-o", "-", "--ref", (dir / file).string()}), 0);
    EXPECT_NE(err.str().find(reason), std::string::npos);
    expectParts({"Not compared with the reference structure: ", reason});
  }
}

TEST_F(ReportProgram, WrongCommandLines) {
  for (const char* words : {"", "x -o y z", "x", "x -o", "x -o y --colour", "x -o y --stem="}) {
    err.str("");
    EXPECT_EQ(report::runProgram(support::split(words), out, err), 2);
    EXPECT_TRUE(err.str().starts_with("orbeln-report: "));
  }
  EXPECT_EQ(run({"--help"}), 0);
  expectParts({"--tsv FILE"});
}

}  // namespace
