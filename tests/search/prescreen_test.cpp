// The pre-screen kernel against a plain rendering of its rules, bit for bit.
#include "search/prescreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <random>

#include "driver/maps.h"
#include "search/plain_prescreen.h"
#include "search/search_fixture.h"

namespace {

using search_test::DbResidue;
using search_test::Lists;
using search_test::plainScreen;

Lists screen(const ORBEL& run, int resid) {
  Prescreen kernel(run, resid);
  kernel.scan(*run.fragmentDatabase, ScreenIndex(run));
  return {kernel.matches, kernel.sameType};
}

/// Sources of 1 to 120 residues with numbering gaps, negative numbers, odd codes and class keys; then all of
/// them once more, so that scores meet their equals, at the threshold too.
std::vector<DbResidue> randomDatabase(std::mt19937& random, int entries) {
  const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  std::vector<DbResidue> residues;
  for (int source = 0; static_cast<int>(residues.size()) < entries; ++source) {
    int resid = below(20) - 10;
    for (int left = 1 + below(120); left > 0; --left) {
      DbResidue r;
      r.source = "s" + std::to_string(source);
      r.code = "LLLLLLLLLLKKEEGPACWVcX\x80"[below(23)];
      r.resid = resid;
      r.box = static_cast<std::uint32_t>(below(100) == 0 ? below(4) * 1000 + 320 : below(80) * 4);
      residues.push_back(r);
      resid += below(40) == 0 ? 1 + below(3) : 1;
    }
  }
  const auto half = static_cast<std::ptrdiff_t>(residues.size());
  residues.reserve(2 * residues.size());
  std::copy_n(residues.begin(), half, std::back_inserter(residues));
  return residues;
}

/// No prior, a sharp one or a smooth one.
void setPrior(ORBEL& run, std::mt19937& random, int resid, int kind) {
  for (int box = 0; kind != 0 && box < 324; ++box) {
    const double value = static_cast<double>(random() % 1000) / 1000.0;
    run.searchPrior[resid][box] = kind == 2 || random() % 3 == 0 ? value : -9.99;
  }
}

TEST(Prescreen, EqualsThePlainRulesOnRandomDatabases) {
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
        setPrior(run, random, r, static_cast<int>(random() % 3));
      }
      run.residueCode[10] = codes[static_cast<std::size_t>(query) % codes.size()];
      const Lists expected = plainScreen(run, 10);
      const Lists actual = screen(run, 10);
      EXPECT_EQ(actual.matches, expected.matches) << entries << " entries, query " << query;
      EXPECT_EQ(actual.sameType, expected.sameType) << entries << " entries, query " << query;
      trimmed = trimmed || (expected.matches.size() == 1000 && expected.sameType.size() == 1000);
    }
    EXPECT_EQ(trimmed, entries == 8000);  // the thresholds were at work in the largest case only
  }
}

}  // namespace
