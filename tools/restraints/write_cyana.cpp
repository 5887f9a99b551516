// CYANA: lower and upper bound per angle, intervals across the seam unwrapped.
#include "predictions/names.h"
#include "restraints/writers.h"

namespace restraints {

namespace {

/// Residue names as in CYANA's sequence file.
const char* cyanaName(char code) {
  if (code == 'c') return "CYSS";
  if (code == 'p') return "cPRO";
  return predictions::threeLetterName(code);
}

}  // namespace

std::string writeCyana(const RestraintList& list, const Options& options) {
  std::string out = commentBlock(list, "# ");
  for (const Restraint& r : list.restraints) {
    if (r.angle == Angle::Chi1) out += "# " + describe(r) + "\n";
    out += print("%5d %-5s %-5s %8.1f %8.1f %6.2f\n", r.resid, cyanaName(r.code), r.angleName(), r.lower(),
                 r.upper(), options.force.value_or(1.0));
  }
  return out;
}

}  // namespace restraints
