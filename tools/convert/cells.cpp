// Lines of a text to cells: CSV, TSV, semicolons, bars or blanks; quotes, line ends inside quotes, decimal
// commas.
#include "convert/cells.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>

#include "tables/text.h"

namespace convert {

namespace {

constexpr std::size_t kSampleLines = 200;  // lines that tell the separator

bool isDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

/// One record: a line, or several where a quoted cell holds line ends.
struct Record {
  int line = 0;
  std::string_view text;
};

/// A quote opens a cell only where one begins, so that H5" or 5' elsewhere is text.
bool opensQuote(std::string_view text, std::size_t at) {
  return text[at] == '"' &&
         (at == 0 || std::string_view("\t;,| \n").find(text[at - 1]) != std::string_view::npos);
}

bool splitRecords(std::string_view text, std::vector<Record>& records, tools::Log& log) {
  int line = 1, quoteLine = 0;
  std::size_t begin = 0;
  Record record{1, {}};
  for (std::size_t i = 0; i <= text.size(); ++i) {
    const bool end = i == text.size();
    if (!end && quoteLine == 0 && opensQuote(text, i)) {
      quoteLine = line;
    } else if (!end && quoteLine > 0 && text[i] == '"') {
      quoteLine = 0;
    }
    if (!end && text[i] != '\n') continue;
    if (quoteLine > 0 && end) return log.error(quoteLine, "a quote opens here and never ends");
    ++line;
    if (quoteLine > 0) continue;
    record.text = text.substr(begin, i - begin);
    if (record.text.ends_with('\r')) record.text.remove_suffix(1);
    if (!text::trim(record.text).empty()) records.push_back(record);
    begin = i + 1;
    record.line = line;
  }
  return true;
}

/// How often `wanted` stands outside quotes.
std::size_t countOutside(std::string_view text, char wanted) {
  bool quoted = false;
  std::size_t count = 0;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if (c == wanted && !quoted) ++count;
  }
  return count;
}

bool isComment(std::string_view text) {
  const std::string_view trimmed = text::trim(text);
  return trimmed.starts_with('#') || trimmed.starts_with('%') || trimmed.starts_with("//") ||
         trimmed.starts_with('!');
}

/// Every comma stands between two digits, and blanks make columns: 54,3 is a number.
bool onlyDecimalCommas(const std::vector<Record>& records) {
  for (std::size_t r = 0; r < std::min(records.size(), kSampleLines); ++r) {
    const std::string_view text = records[r].text;
    if (isComment(text)) continue;
    if (text::split_WhiteSpace(text).size() < 3) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const bool between = i > 0 && i + 1 < text.size() && isDigit(text[i - 1]) && isDigit(text[i + 1]);
      if (text[i] == ',' && !between) return false;
    }
  }
  return true;
}

/// Present in nearly every line and mostly in the same number.
bool separates(const std::vector<Record>& records, char candidate) {
  std::map<std::size_t, std::size_t> byCount;
  std::size_t lines = 0, most = 0;
  for (const Record& record : records) {
    if (isComment(record.text)) continue;
    ++byCount[countOutside(record.text, candidate)];
    if (++lines == kSampleLines) break;
  }
  for (const auto& [count, number] : byCount) {
    if (count > 0) most = std::max(most, number);
  }
  const auto without = byCount.find(0);
  const std::size_t absent = without == byCount.end() ? 0 : without->second;
  return most > 0 && most * 10 >= lines * 6 && absent * 10 <= lines * 3;
}

char separatorOf(const std::vector<Record>& records) {
  for (const char candidate : {'\t', ';', ',', '|'}) {
    if (!separates(records, candidate)) continue;
    if (candidate == ',' && onlyDecimalCommas(records)) continue;
    return candidate;
  }
  return ' ';
}

/// Line ends and runs of blanks inside a cell become one blank.
std::string cleaned(std::string_view cell) {
  std::string result;
  for (const std::string_view word : text::split_WhiteSpace(cell)) {
    result += result.empty() ? "" : " ";
    result += word;
  }
  return result;
}

std::vector<std::string> splitRecord(std::string_view text, char separator) {
  std::vector<std::string> cells;
  std::string cell;
  bool quoted = false, any = false;
  const auto finish = [&] {
    cells.push_back(cleaned(cell));
    cell.clear();
    any = false;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool blank = c == ' ' || c == '\t';
    if (quoted && c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
      cell += text[i++];
    } else if (quoted ? c == '"' : opensQuote(text, i)) {
      quoted = !quoted;
      any = true;
    } else if (!quoted && (c == separator || (separator == ' ' && blank))) {
      if (separator != ' ' || any) finish();
    } else {
      cell += c;
      any = true;
    }
  }
  if (separator != ' ' || any) finish();
  return cells;
}

bool isCommaNumber(const std::string& cell) {
  const std::size_t comma = cell.find(',');
  if (comma == std::string::npos || comma == 0 || comma + 1 == cell.size()) return false;
  if (cell.find(',', comma + 1) != std::string::npos || cell.find('.') != std::string::npos) return false;
  return isDigit(cell[comma - 1]) && isDigit(cell[comma + 1]) &&
         cell.find_first_not_of("0123456789+-,eE") == std::string::npos;
}

bool isPointNumber(const std::string& cell) {
  const std::size_t point = cell.find('.');
  return point != std::string::npos && point + 1 < cell.size() &&
         cell.find_first_not_of("0123456789+-.eE") == std::string::npos && isDigit(cell[point + 1]);
}

/// Some numbers have commas and next to none has a point.
bool usesDecimalComma(const Cells& cells) {
  if (cells.separator == ',') return false;
  std::size_t commas = 0, points = 0;
  for (const CellRow& row : cells.rows) {
    for (const std::string& cell : row.cells) {
      commas += isCommaNumber(cell) ? 1 : 0;
      points += isPointNumber(cell) ? 1 : 0;
    }
  }
  return commas > 4 * points;
}

}  // namespace

bool splitCells(std::string_view text, Cells& cells, tools::Log& log) {
  std::vector<Record> records;
  if (!splitRecords(text, records, log)) return false;
  cells.separator = separatorOf(records);
  bool begun = false;
  for (Record& record : records) {
    const bool comment = isComment(record.text);
    if (comment && begun) continue;
    begun = begun || !comment;
    if (comment) {
      // "#<TAB>Shift" keeps its first cell: the heading of a row number is # there.
      const char* marks = cells.separator == '\t' ? "#%!/ " : "#%!/ \t";
      record.text.remove_prefix(std::min(record.text.find_first_not_of(marks), record.text.size()));
    }
    CellRow row{record.line, comment, splitRecord(record.text, cells.separator)};
    // | 1 | MET | has no cell before the first bar and behind the last one.
    if (cells.separator == '|' && !row.cells.empty() && row.cells.front().empty())
      row.cells.erase(row.cells.begin());
    const bool ruler = record.text.find_first_not_of("-+=|: \t") == std::string_view::npos;
    if (!row.cells.empty() && !ruler) cells.rows.push_back(std::move(row));
  }
  cells.decimalComma = usesDecimalComma(cells);
  if (!cells.decimalComma) return true;
  for (CellRow& row : cells.rows) {
    for (std::string& cell : row.cells) {
      if (isCommaNumber(cell)) cell[cell.find(',')] = '.';
    }
  }
  return true;
}

bool isMissing(std::string_view cell) {
  static constexpr std::array<std::string_view, 16> kWords = {"",   ".",    "?",    "-",    "--",   "---",
                                                              "NA", "N/A",  "NAN",  "NONE", "NULL", "N.A.",
                                                              "ND", "N.D.", "<NA>", "#N/A"};
  const std::string raised = text::upper(text::trim(cell));
  if (std::find(kWords.begin(), kWords.end(), raised) != kWords.end()) return true;
  return raised.find_first_not_of('*') == std::string::npos ||
         raised.find_first_not_of('-') == std::string::npos;
}

}  // namespace convert
