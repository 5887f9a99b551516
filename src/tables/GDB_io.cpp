// Reading and writing of the text table.
#include <iostream>

#include "tables/FieldFormat.h"
#include "tables/GDB.h"
#include "tables/LineReader.h"
#include "tables/OutputFile.h"
#include "tables/tableLines.h"
#include "tables/text.h"

namespace {

constexpr std::size_t kSequenceSlice = 55;  // letters and blanks per DATA SEQUENCE line

/// Keeps the rows in a table.
class EntrySink : public RowSink {
 public:
  explicit EntrySink(std::map<std::int32_t, GDB::Row>& entries) : entries_(entries) {}

  void redefine(const std::map<std::int32_t, std::string>& varNames) override {
    columns_.clear();  // of columns with equal names the last one keeps the cell
    for (const auto& [index, name] : varNames) columns_[name] = static_cast<std::size_t>(index);
  }
  void add(const std::vector<std::string_view>& cells) override {
    GDB::Row row;
    for (const auto& [name, index] : columns_) row.emplace_hint(row.end(), name, cells[index]);
    entries_.insert_or_assign(entries_.end(), ++rows_, std::move(row));
  }

 private:
  std::map<std::int32_t, GDB::Row>& entries_;
  std::int32_t rows_ = 0;  // counts every row of the file, also those a later VARS or FORMAT drops
  std::map<std::string, std::size_t> columns_;  // by name, so that a row's map is built without searching
};

void readDataLine(GDB& table, std::string_view line) {
  const std::string simplified = text::simplifyWhiteSpace(line);
  if (simplified.size() > kDataKeyword) table.dataLines.push_back(simplified.substr(kDataKeyword + 1));
}

void readVarsLine(GDB& table, std::string_view line) {
  const std::string simplified = text::simplifyWhiteSpace(line);
  table.varsLine = text::simplifyWhiteSpace(tailFrom(simplified, kVarsKeyword));
  table.VARS_str_parser(table.varsLine);
}

/// Residue numbering and sequence from the DATA lines.
void readSequence(GDB& table) {
  const std::string first = table.getData("FIRST_RESID");
  table.firstResid = first.empty() ? 1 : text::toInt(first);
  for (const char code : text::decodeSequence(table.getData("SEQUENCE"))) {
    const auto key = static_cast<std::uint32_t>(table.residList.size()) +
                     static_cast<std::uint32_t>(table.firstResid);  // wraps instead of overflowing
    table.residList.insert_or_assign(table.residList.end(), static_cast<std::int32_t>(key),
                                     std::string(1, code));
  }
}

void appendDataLine(std::string& out, const std::string& entry) {
  const std::size_t blank = entry.find(' ');
  if (std::string_view(entry).substr(0, blank) != "SEQUENCE") {
    out += "DATA " + entry + "\n";
    return;
  }
  const std::string letters =
      blank == std::string::npos ? "" : text::simplifyWhiteSpace(std::string_view(entry).substr(blank));
  for (std::size_t i = 0; i < letters.size(); i += kSequenceSlice) {
    out += "DATA SEQUENCE " + letters.substr(i, kSequenceSlice) + "\n";
  }
}

void appendHeader(std::string& out, const GDB& table) {
  for (const std::string& remark : table.remarks) out += "REMARK " + remark + "\n";
  out += "\n";
  for (const std::string& entry : table.dataLines) appendDataLine(out, entry);
  out += "\nVARS   ";
  for (const auto& [index, name] : table.varNames) out += name + " ";
  out += "\nFORMAT ";
  for (const auto& [index, format] : table.varFormats) out += format;
  out += "\n\n";
}

void appendRows(std::string& out, const GDB& table) {
  std::vector<std::pair<const std::string*, FieldFormat>> columns;
  for (const auto& [index, name] : table.varNames) {
    const auto format = table.varFormats.find(index);
    if (format != table.varFormats.end()) columns.emplace_back(&name, FieldFormat(format->second));
  }
  for (const auto& [number, row] : table.entries) {
    for (const auto& [name, format] : columns) format.append(out, GDB::cell(row, *name));
    out += '\n';
  }
}

}  // namespace

std::optional<TableError> GDB::read(const std::string& file) {
  EntrySink rows(entries);
  return read(file, rows);
}

std::optional<TableError> GDB::read(const std::string& file, RowSink& rows) {
  fileName = file;
  LineReader reader(file);
  if (!reader.isOpen()) return TableError{file, 0, "Can't open file " + file + " for reading"};
  bool formatSeen = false;
  std::vector<std::string_view> tokens;
  std::string_view line;
  while (reader.next(line)) {
    while (line.ends_with('\r')) line.remove_suffix(1);  // white space that remarks and formats must not keep
    const std::size_t rowTokens = formatSeen && varCount >= 1 ? static_cast<std::size_t>(varCount) : 0;
    text::split_WhiteSpace(line, tokens, rowTokens + 1);
    if (tokens.empty()) continue;
    if (tokens.size() == rowTokens) rows.add(tokens);
    // A row may start with a keyword; it then counts as both.
    switch (lineKind(tokens[0])) {
      case LineKind::Remark:
        remarks.emplace_back(tailFrom(line, kRemarkKeyword + 1));
        break;
      case LineKind::Data:
        readDataLine(*this, line);
        break;
      case LineKind::Vars:
        readVarsLine(*this, line);
        rows.redefine(varNames);
        break;
      case LineKind::Format:
        formatLine = tailFrom(line, kFormatKeyword);
        if (std::string fault = defineFormats(formatLine); !fault.empty()) {
          return TableError{file, reader.lineNumber(), std::move(fault)};
        }
        rows.redefine(varNames);
        formatSeen = true;
        break;
      case LineKind::Other:
        break;
    }
  }
  readSequence(*this);
  return std::nullopt;
}

std::string GDB::toText() const {
  std::string content;
  appendHeader(content, *this);
  appendRows(content, *this);
  return content;
}

bool GDB::saveGDB(const std::string& file) const {
  const WriteOutcome outcome = writeWholeFile(file, toText());
  if (outcome.state == WriteOutcome::State::Whole) return true;
  std::cerr << "\tCan't save file " << file;
  if (outcome.state == WriteOutcome::State::Incomplete) std::cerr << " completely: " << outcome.reason;
  std::cerr << std::endl;
  return outcome.state == WriteOutcome::State::NotOpened;
}
