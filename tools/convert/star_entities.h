// Entities and assembly of an NMR-STAR 3.x data block: which molecules there are and how often.
#pragma once

#include <string>
#include <vector>

#include "convert/entry.h"
#include "convert/star.h"

namespace convert {

/// A molecule with its sequence.
struct Entity {
  std::string id;
  std::string name;
  std::string strand;
  std::vector<Residue> residues;
  bool protein = true;
};

/// One copy of an entity in the assembly.
struct AssemblyMember {
  std::string id, entity, name;
  std::vector<std::string> letters;  ///< PDB chain and asym identifiers
};

struct Molecules {
  std::vector<Entity> entities;
  std::vector<AssemblyMember> assembly;

  const Entity* find(const std::string& id) const;
};

/// Molecules of one data block (index into Document::blocks). False with an error in `log` for a sequence
/// loop that cannot be read.
bool readMolecules(const star::Document& document, std::size_t block, Molecules& molecules, Log& log);

/// A copy of the molecule as a chain of that identifier.
Chain chainOf(const Entity& entity, const std::string& id);

}  // namespace convert
