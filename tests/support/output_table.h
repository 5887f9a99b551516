// Reads an output table back, independently of the program's own reader.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace support {

struct OutputTable {
  using Row = std::map<std::string, std::string>;  ///< column name -> text

  explicit OutputTable(const std::filesystem::path& file);
  /// A cell in the first row of that RESID; nan when there is none.
  double number(int resid, const std::string& column) const;
  std::string text(int resid, const std::string& column) const;
  std::string texts(int resid, const std::string& columns) const;  ///< of several columns, blank-separated
  std::vector<int> residues() const;                               ///< the RESID column

  std::vector<std::string> remarks, data, columns;
  std::vector<Row> rows;
};

}  // namespace support
