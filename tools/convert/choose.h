// Which chain and which shift list of a file are converted.
#pragma once

#include <map>
#include <string>

#include "convert/entry.h"

namespace convert {

/// Backbone shifts with a value, counted once for all chains and lists.
class BackboneCounts {
 public:
  explicit BackboneCounts(const Entry& entry);
  /// Shifts of a chain, in one list or (empty `list`) in all.
  std::size_t of(const std::string& chain, const std::string& list = "") const;

 private:
  std::map<std::string, std::map<std::string, std::size_t>> counts_;  // chain, list; "" is their sum
};

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
