// First shift of the input table by residue number and atom name, found without walking the table.
#pragma once

#include <string>
#include <unordered_map>

#include "shifts/input_shift.h"
#include "tables/GDB.h"

/// Index over the RESID and ATOMNAME cells of the rows that hold a shift; both compare as text. The table
/// must outlive the index and keep its rows.
class RowIndex {
 public:
  explicit RowIndex(const GDB& table) {
    for (const auto& [number, row] : table.entries) {
      if (!inputShift(row)) continue;
      first_.try_emplace(key(GDB::cell(row, "RESID"), GDB::cell(row, "ATOMNAME")), &row);
    }
  }

  /// The first row (ascending row number) of the residue and atom, nullptr when there is none.
  const GDB::Row* find(int resid, const std::string& atom) const {
    const auto it = first_.find(key(std::to_string(resid), atom));
    return it == first_.end() ? nullptr : it->second;
  }

 private:
  /// Cells hold no white space, so a blank separates them unambiguously.
  static std::string key(const std::string& resid, const std::string& atom) { return resid + ' ' + atom; }

  std::unordered_map<std::string, const GDB::Row*> first_;
};
