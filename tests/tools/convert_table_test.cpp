// The program's own table as input: what it would read otherwise than its author meant.
#include <gtest/gtest.h>

#include "convert_support.h"

namespace {

using support::Converted;
using support::convertString;
using support::replaced;

const std::string kTable =                                                             // line
    "DATA FIRST_RESID 5\nDATA SEQUENCE AGVLK\n"                                        // 1-2
    "VARS RESID RESNAME ATOMNAME SHIFT\nFORMAT %4d %s %4s %8.3f\n"                     // 3-4
    "5 A CA 52.5\n6 G CA 45.1\n7 V CA 62.1\n9 K CA 56.2\n6 G C 174.1\n6 G N 108.2\n";  // 5-10

TEST(ConvertTable, SaysWhatWouldBeReadOtherwise) {
  const struct {
    const char* name;
    std::string text;
    const char* sequence;  ///< null: refused
    const char* said;
  } cases[] = {
      {"plain", kTable, "AGVLK", nullptr},
      {"no profile", replaced(kTable, "AGVLK", "BGJUZ"), "XGXXX",
       ":2: warning: letters of the sequence that are none of "
       "the 20 residue types: B 5 as X, J 7 as X, U 8 as X, Z 9 as X"},
      {"older letters",
       replaced(replaced(replaced(replaced(kTable, "AGVLK", "pGh?c"), "5 A", "5 p"), "7 V", "7 H"), "9 K",
                "9 C"),
       "PGHXc", "p 5 as P, h 7 as H, ? 8 as X"},
      {"every letter has its place", replaced(kTable, "AGVLK", "AG?1K"), "AGXXK", "? 7 as X, 1 8 as X"},
      {"two first numbers", replaced(kTable, "DATA SEQUENCE", "DATA FIRST_RESID 9\nDATA SEQUENCE"), "AGVLK",
       ":2: warning: a second FIRST_RESID (9) is ignored"},
      {"rows too long or short", replaced(kTable, "7 V CA", "7 V CA 0.1 62\nnote\n7 V CA"), "AGVLK",
       ":7: warning: 2 lines are no row of the table and left out; the first one: expected 4 columns as in "
       "the VARS line, "
       "found 5"},
      {"all rows too long", replaced(kTable, " CA", " CA 0.1"), nullptr, ":5: error: expected 4 columns"},
      {"decimal comma", replaced(kTable, "62.1", "62,1"), nullptr,
       ":7: error: decimal comma in 1 shifts, the first '62,1': "
       "the prediction would read '62'"},
      {"trailing text", replaced(kTable, "62.1", "62.1*"), nullptr, "'62.1*'"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Converted result = convertString(c.text);
    EXPECT_EQ(result.ok, c.sequence != nullptr) << result.report();
    if (c.sequence != nullptr) {
      EXPECT_EQ(result.conversion.sequence, c.sequence);
    }
    const std::string report = result.report();
    if (c.said == nullptr) {
      EXPECT_EQ(result.log.count(tools::Severity::Warning), 0U) << report;
    } else {
      EXPECT_NE(report.find(c.said), std::string::npos) << report;
    }
  }
}

}  // namespace
