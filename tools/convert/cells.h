// Lines of a text to cells: CSV, TSV, semicolons, bars or blanks; quotes, line ends inside quotes, decimal
// commas.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/log.h"

namespace convert {

struct CellRow {
  int line = 0;
  bool comment = false;  ///< stood behind # or %, which is gone; kept because it may be the header
  std::vector<std::string> cells;
};

struct Cells {
  char separator = ' ';       ///< ' ' for any number of blanks
  bool decimalComma = false;  ///< numbers were written as 54,3; the cells have a point
  std::vector<CellRow> rows;  ///< without empty lines and without comments behind the first row
};

/// False with an error in `log` for a quote that never ends.
bool splitCells(std::string_view text, Cells& cells, tools::Log& log);

/// Nothing, or one of the words that stand for nothing: . ? - NA nan None **** and the like.
bool isMissing(std::string_view cell);

}  // namespace convert
