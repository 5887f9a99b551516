// The report page and its exports made from a small set of tables.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <map>
#include <sstream>
#include <string_view>

#include "report/program.h"
#include "support/process.h"
#include "tools/prediction_tables.h"

namespace {

/// Reads a JSON text and fails on anything the grammar does not allow; values are kept by path
/// ("residues.1.phi"), strings with their quotes.
class MiniJson {
 public:
  explicit MiniJson(std::string_view json) : text(json) {
    value("");
    blanks();
    valid = valid && at == text.size();
  }
  std::string operator[](const std::string& path) const {
    const auto it = values.find(path);
    return it == values.end() ? "absent" : it->second;
  }
  bool valid = true;

 private:
  void blanks() {
    while (at < text.size() && std::string_view(" \n\r\t").find(text[at]) != std::string_view::npos) ++at;
  }
  bool take(char c) {
    blanks();
    if (at >= text.size() || text[at] != c) return false;
    ++at;
    return true;
  }
  void expect(char c) { valid = valid && take(c); }

  std::string string() {
    const std::size_t start = at;
    expect('"');
    while (valid && at < text.size() && text[at] != '"') {
      if (static_cast<unsigned char>(text[at]) < 0x20) valid = false;
      at += text[at] == '\\' ? 2 : 1;
    }
    expect('"');
    return std::string(text.substr(start, at - start));
  }

  void number(const std::string& path) {
    const std::size_t start = at;
    const auto digits = [&] {
      const std::size_t first = at;
      while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0) ++at;
      valid = valid && at > first;
    };
    if (text[at] == '-') ++at;
    digits();
    if (at < text.size() && text[at] == '.') {
      ++at;
      digits();
    }
    values[path] = text.substr(start, at - start);
  }

  template <class Item>
  void list(char open, char close, Item item) {
    expect(open);
    if (take(close)) return;
    do {
      blanks();
      item();
    } while (valid && take(','));
    expect(close);
  }

  void value(const std::string& path) {
    blanks();
    if (!valid || at >= text.size()) {
      valid = false;
      return;
    }
    const std::string lead = path.empty() ? "" : path + ".";
    int index = 0;
    if (text[at] == '{') {
      list('{', '}', [&] {
        const std::string name = string();
        expect(':');
        if (valid) value(lead + name.substr(1, name.size() - 2));
      });
    } else if (text[at] == '[') {
      list('[', ']', [&] { value(lead + std::to_string(index++)); });
    } else if (text[at] == '"') {
      values[path] = string();
    } else if (std::isalpha(static_cast<unsigned char>(text[at])) != 0) {
      for (const std::string_view word : {"null", "true", "false"}) {
        if (text.substr(at).starts_with(word)) values[path] = word;
      }
      valid = valid && values.contains(path);
      at += values[path].size();
    } else {
      number(path);
    }
  }

  std::string_view text;
  std::size_t at = 0;
  std::map<std::string, std::string> values;
};

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
  const std::string page = out.str();
  for (const char* expected : {"1 of 5 residues are Strong and 1 Generous", "Not to be used: 1 Warn, 2 None",
                               "CA/CB referencing was 2.10 ppm too high and was corrected",
                               "2 K Strong: phi -178.5 ± 12.5°", "2 K Strong: psi 150.2 ± 8.0°"}) {
    EXPECT_NE(page.find(expected), std::string::npos) << expected;
  }
  EXPECT_EQ(page.find("3 V: S2"), std::string::npos) << "a missing order parameter is not drawn";
  EXPECT_NE(page.find("2 K: S2 0.912"), std::string::npos);
  EXPECT_NE(page.find("3 V: g- 0.90, g+ 0.06, t 0.04; class g-"), std::string::npos);
  EXPECT_NE(page.find("<td>58.0 ± 9.0</td>"), std::string::npos) << "true chi1 of valine";
  EXPECT_NE(page.find("class=\"q6\""), std::string::npos) << "boxes with 75 and 25 % in the darkest shade";
  EXPECT_EQ(page.find("class=\"q5\""), std::string::npos);
  // Box 95 is phi index 5 and psi index 5, box 96 the next psi: one rectangle two boxes high.
  EXPECT_NE(page.find("d=\"M5 11h1v2h-1z\""), std::string::npos);
}

TEST_F(ReportProgram, ErrorBarAtTheSeamComesBackOnTheOtherSide) {
  ASSERT_EQ(run({"-o", "-"}), 0) << err.str();
  // Residue 2: phi -178.5 +- 12.5, panel from y 36 (180 degrees) to 156 (-180): lower piece 156 to 151.33,
  // upper piece from 169 degrees, y 39.67, to 36.
  EXPECT_NE(out.str().find("d=\"M79 156V151.33M79 39.67V36\""), std::string::npos);
}

TEST_F(ReportProgram, JsonIsValidAndComplete) {
  ASSERT_EQ(run({"--json", "-"}), 0) << err.str();
  const std::string text = out.str();
  const MiniJson json(text);
  ASSERT_TRUE(json.valid) << text;
  const std::map<std::string, std::string> expected = {
      {"input", "\"a <b> & \\\"c\\\" \\\\ x\""},
      {"sequence", "\"MKVTA\""},
      {"first_residue", "1"},
      {"residues.0.phi", "null"},
      {"residues.0.dphi", "null"},
      {"residues.0.s2", "null"},
      {"residues.0.ss", "null"},
      {"residues.1.phi", "-178.500"},
      {"residues.1.dpsi", "8.000"},
      {"residues.1.class", "\"Strong\""},
      {"residues.1.s2", "0.912"},
      {"residues.1.ss.E", "0.850"},
      {"residues.1.chi1.class", "null"},
      {"residues.1.chi1.angle", "null"},
      {"residues.1.secondary_shifts.HN", "0.512"},
      {"residues.1.secondary_shifts.CA", "null"},
      {"residues.2.chi1.gm", "0.900"},
      {"residues.2.chi1.angle", "-62.0"},
      {"residues.2.chi1.torsion", "58.0"},
      {"residues.2.clusters", "1"},
      {"residues.5.resid", "absent"},
      {"check.offsets.0.applied", "true"},
  };
  for (const auto& [path, value] : expected) EXPECT_EQ(json[path], value) << path;
  EXPECT_EQ(text.find("9999"), std::string::npos);
}

TEST_F(ReportProgram, TsvRowsFitTheHeader) {
  ASSERT_EQ(run({"--tsv", "-"}), 0) << err.str();
  std::istringstream lines(out.str());
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::string cell;
    for (const char c : line + "\t") {
      if (c != '\t') {
        cell += c;
        continue;
      }
      rows.back().push_back(cell);
      cell.clear();
    }
  }
  ASSERT_EQ(rows.size(), 6U);
  for (const auto& row : rows) EXPECT_EQ(row.size(), rows[0].size());
  const auto cell = [&](std::size_t row, const std::string& column) {
    for (std::size_t k = 0; k < rows[0].size(); ++k) {
      if (rows[0][k] == column) return rows[row][k];
    }
    return std::string("absent");
  };
  EXPECT_EQ(cell(2, "psi"), "150.250");
  EXPECT_EQ(cell(2, "shift_HN"), "0.512");
  EXPECT_EQ(cell(3, "chi1_torsion"), "58.0");
  EXPECT_EQ(cell(3, "cluster1_share"), "0.800");
  EXPECT_EQ(cell(1, "phi"), "");
  EXPECT_EQ(cell(5, "ref_chi1"), "");
}

TEST_F(ReportProgram, MissingOptionalTablesAreSaidAndLeftOut) {
  const std::map<std::string, std::string> sections = {{"predS2.tab", "id=\"s2\""},
                                                       {"predChi1.tab", "id=\"chi1\""}};
  for (const auto& [name, heading] : sections) {
    ASSERT_EQ(run({"-o", "-"}), 0);
    EXPECT_NE(out.str().find(heading), std::string::npos);
    std::filesystem::remove(dir / name);
    ASSERT_EQ(run({"-o", "-"}), 0);
    EXPECT_EQ(out.str().find(heading), std::string::npos);
    EXPECT_NE(out.str().find("left out: " + name), std::string::npos);
    EXPECT_NE(err.str().find(name + " not found"), std::string::npos);
    ASSERT_EQ(run({"--json", "-", "--quiet"}), 0);
    EXPECT_TRUE(MiniJson(out.str()).valid);
    EXPECT_EQ(err.str(), "");
    write(name,
          name == "predS2.tab" ? "VARS RESID RESNAME S2\nFORMAT %d %s %f\n" : tool_tables::chi1Table({}));
  }
}

TEST_F(ReportProgram, OnlyTheSummaryTableIsNeeded) {
  for (const char* name :
       {"predSS.tab", "predS2.tab", "predChi1.tab", "predABP.tab", "predAdjCS.tab", "predAll.tab"}) {
    std::filesystem::remove(dir / name);
  }
  ASSERT_EQ(run({"-o", "-", "--title", "other"}), 0) << err.str();
  EXPECT_NE(out.str().find("chemical shifts: other</h1>"), std::string::npos);
  std::filesystem::remove(dir / "pred.tab");
  EXPECT_EQ(run({"-o", (dir / "r.html").string()}), 1);
  EXPECT_NE(err.str().find("pred.tab: cannot be opened"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir / "r.html"));
}

/// One message with file and line, and nothing written, for each faulty table.
TEST_F(ReportProgram, FaultyTablesAreNamed) {
  struct Case {
    const char *file, *from, *to, *message;
  };
  const std::vector<Case> cases = {
      {"pred.tab", "-178.500", "-278.500", "pred.tab:11: an angle beyond 180 degrees"},
      {"predSS.tab", "0.75 E", "0.75 Q", "predSS.tab:8: SS_CLASS is 'Q'"},
      {"predSS.tab", "0.850", "", "predSS.tab:8: expected 9 values, found 8"},
      {"predS2.tab", "0.912", "o.912", "predS2.tab:6: S2 is 'o.912'"},
      {"predChi1.tab", "g- ", "g? ", "predChi1.tab:8: CLASS is 'g?'"},
      {"predABP.tab", "Q_17 ", "Q_a ", "predABP.tab: no column Q_17"},
      {"predAll.tab", "   2    3", "   2   33",
       "predAll.tab:7: a residue that the summary table does not have"},
      {"predAdjCS.tab", "0.512", "0,512", "predAdjCS.tab:6: SHIFT is '0,512'"},
  };
  for (const Case& c : cases) {
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
  ASSERT_EQ(run({"-o", "-", "--ref", (dir / "ref.pdb").string()}), 0) << err.str();
  EXPECT_NE(out.str().find("Against the reference ref.pdb, 1 of 2 reliable residues lie within 30°"),
            std::string::npos);
  EXPECT_NE(out.str().find("class=\"ref\""), std::string::npos);
  ASSERT_EQ(run({"--json", "-", "--ref", (dir / "ref.pdb").string()}), 0);
  const std::string text = out.str();
  const MiniJson json(text);
  ASSERT_TRUE(json.valid);
  EXPECT_EQ(json["residues.1.reference.phi"], "180.0");
  EXPECT_EQ(json["residues.0.reference.phi"], "null");
  write("far.pdb", "ATOM      1  CA  ALA A 900       1.000   1.000   1.000  1.00  0.00\n");
  EXPECT_EQ(run({"-o", "-", "--ref", (dir / "far.pdb").string()}), 1);
  EXPECT_NE(err.str().find("no residue of the prediction has phi and psi there"), std::string::npos);
}

/// Chains much longer than a row, numbered from below zero: every row starts within the page.
TEST_F(ReportProgram, LongChainsWrapIntoRows) {
  std::vector<tool_tables::Torsion> rows;
  for (int resid = -3; resid < 247; ++resid) rows.push_back({resid, 'A', -60, -40, 5, 5, "Strong"});
  for (const char* name :
       {"predSS.tab", "predS2.tab", "predChi1.tab", "predABP.tab", "predAdjCS.tab", "predAll.tab"}) {
    std::filesystem::remove(dir / name);
  }
  write("pred.tab", tool_tables::torsionTable("long", -3, std::string(250, 'A'), rows));
  ASSERT_EQ(run({"-o", "-"}), 0) << err.str();
  const std::string page = out.str();
  for (const char* label : {"classes, residues -3 to 46", "classes, residues 197 to 246"}) {
    EXPECT_NE(page.find(label), std::string::npos) << label;
  }
  EXPECT_EQ(page.find("residues 247"), std::string::npos);
}

TEST_F(ReportProgram, WrongCommandLines) {
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{},
                                             {"x", "-o", "y", "z"},
                                             {"x"},
                                             {"x", "-o"},
                                             {"x", "-o", "y", "--colour"},
                                             {"x", "-o", "y", "--stem="}}) {
    std::ostringstream plain, message;
    EXPECT_EQ(report::runProgram(words, plain, message), 2);
    EXPECT_TRUE(message.str().starts_with("orbeln-report: "));
  }
  EXPECT_EQ(run({"-o", "-", "--log", (dir / "pred.tab").string()}), 1);
  EXPECT_EQ(run({"-o", "-", "--ref", (dir / "absent.pdb").string()}), 1);
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_NE(out.str().find("--tsv FILE"), std::string::npos);
}

}  // namespace
