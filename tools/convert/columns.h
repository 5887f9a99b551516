// What the columns of a table of shifts mean: by their headings, by their content, or as the user says.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "convert/cells.h"
#include "convert/entry.h"

namespace convert {

enum Role { kChain, kList, kNumber, kName, kLabel, kAtom, kShift, kAuthor, kAmbiguity, kRoles };

struct Columns {
  std::array<int, kRoles> at{};                    ///< column of each role, -1 for none
  std::vector<std::pair<int, std::string>> atoms;  ///< of a wide table: column and the atom it holds
  std::vector<std::string> headings;               ///< empty without a header line
  std::size_t firstRow = 0;                        ///< of the data
  std::size_t width = 0;
  std::string said;        ///< which columns were taken, for the report
  std::string guess;       ///< what was guessed, empty when the headings say it all
  bool dashJoins = false;  ///< labels are written as Met-1

  bool has(Role role) const { return at[role] >= 0; }
};

/// How well a heading fits a role: 2 for a name that means nothing else, 1 for one that may, 0 for none.
int headingFit(Role role, const std::string& heading);

/// Headings of columns that hold numbers but never shifts: errors, merits, counts.
bool isNeverShift(const std::string& heading);

/// "'Seq ID' (column 3)" or "column 3".
std::string describeColumn(const Columns& columns, int column);

/// What was found in the cells of one column.
struct ColumnFacts {
  std::size_t rows = 0, filled = 0, integers = 0, numbers = 0, codes = 0;  ///< codes: 43, 43-1, @12
  std::size_t names = 0, longNames = 0, atoms = 0, labels = 0, labelAtoms = 0;
  std::vector<std::string> distinct;  ///< the first ones

  /// Nearly all of the cells; under a heading that says so half of them, the others are reported as they are
  /// read.
  bool mostly(std::size_t count, bool headed = false) const {
    return filled > 0 && count * 10 >= filled * (headed ? 5 : 8);
  }
};

std::vector<ColumnFacts> columnFacts(const Cells& cells, Columns& columns);

/// The integer of a residue number cell, "12.0" of a table that knew only floating point included.
std::optional<int> residueNumber(const std::string& cell);

/// Finds the columns. `given` is the text of --columns. False with an error in `log`.
bool chooseColumns(const Cells& cells, const std::string& given, Columns& columns, Log& log);

/// Chooses by headings and content together for rows from `columns.firstRow` on; false when a role that every
/// table needs finds no column (its name is in `lacking`).
bool chooseByContent(const Cells& cells, Columns& columns, std::string& lacking);

}  // namespace convert
