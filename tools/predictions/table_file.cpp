// Prediction tables read with every fault named by file and line.
#include "predictions/table_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "common/numbers.h"
#include "tables/tableLines.h"
#include "tables/text.h"

namespace predictions {

namespace {

/// First pass over the file: what the table class would pass over in silence or end the program for.
class Scan {
 public:
  Scan(const std::string& path, std::string& fault) : file(path), error(fault) {}

  bool run(std::istream& in) {
    std::string line;
    while (error.empty() && std::getline(in, line)) {
      ++lineNumber;
      if (line.find('\0') != std::string::npos) {
        fail("a zero byte: this is no text table");
        break;
      }
      readLine(line);
    }
    if (error.empty() && !formatSeen) {
      error = file + ": no VARS and FORMAT lines: this is no prediction table";
    }
    return error.empty();
  }

  std::vector<int> rowLines;

 private:
  void fail(const std::string& what) { error = file + ":" + std::to_string(lineNumber) + ": " + what; }

  void readLine(const std::string& line) {
    const auto tokens = text::split_WhiteSpace(line);
    if (tokens.empty()) return;
    switch (lineKind(tokens[0])) {
      case LineKind::Vars:
        if (formatSeen) return fail("a second VARS line");
        columns = tokens.size() - 1;
        break;
      case LineKind::Format:
        checkFormats(line);
        formatSeen = true;
        break;
      case LineKind::Remark:
      case LineKind::Data:
        if (formatSeen) fail("a REMARK or DATA line among the rows");
        break;
      case LineKind::Other:
        readRow(tokens.size());
        break;
    }
  }

  void checkFormats(const std::string& line) {
    if (formatSeen) return fail("a second FORMAT line");
    if (columns == 0) return fail("a FORMAT line without a VARS line before it");
    const auto pieces = formatPieces(tailFrom(line, kFormatKeyword), columns);
    if (pieces.empty()) {
      return fail("the FORMAT line does not hold one format for each of " + std::to_string(columns) +
                  " columns");
    }
    for (const std::string& piece : pieces) {
      if (!text::checkFormat(piece)) return fail("bad field format '" + piece + "'");
    }
  }

  void readRow(std::size_t tokens) {
    if (!formatSeen) return;  // text before the table
    if (tokens != columns) {
      return fail("expected " + std::to_string(columns) + " values, found " + std::to_string(tokens));
    }
    rowLines.push_back(lineNumber);
  }

  std::string file;
  std::string& error;
  std::size_t columns = 0;
  int lineNumber = 0;
  bool formatSeen = false;
};

}  // namespace

std::optional<TableFile> TableFile::load(const std::string& path, const std::vector<std::string>& columns,
                                         std::string& error) {
  std::error_code status;
  std::ifstream in;
  if (!std::filesystem::is_directory(path, status)) in.open(path, std::ios::binary);
  if (!in.is_open()) {
    error = path + ": cannot be opened";
    return std::nullopt;
  }
  Scan scan(path, error);
  if (!scan.run(in)) return std::nullopt;
  std::optional<TableFile> result(std::in_place);
  result->file = path;
  result->table.loadGDB(path);
  result->lines = std::move(scan.rowLines);
  for (const std::string& column : columns) {
    if (!result->hasColumn(column)) {
      error = path + ": no column " + column;
      return std::nullopt;
    }
  }
  return result;
}

bool TableFile::hasColumn(std::string_view name) const {
  return std::any_of(table.varNames.begin(), table.varNames.end(),
                     [&](const auto& column) { return column.second == name; });
}

std::string TableFile::remarkAfter(std::string_view lead) const {
  for (const std::string& remark : table.remarks) {
    const std::string_view trimmed = text::trim(remark);
    if (trimmed.starts_with(lead)) return std::string(text::trim(trimmed.substr(lead.size())));
  }
  return {};
}

RowReader::RowReader(const TableFile& from, int rowNumber, const GDB::Row& cells, std::string& fault)
    : source(from), row(rowNumber), values(cells), error(fault) {}

void RowReader::fail(const std::string& what) {
  if (!error.empty()) return;
  const auto index = static_cast<std::size_t>(row - 1);
  const int line = index < source.lines.size() ? source.lines[index] : 0;
  error = source.file + ":" + std::to_string(line) + ": " + what;
}

std::string RowReader::text(const std::string& column) const {
  return GDB::cell(values, column);
}

double RowReader::number(const std::string& column) {
  double value = 0;
  const std::string& cell = GDB::cell(values, column);
  if (tools::parseNumber(cell, value)) return value;
  fail(column + " is '" + cell + "', not a number");
  return 0;
}

int RowReader::integer(const std::string& column) {
  constexpr int kLargest = 2000000000;  // neighbours of a residue number must be numbers, too
  int value = 0;
  const std::string& cell = GDB::cell(values, column);
  if (!tools::parseInteger(cell, value)) {
    fail(column + " is '" + cell + "', not a whole number");
    return 0;
  }
  if (value >= -kLargest && value <= kLargest) return value;
  fail(column + " is '" + cell + "', beyond 2000000000");
  return 0;
}

char RowReader::code(const std::string& column) {
  const std::string& cell = GDB::cell(values, column);
  if (cell.size() == 1) return cell[0];
  fail(column + " is '" + cell + "', not a one-letter code");
  return '?';
}

}  // namespace predictions
