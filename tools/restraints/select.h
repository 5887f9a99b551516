// From prediction rows to restraints: which residues, which width, and what is said about the rest.
#pragma once

#include <vector>

#include "predictions/rows.h"
#include "restraints/options.h"
#include "restraints/restraint.h"

namespace restraints {

using predictions::Chi1Row;
using predictions::TorsionRow;
using predictions::TorsionTable;

/// Restraints of all usable rows by the options' classes, width rule and chi1 probability. `chi1` may be
/// empty.
RestraintList selectRestraints(const TorsionTable& torsions, const std::vector<Chi1Row>& chi1,
                               const Options& options);

}  // namespace restraints
