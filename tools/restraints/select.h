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
/// empty. Class Bad, which only a reference structure gives, decides where --drop-bad or the class itself was
/// asked for; else such a residue has the class that it has without the structure.
RestraintList selectRestraints(const TorsionTable& torsions, const std::vector<Chi1Row>& chi1,
                               const Options& options, const Labels& labels = {});

}  // namespace restraints
