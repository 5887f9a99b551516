// Reads an output table back, independently of the program's own reader.
#include "support/output_table.h"

#include <cmath>
#include <sstream>

#include "support/process.h"

namespace support {

static const std::string kNoCell = "(no such cell)";

OutputTable::OutputTable(const std::filesystem::path& file) {
  std::istringstream in(readFile(file));
  for (std::string line; std::getline(in, line);) {
    const std::vector<std::string> words = split(line);
    if (words.empty() || words[0] == "FORMAT") continue;
    if (words[0] == "REMARK") {
      remarks.push_back(line.substr(6));
    } else if (words[0] == "DATA") {
      data.push_back(line);
    } else if (words[0] == "VARS") {
      columns.assign(words.begin() + 1, words.end());
    } else if (words.size() == columns.size()) {
      Row& row = rows.emplace_back();
      for (std::size_t i = 0; i < words.size(); ++i) row[columns[i]] = words[i];
    }
  }
}

std::string OutputTable::text(int resid, const std::string& column) const {
  for (const Row& row : rows)
    if (row.at("RESID") == std::to_string(resid)) return row.contains(column) ? row.at(column) : kNoCell;
  return kNoCell;
}

std::string OutputTable::texts(int resid, const std::string& names) const {
  std::string cells;
  for (const std::string& name : split(names)) cells += (cells.empty() ? "" : " ") + text(resid, name);
  return cells;
}

double OutputTable::number(int resid, const std::string& column) const {
  const std::string cell = text(resid, column);
  return cell == kNoCell ? std::nan("") : std::stod(cell);
}

std::vector<int> OutputTable::residues() const {
  std::vector<int> numbers;
  for (const Row& row : rows) numbers.push_back(std::stoi(row.at("RESID")));
  return numbers;
}

}  // namespace support
