// CYANA: lower and upper bound per angle, intervals across the seam unwrapped.
#include "restraints/writers.h"

namespace restraints {

namespace {

/// Residue names as in CYANA's sequence file, where the input had no other.
std::string cyanaName(const Restraint& r, const Labels& labels) {
  if (labels.names.contains(r.resid)) return labels.name(r.resid, r.code);
  return r.code == 'c' ? "CYSS" : r.code == 'p' ? "cPRO" : labels.name(r.resid, r.code);
}

}  // namespace

std::string writeCyana(const RestraintList& list, const Options& options) {
  std::string out = commentBlock(list, "# ");
  for (const Restraint& r : list.restraints) {
    if (r.angle == Angle::Chi1) out += "# " + describe(r, list.labels) + "\n";
    out += print("%5s %-5s %-5s %8.1f %8.1f %6.2f\n", list.labels.number(r.resid).c_str(),
                 cyanaName(r, list.labels).c_str(), r.angleName(), r.lower(), r.upper(),
                 options.force.value_or(1.0));
  }
  return out;
}

}  // namespace restraints
