// Names of amino acid residues in files of other programs: the 20 plain ones, their protonation states and
// tautomers, disulfide-bonded cysteines, and modified residues with the plain residue they were made from.
#pragma once

#include <string>
#include <string_view>

namespace tools {

enum class VariantKind {
  Plain,      ///< one of the 20
  State,      ///< protonation state, tautomer or cis form: another name for the same residue
  Disulfide,  ///< a cysteine whose sulfur is bound to another one
  Modified    ///< covalently modified or substituted: another molecule with its own reference shifts
};

struct ResidueVariant {
  std::string_view name;  ///< in capitals
  char parent = 'X';      ///< one-letter code of the plain residue; 'c' for an oxidized cysteine
  VariantKind kind = VariantKind::Plain;
  /// Backbone atoms (N HN HA C CA CB, blank-separated) whose shifts must not be read as those of the parent,
  /// because the modification sits at or next to them. Empty where the backbone does not feel it.
  std::string_view changed;
  std::string_view what;  ///< in words, empty for the plain ones

  bool shiftsLikeParent(std::string_view backboneAtom) const;
};

/// The entry of a residue name of three letters or more, letter case ignored; nullptr when it is not known.
const ResidueVariant* findResidueVariant(std::string_view name);

/// The plain three-letter name of a one-letter code, "CYS" for 'c', "UNK" for everything that has none.
std::string_view plainResidueName(char code);

/// True when `name` says more than the one-letter code `code` does: ASH or LYS+ beside D or K, MSE beside X
/// or M, any name beside X. False for the plain name and for one-letter names.
bool namesMoreThan(std::string_view name, char code);

}  // namespace tools
