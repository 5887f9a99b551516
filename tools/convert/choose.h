// Which chain and which shift list of a file are converted.
#pragma once

#include <string>

#include "convert/entry.h"

namespace convert {

/// Backbone shifts with a value of a chain, in one list or (empty `list`) in all.
std::size_t countBackboneShifts(const Entry& entry, const std::string& chain, const std::string& list);

/// "1 (A, subunit 1)"
std::string describeChain(const Chain& chain);
std::string describeList(const ShiftList& list);

struct Choice {
  bool ok = false;
  bool ambiguous = false;  ///< the user has to choose; the error names the choices
  std::string chain;       ///< Chain::id
  std::string list;        ///< ShiftList::id
};

/// The chain and list that the settings name, else the only ones with backbone shifts. Otherwise an error in
/// `log` that names the choices.
Choice choose(const Entry& entry, const Settings& settings, Log& log);

}  // namespace convert
