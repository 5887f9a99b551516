// Small tables and drivers built in memory by tests.
#pragma once

#include <string>
#include <vector>

#include "tables/GDB.h"
#include "tables/text.h"

namespace support {

/// A table from its column names, formats and rows of blank-separated cells.
inline GDB makeTable(const std::string& vars, const std::string& formats,
                     const std::vector<std::string>& rows) {
  GDB table;
  table.VARS_str_parser(vars);
  table.FORMAT_str_parser(formats);
  std::int32_t number = 0;
  for (const std::string& row : rows) {
    ++number;
    const auto cells = text::split_WhiteSpace(row);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      table.setEntry(number, table.varNames.at(static_cast<std::int32_t>(i)), cells[i]);
    }
  }
  return table;
}

}  // namespace support
