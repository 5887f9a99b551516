// The fragment database: fields, incomplete records, capacity.
#include "tables/DB.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <tuple>

#include "tables/table_test.h"

namespace {

class DBTest : public TableTest {};

const std::string kShifts = " 1.5 2 3 4 5 6 7 8 9 10 11 12";

std::array<float, 12> shiftsOf(const DB& db, int i) {
  std::array<float, 12> values{};
  std::copy_n(db.shifts(i), 12, values.begin());
  return values;
}

TEST_F(DBTest, ReadsRecordsInFileOrder) {
  DB db;
  const std::string name(200, 'n');
  const std::string input =
      file("#comment\n\n1abc A 7 -60.5 -45.25 9999 112" + kShifts + "\n\t1abc\tC 8 1 2 3 4" + kShifts +
           " trailing text\r\n" + name + " c -3 1e1 +2 0x10 +5" + kShifts + "\n1abc A12 1 2 3 4" + kShifts);
  EXPECT_EQ(standardErrorOf([&] { db.loadDB(input); }), "");
  ASSERT_EQ(db.entryCount, 4);
  EXPECT_EQ(db.dbFileName, input);
  const struct {
    std::string source;
    char resName;
    std::uint32_t resid;
    std::array<float, 3> angles;
    std::uint32_t boxClass;
  } expected[] = {{"1abc", 'A', 7, {-60.5F, -45.25F, 9999.0F}, 112},
                  {"1abc", 'C', 8, {1, 2, 3}, 4},
                  {name, 'c', 4294967293U, {10, 2, 16}, 5},
                  {"1abc", 'A', 12, {1, 2, 3}, 4}};
  for (int i = 0; i < 4; ++i) {
    const auto k = static_cast<std::size_t>(i);
    const float* angles = db.angles(i);
    EXPECT_EQ(std::tuple(db.source(i), db.dbResName[k], db.dbResid[k], db.dbClass[k]),
              std::tuple(expected[i].source, expected[i].resName, expected[i].resid, expected[i].boxClass));
    EXPECT_EQ((std::array<float, 3>{angles[0], angles[1], angles[2]}), expected[i].angles) << i;
    EXPECT_EQ(shiftsOf(db, i), (std::array<float, 12>{1.5F, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})) << i;
  }
  EXPECT_EQ(db.dbSource.size(), 3U) << "one name per run";
  EXPECT_EQ(&db.source(0), &db.source(1));
}

TEST_F(DBTest, KeepsIncompleteRecordsAsFarAsTheyGo) {
  const struct {
    const char* line;
    const char* source;
    char resName;
    std::uint32_t resid;
    float phi, psi;
    std::uint32_t boxClass;
    float firstShift, firstScale;
  } cases[] = {{"   ", "", 'X', 0, 9999, 9999, 0, 0, 0},
               {"p", "p", 'X', 0, 9999, 9999, 0, 0, 0},
               {"p A", "p", 'A', 0, 9999, 9999, 0, 0, 0},
               {"p ALA 5 1 2 3 4", "p", 'A', 0, 9999, 9999, 0, 0, 0},
               {"p A 5 1 x 3 4", "p", 'A', 5, 1, 9999, 0, 0, 0},
               {"p A 5.5 1 2 3 1 2 3", "p", 'A', 5, 0.5F, 1, 3, 1, 2},
               {"p A 5 1 2 3 4 1.5", "p", 'A', 5, 1, 2, 4, 1.5F, 0},
               {"p A 4294967297 1 2 3 -1 1 0.5 1e", "p", 'A', 4294967295U, 1, 2, 4294967295U, 1, 0.5F},
               {"p A 5 nan 2 3 4 inf 2 1 1", "p", 'A', 5, 9999, 2, 4, 0, 0}};
  std::string content = "# first record on line 2\n";
  for (const auto& c : cases) content += std::string(c.line) + "\n";
  DB db;
  const std::string errors = standardErrorOf([&] { db.loadDB(file(content)); });
  EXPECT_EQ(errors, "");
  EXPECT_EQ(db.incompleteRecords, 9);
  EXPECT_EQ(db.firstIncompleteLine, 2);
  ASSERT_EQ(db.entryCount, 9);
  for (int i = 0; i < db.entryCount; ++i) {
    const auto& c = cases[i];
    const auto k = static_cast<std::size_t>(i);
    EXPECT_EQ(std::tuple(db.source(i), db.dbResName[k], db.angles(i)[0], db.angles(i)[1], db.dbClass[k]),
              std::tuple(c.source, c.resName, c.phi, c.psi, c.boxClass))
        << c.line;
    EXPECT_EQ(std::tuple(db.shifts(i)[0], db.shifts(i)[1], db.shifts(i)[11]),
              std::tuple(c.firstShift, c.firstScale, 0.0F))
        << c.line;
    if (c.resid != 4294967295U) {
      EXPECT_EQ(db.dbResid[k], c.resid) << c.line;
    }
  }
}

TEST_F(DBTest, AgreesWithTheFormattedScan) {
  std::mt19937 random(77);
  const char* const spellings[] = {"%.9g", "%8.3f", "%+.4e", "%.30g", "%a", "%.0f."};
  std::string content;
  std::vector<std::array<float, 12>> expected(300);
  for (auto& shifts : expected) {
    content += "p A 1 0 0 0 0";
    for (float& shift : shifts) {
      // Now and then a number just above the middle of two floats, where a detour over double rounds the
      // other way.
      char cell[400] = "1.0000000596046447754";
      const double value =
          std::ldexp(static_cast<double>(random()) - 2e9, static_cast<int>(random() % 120) - 90);
      if (random() % 50 != 0) std::snprintf(cell, sizeof cell, spellings[random() % 6], value);
      content += std::string(" ") + cell;
      ASSERT_EQ(std::sscanf(cell, "%f", &shift), 1);
    }
    content += "\n";
  }
  DB db;
  EXPECT_EQ(standardErrorOf([&] { db.loadDB(file(content)); }), "");
  for (int i = 0; i < 300; ++i) EXPECT_EQ(shiftsOf(db, i), expected[static_cast<std::size_t>(i)]) << i;
}

TEST_F(DBTest, StopsAtItsCapacity) {
  const std::string record = "p A 1 0 0 0 0" + kShifts + "\n";
  const std::string two = file(record + record + "\n# no record\n", "two"),
                    three = file(record + record + record, "three");
  const auto warning = [&](int capacity) {
    return "Warning:: Database " + three + "is larger than the allocated (" + std::to_string(capacity) +
           "), not all entries are read!\n";
  };
  const struct {
    std::string input;
    std::int32_t capacity, entries;
    std::string errors;
  } cases[] = {{two, 2, 2, ""},
               {three, 2, 2, warning(2)},
               {three, 3, 3, ""},
               {three, 0, 0, warning(0)},
               {three, -4, 0, warning(-4)}};
  for (const auto& c : cases) {
    DB db;
    db.setMaxDBSize(c.capacity);
    EXPECT_EQ(standardErrorOf([&] { db.loadDB(c.input); }), c.errors);
    EXPECT_EQ(db.entryCount, c.entries);
  }
}

TEST_F(DBTest, ASecondLoadReplacesTheFirst) {
  DB db;
  db.setMaxDBSize(5);
  db.loadDB(file("p A 1 0 0 0 0" + kShifts + "\nq C 2 0 0 0 0" + kShifts + "\n", "first"));
  db.loadDB(file("r D 3 0 0 0 0" + kShifts + "\n", "second"));
  EXPECT_EQ(db.entryCount, 1);
  EXPECT_EQ(db.source(0), "r");
  EXPECT_EQ(db.dbSource.size(), 1U);
}

}  // namespace
