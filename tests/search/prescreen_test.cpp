// The pre-screen kernel against a plain rendering of its rules, bit for bit.
#include "search/prescreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <random>

#include "driver/maps.h"
#include "search/search_fixture.h"

namespace {

using search_test::DbResidue;

struct Lists {
  CandidateMap matches, sameType;
};

double similarity(const ORBEL& run, char query, char entry) {
  const auto row = run.blosumMatrix.find(query);
  if (row == run.blosumMatrix.end()) return 0.0;
  const auto cell = row->second.find(entry);
  return cell == row->second.end() ? 0.0 : cell->second;
}

float plainScore(const ORBEL& run, int resid, int j, int h) {
  const DB& db = *run.fragmentDatabase;
  const std::map<int, double> weight = {{0, 1.0}, {1, 0.81}, {2, 0.64}, {3, 0.49}};
  float s = 0.0F;
  for (int k = -h; k <= h; ++k) {
    const auto i = static_cast<std::size_t>(j + k);
    const auto gap =
        static_cast<int>(db.dbResid[i]) - static_cast<int>(db.dbResid[static_cast<std::size_t>(j)]);
    if (gap != k) return -9999.0F;
    double prior = 0.0;
    if (const auto boxes = run.searchPrior.find(resid + k); boxes != run.searchPrior.end()) {
      prior = valueOr(boxes->second, static_cast<int>(db.dbClass[i]));
    }
    s = static_cast<float>(static_cast<double>(s) + weight.at(std::abs(k)) * prior);
    const double sim = similarity(run, valueOr(run.residueCode, resid + k), db.dbResName[i]);
    if (sim < 0.0) s = static_cast<float>(static_cast<double>(s) + sim / 10.0);
  }
  return s;
}

void plainTrim(CandidateMap& list, double& threshold) {
  if (list.size() <= 1000) return;
  while (list.size() > 1000) list.erase(list.begin());
  threshold = list.begin()->first;
}

Lists plainScreen(const ORBEL& run, int resid) {
  const DB& db = *run.fragmentDatabase;
  const int h = (run.alignLength - 1) / 2;
  char q = run.residueCode.at(resid);
  if (q == 'c') q = 'C';
  if (q == 'h') q = 'H';
  const bool wanted = q != 'A' && q != 'G' && q != 'P';
  double t1 = -999.0;
  double t2 = -999.0;
  Lists lists;
  for (int p = 1; p < run.sourceCount; ++p) {
    for (int j = run.sourceStart.at(p) + h; j <= run.sourceEnd.at(p) - h; ++j) {
      const char code = db.dbResName[static_cast<std::size_t>(j)];
      if ((q == 'P' || q == 'G') && code != q) continue;
      if (valueOr(run.residueCode, resid + 1) == 'P' && db.dbResName[static_cast<std::size_t>(j) + 1] != 'P')
        continue;
      if (similarity(run, q, code) < 0.0) continue;
      const float s = plainScore(run, resid, j, h);
      if (static_cast<double>(s) > t1) lists.matches[static_cast<double>(s)] = j;
      if (wanted && static_cast<double>(s) > t2 && code == q) lists.sameType[static_cast<double>(s)] = j;
    }
    plainTrim(lists.matches, t1);
    if (wanted) plainTrim(lists.sameType, t2);
  }
  return lists;
}

Lists screen(const ORBEL& run, int resid) {
  Prescreen kernel(run, resid);
  for (int p = 1; p < run.sourceCount; ++p) {
    kernel.scanSource(*run.fragmentDatabase, run.sourceStart.at(p), run.sourceEnd.at(p));
  }
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
      r.code = "LLLLKKEEGPACWVcX\x80"[below(17)];
      r.resid = resid;
      r.box = static_cast<std::uint32_t>(below(100) == 0 ? below(4) * 1000 + 320 : below(8) * 40 + below(2));
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
  const std::string codes = "LKEGPACcWVhX";
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
      run.alignLength = 5 + query % 4;
      for (int r = 7; r <= 13; ++r) {
        if (random() % 10 != 0) run.residueCode[r] = codes[random() % codes.size()];
        setPrior(run, random, r, static_cast<int>(random() % 3));
      }
      run.residueCode[10] = codes[static_cast<std::size_t>(query) % codes.size()];
      const Lists expected = plainScreen(run, 10);
      const Lists actual = screen(run, 10);
      EXPECT_EQ(actual.matches, expected.matches) << entries << " entries, query " << query;
      EXPECT_EQ(actual.sameType, expected.sameType) << entries << " entries, query " << query;
      trimmed = trimmed || expected.matches.size() == 1000;
    }
    EXPECT_EQ(trimmed, entries == 8000);  // the thresholds were at work in the largest case only
  }
}

}  // namespace
