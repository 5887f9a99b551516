// Atom numbers of the user's structure file, for formats that count atoms instead of naming them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "restraints/restraint.h"
#include "restraints/writers.h"

namespace restraints {

struct CoordinateAtom {
  int number = 0;  ///< position in the file or chain, from 1
  std::string residueName;
};

/// What atom numbers count: the atoms of the whole file (Amber) or of the chosen chain (a GROMACS molecule).
enum class Counting : unsigned char { File, Chain };

/// The atoms of a PDB or GROMACS .gro file by residue number and atom name.
class CoordinateFile {
 public:
  /// Reads `path`, the format recognised from the content. With a `chain` only its atoms are found (PDB
  /// only). Empty with `error` set ("file:line: what") when the file cannot be used.
  static std::optional<CoordinateFile> load(const std::string& path, const std::string& chain,
                                            Counting counting, std::string& error);

  /// Numbers of the four atoms of every restraint; with a `residueOffset` residues have the
  /// table's numbers plus it. Empty with `error` set when an atom is missing, ambiguous or of another residue
  /// type.
  std::optional<AtomNumbers> match(const RestraintList& list, int residueOffset, std::string& error) const;
  bool hasHydrogens() const { return hydrogens; }

 private:
  bool readPdbLine(const std::string& line, const std::string& chain, Counting counting, std::string& error);
  bool readGroLine(const std::string& line, std::string& error);
  void add(const std::string& resid, std::string atomName, std::string residueName);
  int find(const RestraintAtom& atom, const std::string& resid, const std::string& name,
           std::string& error) const;

  std::string file;
  std::map<std::pair<std::string, std::string>, std::vector<CoordinateAtom>> atoms;  ///< by number and name
  int count = 0;
  bool hydrogens = false;
};

}  // namespace restraints
