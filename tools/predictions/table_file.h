// Prediction tables read with every fault named by file and line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tables/GDB.h"

namespace predictions {

/// A table whose every row has the right number of values, with the line number of each row.
struct TableFile {
  GDB table;
  std::string file;
  std::vector<int> lines;  ///< line of row k (from 1) at k - 1

  /// Reads `path`; empty with `error` set ("file:line: what") when it cannot be read, lacks one of `columns`
  /// or the FORMAT line, or holds a row with too few or too many values.
  static std::optional<TableFile> load(const std::string& path, const std::vector<std::string>& columns,
                                       std::string& error);
  bool hasColumn(std::string_view name) const;
  /// Rest of the first remark that begins with `lead`, white space trimmed; empty when there is none.
  std::string remarkAfter(std::string_view lead) const;
};

/// The cells of one row; the first fault is kept in `error` as "file:line: what".
class RowReader {
 public:
  RowReader(const TableFile& from, int rowNumber, const GDB::Row& cells, std::string& fault);
  std::string text(const std::string& column) const;
  double number(const std::string& column);  ///< finite; 0 with `error` set when the cell is no number
  int integer(const std::string& column);
  char code(const std::string& column);  ///< a one-character cell
  void fail(const std::string& what);

 private:
  const TableFile& source;
  int row;
  const GDB::Row& values;
  std::string& error;
};

}  // namespace predictions
