// X-PLOR and CNS: assign statements with centre and half width.
#include "restraints/writers.h"

namespace restraints {

namespace {

constexpr double kForce = 1.0;  // kcal/mol/rad^2; protocols scale it
constexpr int kExponent = 2;    // energy grows with the square of the violation
constexpr int kSegidWidth = 4;

std::string selection(const RestraintAtom& atom, const std::string& number, const std::string& segid) {
  std::string text = print("(resid %s and name %-3s", number.c_str(), atom.name.c_str());
  if (!segid.empty()) text += print(" and segid \"%-*s\"", kSegidWidth, segid.c_str());
  return text + ")";
}

}  // namespace

/// Bare assign lines as task files want them; with `wrap` also the statements that scripts put around them.
std::string writeXplor(const RestraintList& list, const Options& options) {
  std::string out = commentBlock(list, "! ");
  if (options.wrap) out += print("restraints dihedral\n  reset\n  nassign=%zu\n", list.restraints.size());
  for (const Restraint& r : list.restraints) {
    out += "! " + describe(r, list.labels) + "\nassign";
    for (const RestraintAtom& atom : r.atoms) {
      out.append(" ").append(selection(atom, list.labels.number(atom.resid), options.chain));
    }
    out += print("  %.1f %7.1f %6.1f %d\n", options.force.value_or(kForce), r.centre, r.halfWidth, kExponent);
  }
  if (options.wrap) out += "end\n";
  return out;
}

}  // namespace restraints
