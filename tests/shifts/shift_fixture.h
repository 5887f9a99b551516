// A driver with small reference tables and an input table given as text, for the shift stages.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "driver/ORBEL.h"
#include "support/tables.h"

namespace support {

inline const std::string kAtoms = "RESNAME N HA C CA CB HN";
inline const std::string kAtomFormats = "%s %f %f %f %f %f %f";

/// Random coil N 120, HA 4, C 176, CA 56, CB 30, HN 8 for A K M S C c; G without CB, P without N and HN.
/// rcadj adds 0.5 to CA of K; a preceding P adds 1.0 to N; a following P takes 2.0 from CA.
inline std::unique_ptr<ORBEL> makeShiftRun(const std::string& sequence, int firstResid,
                                           const std::vector<std::string>& shifts) {
  auto run = std::make_unique<ORBEL>();
  std::vector<std::string> coil;
  for (const char* code : {"A", "K", "M", "S", "C", "c"})
    coil.push_back(std::string(code) + " 120 4 176 56 30 8");
  coil.emplace_back("G 110 4 174 45 9999 8");
  coil.emplace_back("P 9999 4.4 177 63 32 9999");
  run->randomCoilTable = makeTable(kAtoms, kAtomFormats, coil);
  run->rcAdjTable = makeTable(kAtoms, kAtomFormats, {"K 0 0 0 0.5 0 0"});
  run->rcPrevTable = makeTable(kAtoms, kAtomFormats, {"P 1.0 0 0 0 0 0"});
  run->rcNextTable = makeTable(kAtoms, kAtomFormats, {"P 0 0 0 -2.0 0 0"});
  std::vector<std::string> limits;
  for (const char* code : {"A", "K", "M", "S", "C", "c", "G", "P"}) {
    limits.push_back(std::string(code) + " -10 10 -1 1 -5 5 -5 5 -5 5 -2 2");
  }
  run->ssLimitTable =
      makeTable("RESNAME N_MIN N_MAX HA_MIN HA_MAX C_MIN C_MAX CA_MIN CA_MAX CB_MIN CB_MAX HN_MIN HN_MAX",
                "%s %f %f %f %f %f %f %f %f %f %f %f %f", limits);
  run->inputTable = makeTable("RESID RESNAME ATOMNAME SHIFT", "%4d %1s %4s %8.3f", shifts);
  run->inputTable.firstResid = firstResid;
  int resid = firstResid;
  for (const char code : sequence) run->inputTable.residList[resid++] = std::string(1, code);
  run->inputFile = "input.tab";
  const std::filesystem::path directory =
      std::filesystem::temp_directory_path() / ("orbeln-shifts-" + std::to_string(getpid()));
  std::filesystem::create_directories(directory);
  run->predPrefix = (directory / "pred").string();
  return run;
}

/// Secondary shift of the atom at `position` (1 to 6) of a residue of the range.
inline double secondary(const ORBEL& run, int resid, int position) {
  return run.secondaryShift.at(static_cast<std::size_t>(resid - run.firstResidOption))
      .at(static_cast<std::size_t>(position - 1));
}

}  // namespace support
