// Amber: one namelist per angle with a flat well between r2 and r3.
#include "restraints/writers.h"

namespace restraints {

namespace {

constexpr double kForce = 20.0;          // kcal/mol/rad^2, without the factor 1/2
constexpr double kParabolaWidth = 90.0;  // degrees from the well to where the energy grows linearly

}  // namespace

std::string writeAmber(const RestraintList& list, const Options& options, const AtomNumbers& atoms) {
  const double force = options.force.value_or(kForce);
  std::string out = commentBlock(list, "# ");
  for (std::size_t i = 0; i < list.restraints.size(); ++i) {
    const Restraint& r = list.restraints[i];
    out += "# " + describe(r, list.labels) + "\n";
    out += print(" &rst iat=%d,%d,%d,%d, r1=%.1f, r2=%.1f, r3=%.1f, r4=%.1f, rk2=%.1f, rk3=%.1f, &end\n",
                 atoms[i][0], atoms[i][1], atoms[i][2], atoms[i][3], r.lower() - kParabolaWidth, r.lower(),
                 r.upper(), r.upper() + kParabolaWidth, force, force);
  }
  return out;
}

}  // namespace restraints
