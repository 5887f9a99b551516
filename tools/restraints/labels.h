// How the residues of a restraint list are called in the user's topology: number, name, chain.
#pragma once

#include <map>
#include <string>

namespace restraints {

/// Numbers and names where they differ from those of the prediction table.
struct Labels {
  std::map<int, std::string> numbers;  ///< may carry an insertion code
  std::map<int, std::string> names;    ///< an empty one: the residue is not in the user's sequence
  std::string chain;
  std::string source;  ///< where the numbers come from, for the header
  bool fixed = false;  ///< names are those of a file that is added to, and stay as they are

  std::string number(int resid) const;
  /// The user's name, or else the plain one of the type; empty for a residue of unknown type.
  std::string name(int resid, char code) const;
  /// The same as exchange formats want it: protonation and bonding states under their plain name.
  std::string componentName(int resid, char code) const;
  /// Words that STAR would take for something else get quotes.
  void quoteForStar();
  /// A number that two of the numbered residues share; empty when there is none.
  std::string sharedNumber() const;
};

}  // namespace restraints
