// The pre-screen's rules rendered plainly with maps and loops: what the kernel is compared with.
#pragma once

#include <cmath>
#include <map>

#include "base/maps.h"
#include "driver/ORBEL.h"

namespace search_test {

struct Lists {
  CandidateMap matches, sameType;
};

inline double similarity(const ORBEL& run, char query, char entry) {
  const auto row = run.blosumMatrix.find(query);
  if (row == run.blosumMatrix.end()) return 0.0;
  const auto cell = row->second.find(entry);
  return cell == row->second.end() ? 0.0 : cell->second;
}

inline float plainScore(const ORBEL& run, int resid, int j, int h) {
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

inline void plainTrim(CandidateMap& list, double& threshold) {
  if (list.size() <= 1000) return;
  while (list.size() > 1000) list.erase(list.begin());
  threshold = list.begin()->first;
}

inline Lists plainScreen(const ORBEL& run, int resid) {
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

}  // namespace search_test
