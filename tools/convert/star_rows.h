// The rows of NMR-STAR 3.x shift loops, and the chains they are about.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "convert/entry.h"
#include "convert/star_entities.h"

namespace convert {

/// One row before it is known which chain and residue it is about.
struct StarRow {
  Shift shift;  ///< without chain and residue key
  std::size_t block = 0;
  std::string assembly;  ///< Entity_assembly_ID
  std::string entity;    ///< Entity_ID
  std::string letter;    ///< Auth_asym_ID, else the PDB strand
  std::string index;     ///< Comp_index_ID
  std::string sequence;  ///< Seq_ID
};

/// Gives every row its chain and residue, adds the chains to `entry` and moves the shifts there. `molecules`:
/// one for each data block. False with an error in `log` for residue numbers that are none.
bool placeRows(std::vector<StarRow>& rows, const std::vector<std::string>& blocks,
               const std::vector<Molecules>& molecules, Entry& entry, Log& log);

}  // namespace convert
