// From prediction rows to restraints: which residues, which width, and what is said about the rest.
#pragma once

#include <vector>

#include "restraints/options.h"
#include "restraints/prediction.h"
#include "restraints/restraint.h"

namespace restraints {

/// Restraints of all usable rows by the options' classes, width rule and chi1 probability. `chi1` may be
/// empty.
RestraintList selectRestraints(const TorsionTable& torsions, const std::vector<Chi1Row>& chi1,
                               const Options& options);

/// "3-5, 9" for {3, 4, 5, 9}.
std::string residueRanges(const std::vector<int>& residues);

}  // namespace restraints
