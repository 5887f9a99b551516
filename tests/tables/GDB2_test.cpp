// Typed tables: values, numbering and error reports.
#include "tables/GDB2.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>

#include "tables/table_test.h"

namespace {

class GDB2Test : public TableTest {};

TEST_F(GDB2Test, ConvertsCellsByColumn) {
  const GDB2 table(
      file("REMARK  r\n\nDATA FIRST_RESID 4 x\nDATA SEQUENCE AC z\nDATA FIRST_RESID\n  \nVARS I F S "
           "I\nFORMAT %5d %8.3f %s %d\n"
           "\n1 0.1 2.5x 16777217\nshort line\n-7.9 1e60 word 4294967297\nREMARK is a row\n"));
  ASSERT_EQ(table.lineCount, 3);
  EXPECT_EQ(table.varCount, 4);
  const struct {
    std::int32_t row;
    const char* name;
    float value;
  } cases[] = {{1, "I", 16777216.0F}, {1, "F", 0.1F},     {1, "S", 2.5F},    {2, "F", HUGE_VALF},
               {2, "I", 1.0F},        {2, "S", 0.0F},     {3, "F", 0.0F},    {0, "F", 9999.0F},
               {4, "F", 9999.0F},     {-1, "F", 9999.0F}, {1, "f", 9999.0F}, {1, "", 9999.0F}};
  for (const auto& c : cases) EXPECT_EQ(table.getFloatNodeVal(c.row, c.name), c.value) << c.row << c.name;
  EXPECT_EQ(table.getFloatNodeVal(2, 1), -7.0F);
  for (const int index : {-1, 0, 5}) EXPECT_EQ(table.getFloatNodeVal(1, index), 9999.0F) << index;
  EXPECT_EQ(table.getVarIndex1("I"), 4) << "of equal names the later column";
  EXPECT_EQ(table.getVarIndex1("X"), 0);
  EXPECT_EQ(table.getLineEntry(2)->index, 2);
  EXPECT_EQ(table.getLineEntry(4), nullptr);
  EXPECT_EQ(table.headerLines, (std::vector<std::string>{" r", "", "DATA FIRST_RESID 4 x",
                                                         "DATA SEQUENCE AC z", "DATA FIRST_RESID", "  "}));
  EXPECT_EQ(table.firstResid, 4);
  EXPECT_EQ(table.lastResid, 6);
  EXPECT_EQ(table.residList, (std::map<std::int32_t, std::string>{{4, "A"}, {5, "C"}, {6, "X"}}));
  EXPECT_EQ(table.errorText, "");
}

TEST_F(GDB2Test, CellsAgreeWithTheLibrary) {
  const char* const spellings[] = {"0", "-0", "%.4f", "%.6g", "%.12f", "%+.3e", "%.0f"};
  const char* const gaps[] = {" ", "\t", "  ", " \r\n"};  // the last one between rows
  std::mt19937 random(5);
  std::string content = "VARS A B C D\nFORMAT %f %d %f %f\n";
  std::vector<std::string> cells;
  for (std::size_t k = 0; k < 2400; ++k) {
    char cell[64];
    std::snprintf(cell, sizeof cell, spellings[random() % 7], (static_cast<double>(random()) - 2e9) / 4e9);
    cells.emplace_back(cell);
    content += cell + std::string(gaps[k % 4 == 3 ? 3 : random() % 3]);
    if (k % 28 == 27) content += "0 0 0\n";  // too few cells
  }
  const GDB2 table(file(content));
  ASSERT_EQ(table.lineCount, 600);
  for (std::size_t k = 0; k < cells.size(); ++k) {
    const char* cell = cells[k].c_str();
    const float expected = k % 4 == 1 ? static_cast<float>(std::strtol(cell, nullptr, 10))
                                      : static_cast<float>(std::strtod(cell, nullptr));
    const auto row = static_cast<std::int32_t>(k / 4) + 1, column = static_cast<std::int32_t>(k % 4) + 1;
    ASSERT_EQ(std::bit_cast<std::uint32_t>(table.getFloatNodeVal(row, column)),
              std::bit_cast<std::uint32_t>(expected))
        << cell;
  }
}

TEST_F(GDB2Test, NarrowsFromDoublePrecision) {
  // Decimal just above the middle of two single-precision neighbours; the nearest double is the middle
  // itself.
  const GDB2 table(file("VARS A\nFORMAT %f\n1.00000005960464477540000\n"));
  EXPECT_EQ(table.getFloatNodeVal(1, "A"), 1.0F);
}

TEST_F(GDB2Test, ReportsErrorsAndGoesOn) {
  const struct {
    const char* content;
    std::string printed, recorded;
  } cases[] = {
      {"", "Format Error: Missing input table keyword VARS\n",
       "Format Error: Missing input table keyword VARS\n"},
      {"VARS A\nFORMAT %f\n1 2\n", "Format Error: No valid data found and read from input file \n",
       "Format Error: No valid data found and read from input file \n"},
      {"VARS A\n1\n", "Format Error: No valid data found and read from input file \n",
       "Format Error: No valid data found and read from input file \n"},
      {"VARS \t\n", "GDB init error:: VARS line is empty.", "\tFormat Error: VARS line is empty"},
      {"FORMAT %f\nVARS A\n1\n", "GDB init error:: FORMAT line needs to be specified after a VARS line.",
       "\tFormat Error: FORMAT line needs to be specified after a VARS line."},
      {"VARS A\nFORMAT %f %f\n1\n",
       "GDB init error:: FORMAT and VARS lines contain different number of columns.",
       "\tFormat Error: FORMAT and VARS lines contain different number of columns"},
      {"VARS A B\nFORMAT %f %e \n1 2\n", "GDB init error:: Bad FORMAT syntax '%e '\n",
       "\tFormat Error: Invalid FORMAT line \" %f %e \"\n\t              Bad FORMAT syntax '%e '\n"}};
  for (const auto& c : cases) {
    const std::string input = file(c.content);
    std::string recorded;
    std::int32_t rows = -1;
    const std::string printed = standardErrorOf([&] {
      const GDB2 table(input);
      recorded = table.errorText;
      rows = table.lineCount;
      EXPECT_EQ(table.getFloatNodeVal(1, "A"), 9999.0F);
    });
    EXPECT_EQ(printed, c.printed) << c.content;
    EXPECT_EQ(recorded, c.recorded) << c.content;
    EXPECT_EQ(rows, 0) << c.content;
  }
  for (const std::string& missing : {path("none"), path("")}) {
    EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(GDB2(missing).lastResid, -9999); }),
              "\tFile Error: Can't open input file for reading\n");
  }
}

TEST_F(GDB2Test, ColumnsRedefinedAfterRowsStayInBounds) {
  const GDB2 table(file("VARS A\nFORMAT %f\n1.5\nVARS A B C\n2 3 4\n"));
  EXPECT_EQ(table.lineCount, 2);
  EXPECT_EQ(table.getFloatNodeVal(1, "A"), 1.5F);
  EXPECT_EQ(table.getFloatNodeVal(1, "C"), 9999.0F);
  EXPECT_EQ(table.getFloatNodeVal(2, "C"), 4.0F);
}

}  // namespace
