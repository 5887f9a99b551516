// GROMACS: a dihedral_restraints section for the molecule's topology.
#include "restraints/writers.h"

namespace restraints {

namespace {

constexpr double kForce = 1000.0;  // kJ/mol/rad^2

}  // namespace

std::string writeGromacs(const RestraintList& list, const Options& options, const AtomNumbers& atoms) {
  std::string out = commentBlock(list, "; ");
  out += "; atom numbers count inside the molecule type: include this file in its topology\n";
  out += "[ dihedral_restraints ]\n;    ai     aj     ak     al  type      phi    dphi     kfac\n";
  for (std::size_t i = 0; i < list.restraints.size(); ++i) {
    const Restraint& r = list.restraints[i];
    out += print("%7d%7d%7d%7d%6d%9.1f%8.1f%9.1f ; %s\n", atoms[i][0], atoms[i][1], atoms[i][2], atoms[i][3],
                 1, r.centre, r.halfWidth, options.force.value_or(kForce), describe(r, list.labels).c_str());
  }
  return out;
}

}  // namespace restraints
