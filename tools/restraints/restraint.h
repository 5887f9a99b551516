// One dihedral restraint, the same for every output format.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "restraints/input_table.h"
#include "restraints/labels.h"

namespace restraints {

enum class Angle : unsigned char { Phi, Psi, Chi1 };

struct RestraintAtom {
  int resid = 0;
  char code = 'X';  ///< one-letter residue type, X when the sequence does not reach there
  std::string name;
};

/// centre in (-180, 180], half width in (0, 180), both rounded to 0.1 degree so that every format carries
/// the same restraint; bounds are centre +- half width, not wrapped, lower < upper.
struct Restraint {
  Angle angle = Angle::Phi;
  int resid = 0;
  char code = 'X';
  std::array<RestraintAtom, 4> atoms;
  double centre = 0, halfWidth = 0;
  double deviation = 0;  ///< the table's standard deviation, degrees
  std::string note;      ///< class and anything a reader must know, for comments

  double lower() const { return centre - halfWidth; }
  double upper() const { return centre + halfWidth; }
  const char* angleName() const {  ///< PHI, PSI or CHI1
    return angle == Angle::Phi ? "PHI" : angle == Angle::Psi ? "PSI" : "CHI1";
  }
};

/// Restraints in residue order (PHI, PSI, CHI1) with what the writers say about them.
struct RestraintList {
  std::vector<Restraint> restraints;
  std::map<int, char> sequence;     ///< of the whole chain
  std::vector<InputShift> shifts;   ///< observed, of the input table; may be empty
  Labels labels;                    ///< what the residues are called in the output
  std::vector<std::string> report;  ///< what was used and skipped and why, one statement per entry
};

}  // namespace restraints
