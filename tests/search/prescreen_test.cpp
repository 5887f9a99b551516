// The pre-screen kernel against a plain rendering of its rules, bit for bit.
#include "search/prescreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>

#include "base/maps.h"
#include "search/plain_prescreen.h"
#include "search/search_fixture.h"

namespace {

using search_test::DbResidue;
using search_test::Lists;

/// Compares the kernel's lists of residue 10 with the plain ones, which it returns.
Lists expectPlainLists(const ORBEL& run, const std::string& what) {
  const DB& db = *run.fragmentDatabase;
  Prescreen kernel(
      {10, fragmentHalfWidth(run.alignLength), run.residueCode, run.searchPrior, run.blosumMatrix});
  kernel.scan(db, ScreenIndex(db, run.sourceRanges()));
  const Lists expected = search_test::plainScreen(run, 10);
  EXPECT_EQ(kernel.matches, expected.matches) << what;
  EXPECT_EQ(kernel.sameType, expected.sameType) << what;
  return expected;
}

/// Sources of 1 to 120 residues with numbering gaps, negative numbers, odd codes and class keys; then all of
/// them once more, so that scores meet their equals, at the threshold too.
std::vector<DbResidue> randomDatabase(std::mt19937& random, int entries) {
  const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  std::vector<DbResidue> residues;
  for (int source = 0; static_cast<int>(residues.size()) < entries; ++source) {
    int resid = below(20) - 10;
    for (int left = 1 + below(120); left > 0; --left) {
      const char code = "LLLLLLLLLLKKEEGPACWVcX\x80"[below(23)];
      const int box = below(100) == 0 ? below(4) * 1000 + 320 : below(80) * 4;
      residues.push_back({.source = "s" + std::to_string(source),
                          .code = code,
                          .resid = resid,
                          .box = static_cast<std::uint32_t>(box)});
      resid += below(40) == 0 ? 1 + below(3) : 1;
    }
  }
  const auto half = static_cast<std::ptrdiff_t>(residues.size());
  residues.reserve(2 * residues.size());
  std::copy_n(residues.begin(), half, std::back_inserter(residues));
  return residues;
}

/// No prior, a sharp one or a smooth one. With few `levels` many fragments reach the same scores.
void setPrior(ORBEL& run, std::mt19937& random, int resid, int kind, unsigned levels) {
  for (int box = 0; kind != 0 && box < 324; ++box) {
    const double value = static_cast<double>(random() % levels) / levels;
    run.searchPrior[resid][box] = kind == 2 || random() % 3 == 0 ? value : -9.99;
  }
}

void searchRandomDatabases(unsigned levels) {
  std::mt19937 random(20240611);
  const std::string codes = "LKEGPACcWVhXL";
  for (const int entries : {0, 3, 300, 8000}) {
    ORBEL run;
    installDatabase(run, randomDatabase(random, entries));
    for (const char a : std::string("LKEGPACWVH")) {
      for (const char b : std::string("LKEGPACWV")) {
        run.blosumMatrix[a][b] = a == b ? 5.0 : static_cast<double>(random() % 6) - 3.0;
      }
    }
    bool trimmed = false;
    for (int query = 0; query < 24; ++query) {
      run.residueCode.clear();
      run.searchPrior.clear();
      run.alignLength = 5 + query / 5 % 4;
      for (int r = 7; r <= 13; ++r) {
        if (random() % 10 != 0) run.residueCode[r] = codes[random() % codes.size()];
        setPrior(run, random, r, static_cast<int>(random() % 3), levels);
      }
      run.residueCode[10] = codes[static_cast<std::size_t>(query) % codes.size()];
      const Lists expected =
          expectPlainLists(run, std::to_string(entries) + " entries, query " + std::to_string(query));
      trimmed = trimmed || (expected.matches.size() == 1000 && expected.sameType.size() == 1000);
    }
    if (levels == 1000) {
      EXPECT_EQ(trimmed, entries == 8000) << "the thresholds are at work in the largest case only";
    }
  }
}

/// With few levels scores meet their equals.
TEST(Prescreen, EqualsThePlainRulesOnRandomDatabases) {
  for (const unsigned levels : {1000U, 4U, 6U, 9U}) searchRandomDatabases(levels);
}

/// The last entry with the lowest of 1000 scores stands in the list only as long as no lower score came.
TEST(Prescreen, AFullListKeepsTheEntryOfItsLowestScore) {
  for (const int lowerSource : {-1, 0, 2, 3, 4}) {
    ORBEL run;
    run.alignLength = 5;
    run.residueCode[10] = 'L';
    for (int box = 0; box < 324; ++box) run.searchPrior[10][box] = 0.001 * box + 0.1;
    for (int box = 0; box < 324; ++box) run.searchPrior[11][box] = 0.0007 * box * box;
    run.searchPrior[10][323] = 0.0;  // the lowest score of all
    std::vector<DbResidue> residues;
    const auto add = [&](int source, int number, std::uint32_t box, std::uint32_t next) {
      const std::uint32_t boxes[] = {0, 0, box, next, 0};
      for (int k = 0; k < 5; ++k) {
        residues.push_back(
            {.source = "s" + std::to_string(source), .resid = 10 * number + k, .box = boxes[k]});
      }
    };
    int number = 0;
    for (int source = 0; source < 5; ++source) {
      if (source < 2) {
        for (std::uint32_t i = 0; i < 500; ++i)
          add(source, ++number, i % 250, static_cast<std::uint32_t>(source * 2) + i / 250 + 1);
      }
      if (source == lowerSource) add(source, ++number, 323, 0);
      add(source, ++number, 0, 1);  // once more the lowest of the 1000
    }
    installDatabase(run, residues);
    expectPlainLists(run, std::to_string(lowerSource));
  }
}

TEST(Prescreen, TellsMoreCodesApartThanItNumbers) {
  ORBEL run;
  std::vector<DbResidue> residues;
  for (int i = 0; i < 4000; ++i) {
    residues.push_back({.source = "s" + std::to_string(i / 100),
                        .code = static_cast<char>('!' + i * 7 % 90),
                        .resid = i,
                        .box = static_cast<std::uint32_t>(i * 13 % 324)});
  }
  installDatabase(run, residues);
  for (int box = 0; box < 324; ++box) run.searchPrior[10][box] = 0.001 * (box * 37 % 324);
  for (const char code : std::string("L!z\"")) {
    run.residueCode[10] = code;
    run.blosumMatrix[code]['A'] = -2.0;
    run.blosumMatrix[code]['z'] = -1.0;
    expectPlainLists(run, std::string(1, code));
  }
}

}  // namespace
