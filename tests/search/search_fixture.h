// Fragment databases and drivers built in memory for the search tests.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "driver/ORBEL.h"

namespace search_test {

struct DbResidue {
  std::string source;
  char code = 'L';
  int resid = 1;
  float phi = -60.0F, psi = -40.0F, chi1 = 9999.0F;
  std::uint32_t box = 0;
  std::array<float, 12> shifts = {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1};  ///< (value, scale): N HA C CA CB HN
};

/// The database of `residues` and its source index, the last source included.
inline void installDatabase(ORBEL& run, const std::vector<DbResidue>& residues) {
  auto db = std::make_unique<DB>();
  const std::size_t n = residues.size();
  const auto shifts = std::make_shared<float[]>(12 * n), angles = std::make_shared<float[]>(3 * n);
  const auto resid = std::make_shared<std::uint32_t[]>(n), boxes = std::make_shared<std::uint32_t[]>(n);
  const auto codes = std::make_shared<char[]>(n);
  db->dbShifts = shifts;
  db->dbAngles = angles;
  db->dbResid = resid;
  db->dbClass = boxes;
  db->dbResName = codes;
  db->entryCount = static_cast<std::int32_t>(n);
  run.sourceStart = {{0, 0}};
  run.sourceEnd = {{0, -1}};
  run.sourceCount = 1;
  for (std::size_t i = 0; i < n; ++i) {
    const DbResidue& r = residues[i];
    if (i == 0 || r.source != residues[i - 1].source) {
      db->dbSource.push_back({static_cast<std::int32_t>(i), r.source});
      run.sourceStart[run.sourceCount++] = static_cast<int>(i);
    }
    run.sourceEnd[run.sourceCount - 1] = static_cast<int>(i);
    codes[i] = r.code;
    resid[i] = static_cast<std::uint32_t>(r.resid);
    boxes[i] = r.box;
    for (std::size_t s = 0; s < 12; ++s) shifts[12 * i + s] = r.shifts[s];
    angles[3 * i] = r.phi;
    angles[3 * i + 1] = r.psi;
    angles[3 * i + 2] = r.chi1;
  }
  run.fragmentDatabase = std::move(db);
}

/// A query of residues 1.. with `codes`, all shifts 0 and nothing missing, searched with 5-residue fragments.
inline void setQuery(ORBEL& run, const std::string& codes) {
  const int length = static_cast<int>(codes.size());
  run.alignLength = 5;
  run.sequenceStart = run.shiftFirstResid = run.firstResidOption = 1;
  run.sequenceLength = run.shiftLastResid = run.lastResidOption = length;
  run.secondaryShift.assign(codes.size(), {0, 0, 0, 0, 0, 0});
  for (int r = 1; r <= length; ++r) {
    const char code = codes[static_cast<std::size_t>(r - 1)];
    run.residueCode[r] = code;
    run.sequence[r] = run.sequenceCopy[r] = std::string(1, code);
    run.missingCount[r] = 0;
  }
}

}  // namespace search_test
