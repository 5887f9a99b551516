// One writer per restraint format, all over the same list.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "restraints/options.h"
#include "restraints/restraint.h"

namespace restraints {

/// Atom numbers of each restraint (from 1), in the order of the list.
using AtomNumbers = std::vector<std::array<int, 4>>;

std::string writeXplor(const RestraintList& list, const Options& options);
std::string writeCyana(const RestraintList& list, const Options& options);
std::string writeNef(const RestraintList& list, const Options& options);
std::string writeGromacs(const RestraintList& list, const Options& options, const AtomNumbers& atoms);
std::string writeAmber(const RestraintList& list, const Options& options, const AtomNumbers& atoms);

/// The report as comment lines, each beginning with `lead`.
std::string commentBlock(const RestraintList& list, const std::string& lead);
/// "7 THR PHI, class Strong".
std::string describe(const Restraint& restraint);
/// printf to a string, for numbers and short fields.
std::string print(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace restraints
