// A full-size synthetic installation for the benchmarks: as many records, triplets and weights as the largest
// real one may have, with random content from a fixed seed.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

struct Size {
  int records = 2330110;  ///< fragment database
  int triplets = 24000;
  std::uint32_t seed = 20261122;
};

/// Writes `directory`/tab with every table that a run reads, unless it is there already with this size. The
/// small reference tables are copied from `referenceTables`. False, with a message, when a file cannot be
/// written.
bool writeInstallation(const std::string& directory, const std::string& referenceTables, const Size& size);

/// A folder beside the full-size installation that holds links to the tables of `installation`, but not their
/// image.
std::string withoutImage(const std::string& installation);

/// Only the fragment database, with `records` records in sources of some 245 residues.
bool writeDatabase(const std::string& path, int records, std::uint32_t seed);

/// An input table of `residues` residues with all shifts, helices and strands in turn.
bool writeInput(const std::string& path, int residues, std::uint32_t seed);

}  // namespace bench
