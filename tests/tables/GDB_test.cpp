// Reading, building and writing of text tables.
#include "tables/GDB.h"

#include "tables/table_test.h"

namespace {

using testing::ExitedWithCode;
using Row = GDB::Row;
class GDBTest : public TableTest {};

std::string sequenceOf(const GDB& table) {
  std::string letters;
  for (const auto& [resid, code] : table.residList) letters += code;
  return letters;
}

/// Rows as text: "1:A=x,B=y 2:...".
std::string rowsOf(const GDB& table) {
  std::string out;
  for (const auto& [number, row] : table.entries) {
    out += (out.empty() ? "" : " ") + std::to_string(number) + ":";
    for (const auto& [name, cell] : row) out += (out.back() == ':' ? "" : ",") + name + "=" + cell;
  }
  return out;
}

TEST_F(GDBTest, ReadsHeaderAndRows) {
  const std::string header =
      "remark   two  words\r\nREMARK\nREMARK \n# comment\n\n \t \ndata   first_resid   -5\nDATA\n"
      "DATA SEQUENCE MKTAY ACDEF\nDATA  Sequence  Zac1 ph?\nVars  RESID   NAME\nFormat %5d   %-4s \r\n";
  const GDB table(file(header + " 1 A\n 2\n 2 B C\n\n 3 D\r\n4 E"));
  EXPECT_EQ(table.remarks, (std::list<std::string>{"  two  words", "", ""}));
  EXPECT_EQ(table.dataLines,
            (std::list<std::string>{"first_resid -5", "SEQUENCE MKTAY ACDEF", "Sequence Zac1 ph?"}));
  EXPECT_EQ(table.getData("SEQUENCE"), " MKTAY ACDEF Zac1 ph?");
  EXPECT_EQ(table.getData("OTHER"), "");
  EXPECT_EQ(table.firstResid, -5);
  EXPECT_EQ(sequenceOf(table), "MKTAYACDEFXXcXph?");
  EXPECT_EQ(table.residList.begin()->first, -5);
  EXPECT_EQ(table.residList.rbegin()->first, 11);
  EXPECT_EQ(table.varsLine, "RESID NAME");
  EXPECT_EQ(table.formatLine, " %5d   %-4s ");
  EXPECT_EQ(table.varFormats, (std::map<std::int32_t, std::string>{{0, "%5d   "}, {1, "%-4s "}}));
  EXPECT_EQ(rowsOf(table), "1:NAME=A,RESID=1 2:NAME=D,RESID=3 3:NAME=E,RESID=4");
}

TEST_F(GDBTest, AppliesTheOddRulesOfReading) {
  const struct {
    const char* name;
    const char* content;
    const char* rows;
    std::size_t remarks, formats;
  } cases[] = {
      {"remarks only", "REMARK a\nREMARK b\n", "", 2, 0},
      {"empty", "", "", 0, 0},
      {"remark that is a row too", "VARS A B\nFORMAT %s %s\nREMARK x\n", "1:A=REMARK,B=x", 1, 2},
      {"format before vars: rows without formats", "FORMAT %s\nVARS A\nx\n", "1:A=x", 0, 0},
      {"byte order mark: no keyword", "\xEF\xBB\xBFREMARK a\nVARS A\nFORMAT %s\nx\n", "1:A=x", 0, 1},
      {"no format: no rows", "VARS A\nx\n", "", 0, 0},
      {"vars drops rows, not their count", "VARS A B\nFORMAT %s %s\nx y\nx y\nVARS A\nz\n", "4:A=z", 0, 2},
      {"format drops rows", "VARS A B\nFORMAT %s %s\nx y\nFORMAT %d %d\nz 1\n", "2:A=z,B=1", 0, 2},
      {"wrong number of formats", "VARS A B\nFORMAT %s\nx y\n", "1:A=x,B=y", 0, 0},
      {"equal names: the later column", "VARS A A\nFORMAT %s %s\nx y\n", "1:A=y", 0, 2},
      {"indented keywords", "  VARS A\n  FORMAT %s\nx\n", "1:A=x", 0, 1}};
  for (const auto& c : cases) {
    const GDB table(file(c.content));
    EXPECT_EQ(rowsOf(table), c.rows) << c.name;
    EXPECT_EQ(table.remarks.size(), c.remarks) << c.name;
    EXPECT_EQ(table.varFormats.size(), c.formats) << c.name;
    EXPECT_EQ(table.firstResid, 1) << c.name;
  }
}

TEST_F(GDBTest, NumbersTheFirstResidue) {
  const struct {
    const char* lines;
    std::int32_t first;
  } cases[] = {{"DATA FIRST_RESID 12abc\n", 12},
               {"DATA FIRST_RESID 3\nDATA FIRST_RESID 9\n", 3},
               {"DATA FIRST_RESID\n", 0},
               {"DATA FIRST_RESID x\n", 0},
               {"DATA FIRST_RESID 2147483647\n", 2147483647}};
  for (const auto& c : cases) {
    const GDB table(file(std::string(c.lines) + "DATA SEQUENCE AC\n"));
    EXPECT_EQ(table.firstResid, c.first);
    EXPECT_EQ(table.residList.at(c.first), "A");
  }
}

TEST_F(GDBTest, SurvivesAnyBytes) {
  std::string bytes = "DATA SEQUENCE A\xff\x80\x01Z\nVARS A B\nFORMAT %s %f\n";
  for (int i = 0; i < 70000; ++i) bytes += static_cast<char>(i * 7919 >> 3);
  const GDB table(file(bytes));
  EXPECT_EQ(sequenceOf(table).substr(0, 5), "AXXXX");
  table.saveGDB(path("out.tab"));
  // Lines longer than the read block, and a file that ends without a newline.
  const GDB longLine(file("REMARK " + std::string(3000000, 'r') + "\nVARS A\nFORMAT %s\n" +
                          std::string(3000000, ' ') + "x"));
  EXPECT_EQ(longLine.remarks.front().size(), 3000000U);
  EXPECT_EQ(longLine.entries.at(1).at("A"), "x");
}

TEST_F(GDBTest, EndsTheProcessWithStatusZero) {
  GDB table;
  table.VARS_str_parser("A B");
  EXPECT_EXIT(GDB(path("none")), ExitedWithCode(0), "^\tCan't open file .*none for reading\n$");
  EXPECT_EXIT(GDB(path("")), ExitedWithCode(0), "^\tCan't open file .* for reading\n$");
  EXPECT_EXIT(GDB(file("VARS A B\nFORMAT %d  %5x  \n")), ExitedWithCode(0),
              "^\tBad format syntax '%5x  '\n$");
  EXPECT_EXIT(table.FORMAT_str_parser("%%d"), ExitedWithCode(0), "^\tBad format syntax '%'\n$");
  EXPECT_EXIT(table.setEntry(1, "C", "x"), ExitedWithCode(0), "^\tInvalid varible name 'C'\n$");
}

TEST_F(GDBTest, TellsWhyAFileCannotBeRead) {
  EXPECT_EQ(GDB().read(path("none")).value().text(),
            path("none") + ": Can't open file " + path("none") + " for reading");
  const std::string bad = file("REMARK\nVARS A B\nFORMAT %d  %5x\n");
  EXPECT_EQ(GDB().read(bad).value().text(), bad + ":3: Bad format syntax '%5x'");
  EXPECT_FALSE(GDB().read(file("VARS A\nFORMAT %d\n1\n")));
}

TEST_F(GDBTest, AddsColumns) {
  GDB table;
  table.VARS_str_parser(" A   B ");
  table.FORMAT_str_parser("%5d %s");
  const std::string errors = standardErrorOf([&] {
    table.addVAR("C", "%5x");
    table.addVAR("C D", "%d");
  });
  EXPECT_EQ(errors, "\tBad format syntax '%5x'\n\tInvalid varible name 'C D' (with space)\n");
  EXPECT_EQ(table.varCount, 2);
  table.addVAR("B", " %6.2f");
  table.addVAR("C", " %s ");
  EXPECT_EQ(table.varCount, 3);
  EXPECT_EQ(table.varNames, (std::map<std::int32_t, std::string>{{0, "A"}, {1, "B"}, {2, "C"}}));
  EXPECT_EQ(table.varFormats, (std::map<std::int32_t, std::string>{{0, "%5d "}, {1, " %6.2f"}, {2, " %s "}}));
}

TEST_F(GDBTest, LooksRowsUp) {
  GDB table;
  table.VARS_str_parser("A B");
  const char* const cells[][2] = {{"x", "1"}, {"y", "1"}, {"x", "2"}, {"x", ""}};
  for (int row = 0; row < 4; ++row) {
    table.setEntry(10 - row, "A", cells[row][0]);  // rows 10, 9, 8, 7: look-ups ascend
    if (*cells[row][1] != '\0') table.setEntry(10 - row, "B", cells[row][1]);
  }
  EXPECT_EQ(table.getEntry("A", "x", 1), (Row{{"A", "x"}}));
  EXPECT_EQ(table.getEntry("A", "x", 3), (Row{{"A", "x"}, {"B", "1"}}));
  for (const int n : {0, -1, 4}) EXPECT_TRUE(table.getEntry("A", "x", n).empty()) << n;
  EXPECT_EQ(table.getEntry("A", "x", "B", "1", 1), (Row{{"A", "x"}, {"B", "1"}}));
  EXPECT_TRUE(table.getEntry("A", "x", "B", "1", 2).empty());
  EXPECT_EQ(table.getEntry("B", "", 1), (Row{{"A", "x"}})) << "an absent cell reads as empty text";
  EXPECT_EQ(table.findRow("A", "X"), nullptr);
  EXPECT_EQ(table.findRow("B", "2"), &table.entries.at(8));
  EXPECT_EQ(table.findRow("A", "y", "B", "1"), &table.entries.at(9));
  EXPECT_EQ(GDB::cell(table.entries.at(7), "B"), "");
}

TEST_F(GDBTest, WritesTheCanonicalLayout) {
  GDB table;
  table.addRemark(" indented");
  table.setData("FIRST_RESID", "7");
  table.setData("SEQUENCE", std::string(55, 'A'));
  table.setData("SEQUENCE", " " + std::string(50, 'C') + "  DEFGHI ");
  table.setData("SEQUENCE", "");
  table.setData("Sequence", "ac");
  table.VARS_str_parser("I F S");
  table.FORMAT_str_parser("  %4d %8.3f  %-4s ");
  table.setEntry(3, "I", "-12.7");
  table.setEntry(3, "F", "1.0005e1");
  table.setEntry(3, "S", "wider");
  table.setEntry(-1, "I", "text");
  table.saveGDB(path("out.tab"));
  EXPECT_EQ(read("out.tab"), "REMARK  indented\n\nDATA FIRST_RESID 7\nDATA SEQUENCE " + std::string(55, 'A') +
                                 "\nDATA SEQUENCE " + std::string(50, 'C') +
                                 " DEFG\nDATA SEQUENCE HI\nDATA Sequence ac\n\nVARS   I F S \n"
                                 "FORMAT %4d %8.3f  %-4s \n\n   0    0.000       \n -12   10.005  wider \n");
  GDB(path("out.tab")).saveGDB(path("again.tab"));  // what is written reads back, short rows apart
  EXPECT_NE(read("again.tab").find(" -12   10.005  wider \n"), std::string::npos);
}

TEST_F(GDBTest, FormatsFieldsAsPrintfDoes) {
  const struct {
    const char* format;
    const char* cell;
    const char* out;
  } cases[] = {{"%d", "2147483648", "-2147483648"},
               {"%-5d", "42", "42   "},
               {"%05d", "-42", "-0042"},
               {"%-05d ", "42", "42    "},
               {"%5.3d", "7", "  007"},
               {"%.0d", "0", ""},
               {"%.2f", "", "0.00"},
               {"%.f", "2.5", "2"},
               {"%-8.1f ", "-3.25", "-3.2     "},
               {"%08.3f", "-1.5", "-001.500"},
               {"%s", "", ""},
               {"%5s", "ab", "   ab"},
               {"%05s", "ab", "   ab"},
               {"%.2s", "abc", "ab"},
               {"%-5.1s ", "abc", "a     "},
               {" \t%s", "a", " \ta"},
               {"%5-3.2.1d", "9", "9"},
               {"%3.-2f", "1", "1.000000"},
               {"%2-s", "a", "a"},
               {"%4d", "12345", "12345"}};
  for (const auto& c : cases) {
    GDB table;
    table.addVAR("A", c.format);
    table.setEntry(1, "A", c.cell);
    table.saveGDB(path("out.tab"));
    const std::string head = "\n\nVARS   A \nFORMAT " + std::string(c.format) + "\n\n";
    EXPECT_EQ(read("out.tab"), head + c.out + "\n") << c.format;
  }
}

TEST_F(GDBTest, FormatsFieldsOfAnyLength) {
  GDB table;
  table.addVAR("S", "%s");
  table.addVAR("F", " %99999999999.500f");
  table.setEntry(1, "S", std::string(1000, 's'));
  table.setEntry(1, "F", "1e308");
  table.saveGDB(path("out.tab"));
  const std::string last = read("out.tab").substr(read("out.tab").find("\n\ns") + 2);
  EXPECT_EQ(last.find(' '), 1000U);
  EXPECT_EQ(last.size(), last.find('.') + 1 + 99 + 1) << "precision is limited to 99 digits";
}

TEST_F(GDBTest, ReportsFilesThatCannotBeWritten) {
  const GDB table;
  for (const std::string& target : {path("none/out.tab"), path("")}) {
    EXPECT_EQ(standardErrorOf([&] { EXPECT_TRUE(table.saveGDB(target)); }),
              "\tCan't save file " + target + "\n");
  }
  EXPECT_EQ(standardErrorOf([&] { EXPECT_FALSE(table.saveGDB("/dev/full")); }),
            "\tCan't save file /dev/full completely: No space left on device\n");
}

}  // namespace
