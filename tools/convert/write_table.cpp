// The converted rows as the program's input table, with the report in its remarks.
#include <algorithm>
#include <cctype>

#include "common/files.h"
#include "convert/conversion.h"
#include "convert/names.h"
#include "tables/GDB.h"
#include "tables/text.h"

namespace convert {

namespace {

constexpr int kLeastDecimals = 3, kMostDecimals = 14;

/// One line without control characters.
std::string oneLine(std::string_view text) {
  return tools::printable(text::simplifyWhiteSpace(text));
}

/// Digits after the point that a value needs, written as 54.45 or as 5.445e+01.
int decimalsOf(const std::string& text) {
  const std::size_t end = std::min(text.find_first_of("eE"), text.size());
  const std::size_t point = std::min(text.find('.'), end);
  const std::size_t last = text.find_last_not_of("0. ", end == 0 ? 0 : end - 1);
  const int digits =
      point < end && last != std::string::npos && last > point ? static_cast<int>(last - point) : 0;
  const int exponent = end < text.size() ? wholeInteger(text.substr(end + 1)).value_or(0) : 0;
  return digits - exponent;
}

int decimals(const std::vector<TableRow>& rows) {
  int most = kLeastDecimals;
  for (const TableRow& row : rows) most = std::max(most, decimalsOf(row.text));
  return std::min(most, kMostDecimals);
}

/// Ten letters a group, as in printed sequences; no line of the file ends inside a group.
std::vector<std::string> sequenceLines(const std::string& sequence) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < sequence.size(); i += 10) {
    if (i % 50 == 0) lines.emplace_back();
    lines.back() += (i % 50 == 0 ? "" : " ") + sequence.substr(i, 10);
  }
  return lines;
}

void fillTable(const Conversion& conversion, const Log& log, GDB& table) {
  for (const std::string& line : reportLines(conversion)) table.addRemark(oneLine(line));
  for (const std::string& mark : conversion.marks) table.addRemark(oneLine(mark));
  for (const tools::Message& message : log.messages()) {
    if (message.severity == tools::Severity::Warning)
      table.addRemark(oneLine("Warning: " + tools::describe(message)));
  }
  table.setData("FIRST_RESID", std::to_string(conversion.firstResid));
  for (const std::string& line : sequenceLines(conversion.sequence)) table.setData("SEQUENCE", line);
  const int digits = decimals(conversion.rows);
  table.VARS_str_parser("RESID RESNAME ATOMNAME SHIFT");
  table.FORMAT_str_parser("%4d   %1s     %-4s   %" + std::to_string(digits + 6) + "." +
                          std::to_string(digits) + "f");
  int number = 0;
  for (const TableRow& row : conversion.rows) {
    ++number;
    table.setEntry(number, "RESID", std::to_string(row.resid));
    table.setEntry(number, "RESNAME", std::string(1, row.code));
    table.setEntry(number, "ATOMNAME", row.atom);
    table.setEntry(number, "SHIFT", row.text);
  }
}

}  // namespace

std::string writeTable(const Conversion& conversion, const Log& log, const std::string& path) {
  GDB table;
  fillTable(conversion, log, table);
  return tools::writeTextFile(path, table.toText());
}

std::vector<std::string> reportLines(const Conversion& conversion) {
  std::vector<std::string> lines = conversion.remarks;
  std::string taken, renamed;
  std::size_t total = 0;
  for (const char* atom : {"N", "HN", "HA", "HA2", "HA3", "C", "CA", "CB"}) {
    const auto it = conversion.taken.find(atom);
    if (it == conversion.taken.end()) continue;
    total += it->second;
    taken += std::string(", ") + atom + " " + std::to_string(it->second);
  }
  lines.push_back("Taken: " + (total == 0 ? "no" : std::to_string(total)) + " shifts" +
                  (taken.empty() ? "" : " (" + taken.substr(2) + ")") + " of " +
                  std::to_string(conversion.sequence.size()) + " residues, first residue " +
                  std::to_string(conversion.firstResid));
  for (const auto& [change, count] : conversion.renamed)
    renamed += ", " + change + " (" + std::to_string(count) + ")";
  if (!renamed.empty()) lines.push_back("Renamed: " + renamed.substr(2));
  for (const auto& [reason, count] : conversion.skipped) {
    lines.push_back("Skipped: " + std::to_string(count) + " shifts " + reason);
  }
  for (const std::string& hint : conversion.hints) lines.push_back("Hint: " + hint);
  return lines;
}

}  // namespace convert
