// One writer per restraint format, all over the same list.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "predictions/model.h"
#include "restraints/options.h"
#include "restraints/restraint.h"

namespace restraints {

/// Atom numbers of each restraint (from 1), in the order of the list.
using AtomNumbers = std::vector<std::array<int, 4>>;

std::string writeXplor(const RestraintList& list, const Options& options);
std::string writeCyana(const RestraintList& list, const Options& options);
std::string writeNef(const RestraintList& list, const Options& options);
/// Only the save frame `frame` with the restraints, for a file that has the rest.
std::string nefRestraintFrame(const RestraintList& list, const Options& options, const std::string& frame);
inline constexpr const char* kNefFrame = "nef_dihedral_restraint_list_orbeln";
/// Save frames for a deposition: the restraints, secondary structure and order parameters of `model`.
std::string writeStar(const RestraintList& list, const predictions::Model& model, const Options& options);
std::string writeGromacs(const RestraintList& list, const Options& options, const AtomNumbers& atoms);
std::string writeAmber(const RestraintList& list, const Options& options, const AtomNumbers& atoms);

/// The report as comment lines, each beginning with `lead`.
std::string commentBlock(const RestraintList& list, const std::string& lead);
/// "7 THR PHI, class Strong".
std::string describe(const Restraint& restraint, const Labels& labels);
/// A residue of the user's sequence; the index in the vector is its position.
struct SequenceResidue {
  int resid = 0;
  char code = 'X';
  std::string number, name;
};
/// The sequence without the residues that have no name.
std::vector<SequenceResidue> namedResidues(const RestraintList& list);
/// printf to a string, for numbers and short fields.
std::string print(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace restraints
