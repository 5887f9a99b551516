// The report's readings: check logs, applied offsets, error bars at the seam, escaping.
#include <gtest/gtest.h>

#include <sstream>

#include "report/check_log.h"
#include "report/figures.h"
#include "report/summary.h"
#include "report/svg.h"
#include "support/process.h"

namespace {

using report::CheckResult;
using report::ReportData;
using report::Residue;

TEST(ReportLog, OutliersAndOffsets) {
  const support::TempDir dir;
  support::writeFile(dir / "log",
                     "\nChecking for Chemical Shift Outliers ...\n"
                     "   12 K  CA Secondary Shift:    9.120    Limit:    6.000\n"
                     "   -3 c  HA Secondary Shift:   -2.500    Limit:   -0.800 !\n"
                     "\nChecking Chemical Shift Referencing ...\n"
                     " Estimated Referencing Offset for CA/CB:  2.104 +/-  0.060ppm Size:  68\n"
                     " Estimated Referencing Offset for HA:\n     -0.120 +/-  0.011ppm size:  66\n"
                     "  No enough C' shifts to check C' chemical shift referencing offset ...\n"
                     "Preparing inputs for ANN prediction ...\n");
  CheckResult result;
  std::string error;
  ASSERT_TRUE(report::readCheckLog((dir / "log").string(), result, error)) << error;
  report::readAppliedOffset("  2.104 ppm referencing offset applied for 13Ca and 13Cb chemical shifts",
                            result);
  report::readAppliedOffset(" -1.500 ppm referencing offset applied for 13C' chemical shifts", result);
  report::readAppliedOffset(" SHIFT is secondary chemical shift", result);
  std::ostringstream read;
  for (const report::Outlier& o : result.outliers)
    read << o.resid << ' ' << o.atom << ' ' << o.shift << ' ' << o.limit << (o.extreme ? " !\n" : "\n");
  for (const report::ReferencingOffset& o : result.offsets)
    read << o.nuclei << ' ' << o.offset << ' ' << o.error << ' ' << o.shifts
         << (o.applied ? " applied\n" : "\n");
  EXPECT_EQ(read.str(),
            "12 CA 9.12 6\n-3 HA -2.5 -0.8 !\n"
            "CA/CB 2.104 0.06 68 applied\nHA -0.12 0.011 66\nC' -1.5 0 0 applied\n");
  EXPECT_EQ(result.notes.size(), 1U);
  support::writeFile(dir / "other", "nothing of the kind\n");
  EXPECT_FALSE(report::readCheckLog((dir / "other").string(), result, error));
  EXPECT_FALSE(report::readCheckLog((dir / "absent").string(), result, error));
}

std::string sentences(const ReportData& data) {
  std::string text;
  for (const report::Statement& s : report::summarize(data))
    text += (s.warning ? "! " : "  ") + s.text + "\n";
  return text;
}

TEST(ReportSummary, ReferencingVerdicts) {
  const struct {
    bool fromLog;
    std::vector<report::ReferencingOffset> offsets;
    const char* verdict;
  } cases[] = {
      {false, {}, "Nothing is known here about the referencing"},
      {true, {}, "no referencing offset"},
      {true,
       {{"CA/CB", 2.104, 0.06, 68, false}},
       "! CA/CB referencing looks 2.10 ppm too high (±0.06 ppm, 68 shifts)"},
      {true, {{"HA", -0.12, 0, 0, true}}, "  HA referencing was 0.12 ppm too low and was corrected"}};
  for (const auto& c : cases) {
    ReportData data;
    data.residues.resize(1);
    data.check.fromLog = c.fromLog;
    data.check.offsets = c.offsets;
    EXPECT_NE(sentences(data).find(c.verdict), std::string::npos) << sentences(data);
  }
}

TEST(ReportSummary, ReferenceAcrossTheSeam) {
  ReportData data;
  data.hasReference = true;
  Residue r;
  r.resid = 1;
  r.torsion.emplace();
  r.torsion->phi = -178;
  r.torsion->psi = 170;
  r.torsion->className = "Strong";
  r.referencePhi = 178;
  r.referencePsi = -160;
  data.residues = {r};
  EXPECT_NE(sentences(data).find("1 of 1 reliable residue lies within 30° in both angles; root mean square "
                                 "difference 4.0° in phi and 30.0° in psi."),
            std::string::npos)
      << sentences(data);
}

TEST(ReportSummary, UnusualShiftsStandOutFromTheirNucleus) {
  ReportData data;
  for (int k = 0; k < 30; ++k) {
    Residue r;
    r.resid = k;
    r.secondaryShifts[3] = 1.0 + 0.1 * (k % 5);
    if (k < 9) r.secondaryShifts[4] = k == 0 ? 50.0 : 0.1 * k;  // too few values to judge
    data.residues.push_back(r);
  }
  data.residues[7].secondaryShifts[3] = -4.0;
  const auto found = report::unusualShifts(data);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].resid, 7);
  EXPECT_EQ(found[0].atom, "CA");
  EXPECT_LT(found[0].shift, found[0].limit);
}

TEST(ReportFigures, ErrorBarsCloseAtTheSeam) {
  const struct {
    double centre, width;
    std::vector<std::pair<double, double>> spans;
  } cases[] = {{-60, 20, {{-80, -40}}},
               {175, 20, {{155, 180}, {-180, -165}}},
               {-180, 10, {{-180, -170}, {170, 180}}},
               {180, 10, {{170, 180}, {-180, -170}}},
               {0, 180, {{-180, 180}}},
               {90, 400, {{-180, 180}}}};
  for (const auto& c : cases) {
    const auto spans = report::angleSpans(c.centre, c.width);
    ASSERT_EQ(spans.size(), c.spans.size()) << c.centre;
    for (std::size_t k = 0; k < spans.size(); ++k) {
      EXPECT_DOUBLE_EQ(spans[k].from, c.spans[k].first) << c.centre;
      EXPECT_DOUBLE_EQ(spans[k].to, c.spans[k].second) << c.centre;
    }
  }
}

TEST(ReportText, EscapingAndNumbers) {
  EXPECT_EQ(report::escapeHtml("<a href='x'>&\"\x01"), "&lt;a href=&#39;x&#39;&gt;&amp;&quot; ");
  EXPECT_EQ(report::validUtf8("\xC3\xA4 \xE4 \xED\xA0\x80 \xF0\x9F"),
            "\xC3\xA4 \xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(report::fixed(-0.04, 1), "0.0");
  EXPECT_EQ(report::coordinate(12.50), "12.5");
  EXPECT_EQ(report::coordinate(-0.001), "0");
  EXPECT_EQ(report::coordinate(0.0 / 1e-320), "0");
}

}  // namespace
