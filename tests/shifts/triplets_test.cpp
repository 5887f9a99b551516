// Triplet averaging: distance kernel against the plain definition, completeness, averages.
#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "shifts/plain_triplets.h"
#include "shifts/shift_fixture.h"
#include "shifts/triplet_distance.h"
#include "support/capture.h"
#include "support/process.h"

namespace {

using support::makeShiftRun;
using support::plainDistance;

TripletLibrary randomLibrary(std::mt19937& random, int rows) {
  std::normal_distribution<double> shift(0.0, 3.0);
  std::uniform_int_distribution<int> percent(0, 99);
  TripletLibrary library;
  library.rows = rows;
  library.names = {"A", "K", "c"};
  for (int row = 0; row < rows; ++row) {
    for (auto& column : library.values) column.push_back(percent(random) < 20 ? 9999.0 : shift(random));
    for (auto& ids : library.nameIds) ids.push_back(percent(random) % 3);
  }
  return library;
}

TEST(TripletDistance, EqualsTheDefinitionBitForBit) {
  std::mt19937 random(20261122);
  std::uniform_real_distribution<double> weight(0.0, 2.0);
  std::array<std::array<double, 7>, 4> ring{};
  std::array<double, 7> atoms{};
  std::array<double, 4> scale{};
  for (auto& row : ring) {
    for (double& w : row) w = weight(random);
  }
  for (double& w : atoms) w = weight(random);
  for (double& w : scale) w = weight(random);
  const TripletLibrary library = randomLibrary(random, 2500);
  for (int trial = 0; trial < 10; ++trial) {
    TripletQuery query;
    for (float& shift : query.shifts)
      shift = static_cast<float>(trial % 3 == 0 ? 9999.0 : 4.0 * weight(random));
    for (auto& row : query.homology) row = {weight(random), weight(random), 0.0};
    const std::vector<float> fast = tripletDistances(library, query, ring, atoms, scale);
    for (std::size_t row = 0; row < fast.size(); ++row) {
      ASSERT_EQ(fast[row], plainDistance(library, row, query, ring, atoms, scale)) << row;
    }
  }
}

TEST(TripletLibraryTable, ReadsColumnsByNameAndRestartsWhenTheyChange) {
  const support::TempDir directory;
  const std::string file = (directory / "library.tab").string();
  std::ofstream(file) << "VARS CA_R2 SOURCE\nFORMAT %f %s\n1 dropped\n"
                         "VARS SOURCE CA_R2 RESNAME_R2 HA_R1 CA_R2\nFORMAT %s %f %s %f %f\n"
                         "p 1 A -0.00012345678 2.50\nshort 1 A\nq 1 c 1e1 x\nREMARK 3 A +.5 0\n";
  const TripletLibrary library =
      readTripletLibrary(file, {{1, "N"}, {2, "HA"}, {3, "C"}, {4, "CA"}, {5, "CB"}, {6, "HN"}});
  EXPECT_EQ(library.rows, 3);
  EXPECT_EQ(library.sources, (std::vector<std::string>{"p", "q", "REMARK"}));
  EXPECT_EQ(library.values[1], (std::vector<double>{-0.00012345678, 10.0, 0.5})) << "HA_R1";
  EXPECT_EQ(library.values[9], (std::vector<double>{2.5, 0.0, 0.0})) << "CA_R2, the last of two columns";
  EXPECT_EQ(library.centre[3], library.values[9]);
  EXPECT_EQ(library.values[17], (std::vector<double>{0.0, 0.0, 0.0})) << "no such column";
  EXPECT_EQ(library.names, (std::vector<std::string>{"", "A", "c"}));
  EXPECT_EQ(library.nameIds[1], (std::vector<int>{1, 2, 1}));
}

/// Five residues with CA and N; library rows differ from the query's centre CA shift by known amounts.
std::unique_ptr<ORBEL> makeTripletRun(const std::vector<double>& centreCA) {
  std::vector<std::string> rows;
  for (int resid = 1; resid <= 5; ++resid) {
    for (const char* shift : {" A N 120", " A C 176", " A CA 57"})
      rows.push_back(std::to_string(resid) + shift);
  }
  auto run = makeShiftRun("AAAAA", 1, rows);
  support::captured([&] { run->getResInfo(); });
  for (auto& row : run->ringWeights) row.fill(1.0);
  run->atomWeights.fill(0.0);
  auto library = std::make_shared<TripletLibrary>();
  library->rows = static_cast<int>(centreCA.size());
  library->names = {"A"};
  for (std::size_t i = 0; i < centreCA.size(); ++i) {
    for (auto& column : library->values) column.push_back(9999.0);
    library->values[9].back() = centreCA[i];
    for (auto& ids : library->nameIds) ids.push_back(0);
    for (auto& column : library->centre) column.push_back(9999.0);
    library->centre[3].back() = centreCA[i];
    library->centre[0].back() = static_cast<double>(i);
    library->sources.push_back(i % 2 == 0 ? "EVEN" : "ODD");
  }
  run->tripletLibrary = library;
  return run;
}

TEST(TripletAverage, TakesTheNearestOfDistinctDistances) {
  // Query CA is 1.0. Distances: 0.25, 0.25 (row 1 replaces row 0), 4, 9.
  const auto run = makeTripletRun({1.5, 0.5, 3.0, 4.0});
  std::map<std::string, double> averaged;
  run->topCount = 2;
  ASSERT_TRUE(run->calcAverageCS_orig(3, averaged));
  EXPECT_DOUBLE_EQ(averaged.at("CA"), (0.5 + 3.0) / 2);
  EXPECT_DOUBLE_EQ(averaged.at("N"), (1 + 2) / 2.0);
  EXPECT_DOUBLE_EQ(averaged.at("HA"), 0.0);  // missing in every chosen centre
  run->topCount = 10;
  averaged.clear();
  ASSERT_TRUE(run->calcAverageCS_orig(3, averaged));
  EXPECT_DOUBLE_EQ(averaged.at("CA"), (0.5 + 3.0 + 4.0) / 3);
  averaged.clear();
  ASSERT_TRUE(makeTripletRun({15.1, 15.2})->calcAverageCS_orig(3, averaged));
  EXPECT_DOUBLE_EQ(averaged.at("CA"), 15.1);  // distances 198.8 and 201.6, the limit is 200
  averaged.clear();
  ASSERT_TRUE(makeTripletRun({15.2, 70.0})->calcAverageCS_orig(3, averaged));  // a far library gives zeros
  EXPECT_DOUBLE_EQ(averaged.at("CA"), 0.0);
  EXPECT_EQ(averaged.size(), 6U);
}

TEST(TripletAverage, EdgesAndSparseSurroundingsGetNone) {
  const auto run = makeTripletRun({1.5});
  std::map<std::string, double> averaged;
  EXPECT_FALSE(run->calcAverageCS_orig(1, averaged));
  EXPECT_FALSE(run->calcAverageCS_orig(5, averaged));
  run->missingCount[2] = 4;
  EXPECT_TRUE(run->calcAverageCS_orig(3, averaged));
  run->missingCount[4] = 4;
  averaged.clear();
  EXPECT_FALSE(run->calcAverageCS_orig(3, averaged));
  EXPECT_TRUE(averaged.empty());
  run->noProton = true;  // one more may be missing
  EXPECT_TRUE(run->calcAverageCS_orig(3, averaged));
}

TEST(TripletRecord, ClipsMasksAndRounds) {
  const auto run =
      makeShiftRun("AAA", 1, {"1 A CA 66.123456", "2 A HA 4.1", "2 A H 8.25", "3 A N 121.1234567"});
  support::captured([&] { run->getResInfo(); });
  Triplet triplet = run->getTriplet(2);
  EXPECT_EQ(triplet.at("RESID_R1"), "1");
  EXPECT_EQ(triplet.at("RESNAME_R3"), "A");
  EXPECT_EQ(triplet.at("CA_R1"), "5");  // 10.12 clipped to 5
  EXPECT_EQ(triplet.at("HN_R2"), "0.25");
  EXPECT_EQ(triplet.at("N_R3"), "1.12346");
  EXPECT_EQ(triplet.at("CB_R2"), "9999");
  EXPECT_EQ(run->getTriplet(3).at("CA_R3"), "0");  // no row at all
  run->clipOn = false;
  run->noProton = true;
  triplet = run->getTriplet(2);
  EXPECT_EQ(triplet.at("CA_R1"), "10.1235");
  EXPECT_EQ(triplet.at("HN_R2"), "9999");
  EXPECT_EQ(triplet.at("HA_R2"), "9999");
}

}  // namespace
