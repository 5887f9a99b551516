// Typed reader of large numeric tables: reports format errors and goes on.
#include "tables/GDB2.h"

#include <algorithm>
#include <cstring>
#include <iostream>

#include "tables/LineReader.h"
#include "tables/short_decimal.h"
#include "tables/tableLines.h"
#include "tables/text.h"

namespace {

constexpr std::int32_t kInteger = 0, kFloat = LineNode::kFloat, kString = 2;

static_assert(LineReader::kPadding >= kShortDecimalPadding);

/// The run of non-white-space characters at `p`.
std::string_view tokenAt(const char* p, const char* end) {
  const char* const start = p;
  while (p != end && !text::isSpace(*p)) ++p;
  return {start, static_cast<std::size_t>(p - start)};
}

std::string_view firstToken(std::string_view line) {
  const char* p = line.data();
  const char* const end = p + line.size();
  while (p != end && text::isSpace(*p)) ++p;
  return tokenAt(p, end);
}

/// Converts the token at `p` and returns where it ends. Nearly all cells are short decimals.
const char* convertCell(const char* p, const char* end, LineNode& node, LineNode::Val& cell) {
  const ShortDecimal decimal = scanShortDecimal(p);
  const bool isShort = decimal.length > 0 && text::isSpace(p[decimal.length]);
  if (cell.typeCode == kFloat && isShort) {
    cell.real = static_cast<float>(decimal.toDouble());
    return p + decimal.length;
  }
  const std::string_view token = tokenAt(p, end);
  if (cell.typeCode == kFloat) {
    cell.real = static_cast<float>(text::toDouble(token));
  } else if (cell.typeCode == kInteger) {
    cell.integer = text::toInt(token);
  } else {
    cell.integer = static_cast<std::int32_t>(node.strings.size());
    node.strings.emplace_back(token);
  }
  return token.data() + token.size();
}

/// Fills `node` from a line that holds exactly `columns` cells; false for any other line.
bool convertRow(std::string_view line, std::size_t columns, const std::vector<std::int32_t>& types,
                LineNode& node) {
  static constexpr std::string_view kZeros = "0 0 0 0 ";  // cells of sparse tables, four at a time
  constexpr std::size_t kTogether = 4;
  const char* p = line.data();
  const char* const end = p + line.size();
  // Zero in either numeric type. A VARS line after the FORMAT line may ask for more columns than have a type:
  // these are integers.
  node.values.resize(columns);
  const std::size_t typed = std::min(columns, types.size());
  for (std::size_t i = 0; i < typed; ++i) node.values[i].typeCode = types[i];
  const bool numeric = std::find(types.begin(), types.end(), kString) == types.end();
  std::size_t i = 0;
  while (i < columns) {
    while (p != end && text::isSpace(*p)) ++p;
    if (p == end) return false;
    if (numeric && i + kTogether <= columns && std::memcmp(p, kZeros.data(), kZeros.size()) == 0) {
      p += kZeros.size();
      i += kTogether;
    } else {
      p = convertCell(p, end, node, node.values[i]);
      ++i;
    }
  }
  while (p != end && text::isSpace(*p)) ++p;
  return p == end;
}

void readDataLine(GDB2& table, std::string_view line) {
  table.headerLines.emplace_back(line);
  const std::vector<std::string_view> tokens = text::split_WhiteSpace(line);
  if (tokens.size() < 3) return;  // without a value the numbering stays as it is
  if (tokens[1] == "FIRST_RESID") table.firstResid = text::toInt(tokens[2]);
  if (tokens[1] != "SEQUENCE") return;
  for (std::size_t i = 2; i < tokens.size(); ++i) {
    for (const char code : text::decodeSequence(tokens[i])) {
      const auto key = static_cast<std::uint32_t>(table.residList.size()) +
                       static_cast<std::uint32_t>(table.firstResid);  // wraps instead of overflowing
      table.residList.insert_or_assign(table.residList.end(), static_cast<std::int32_t>(key),
                                       std::string(1, code));
    }
  }
}

/// Writes `message` and keeps it; the result is that of a failed load.
bool fail(GDB2& table, const std::string& message, const std::string& recorded) {
  std::cerr << message << std::flush;
  table.errorText += recorded;
  return false;
}

bool fail(GDB2& table, const std::string& message) {
  return fail(table, message, message);
}

}  // namespace

GDB2::GDB2(const std::string& file) {
  loadGDB(file);
}

bool GDB2::loadGDB(const std::string& file) {
  fileName = file;
  LineReader reader(file);
  if (!reader.isOpen()) return fail(*this, "\tFile Error: Can't open input file for reading\n");
  bool rowsReady = false;
  std::string_view line;
  while (reader.next(line)) {
    const std::string_view first = firstToken(line);
    if (first.empty()) {
      if (!rowsReady) headerLines.emplace_back(line);
      continue;
    }
    if (rowsReady) {
      lineEntries.emplace_back();
      if (convertRow(line, static_cast<std::size_t>(varCount), varTypes, lineEntries.back())) {
        lineEntries.back().index = ++lineCount;
        continue;
      }
      lineEntries.pop_back();
    }
    switch (lineKind(first)) {
      case LineKind::Remark:
        headerLines.emplace_back(tailFrom(line, kRemarkKeyword + 1));
        break;
      case LineKind::Data:
        readDataLine(*this, line);
        break;
      case LineKind::Vars:
        varsLine = text::simplifyWhiteSpace(tailFrom(text::trim(line), kVarsKeyword));
        if (!varsStrParser(varsLine)) return false;
        break;
      case LineKind::Format:
        formatLine = tailFrom(line, kFormatKeyword);
        if (!formatStrParser(formatLine)) return false;
        rowsReady = initNodes();
        break;
      case LineKind::Other:
        break;
    }
  }
  if (varCount < 1) return fail(*this, "Format Error: Missing input table keyword VARS\n");
  if (lineCount == 0) return fail(*this, "Format Error: No valid data found and read from input file \n");
  lastResid = static_cast<std::int32_t>(static_cast<std::uint32_t>(firstResid) +
                                        static_cast<std::uint32_t>(residList.size()) - 1U);
  return true;
}

bool GDB2::varsStrParser(std::string_view text) {
  varNames.clear();
  varIndex.clear();
  varCount = 0;
  for (const std::string& name : text::split(' ', text)) {
    varNames.emplace_hint(varNames.end(), varCount, name);
    varIndex[name] = ++varCount;
  }
  if (varCount > 0) return true;
  return fail(*this, "GDB init error:: VARS line is empty.", "\tFormat Error: VARS line is empty");
}

bool GDB2::formatStrParser(std::string_view text) {
  if (varCount == 0) {
    return fail(*this, "GDB init error:: FORMAT line needs to be specified after a VARS line.",
                "\tFormat Error: FORMAT line needs to be specified after a VARS line.");
  }
  varFormats.clear();
  const std::vector<std::string> pieces = formatPieces(text, static_cast<std::size_t>(varCount));
  if (pieces.empty()) {
    return fail(*this, "GDB init error:: FORMAT and VARS lines contain different number of columns.",
                "\tFormat Error: FORMAT and VARS lines contain different number of columns");
  }
  for (const std::string& piece : pieces) {
    if (!text::checkFormat(piece)) {
      return fail(*this, "GDB init error:: Bad FORMAT syntax '" + piece + "'\n",
                  "\tFormat Error: Invalid FORMAT line \"" + std::string(text) +
                      "\"\n\t              Bad FORMAT syntax '" + piece + "'\n");
    }
    varFormats.emplace_hint(varFormats.end(), static_cast<std::int32_t>(varFormats.size()), piece);
  }
  return true;
}

bool GDB2::initNodes() {
  if (varCount == 0 || varFormats.size() != varNames.size()) {
    std::cerr << "GDB init error:: no valid VARS read or VARS and its FORMAT not matched! " << std::endl;
    return false;
  }
  varTypes.clear();
  for (const auto& [column, format] : varFormats) {
    const char conversion = text::trim(format).back();  // the formats have passed the check
    varTypes.push_back(conversion == 'd' ? kInteger : conversion == 'f' ? kFloat : kString);
  }
  lineEntries.clear();
  lineCount = 0;
  return true;
}

float GDB2::getFloatNodeVal(std::int32_t row, std::string_view name) const {
  return getFloatNodeVal(row, getVarIndex1(name));
}

float GDB2::getFloatNodeVal(std::int32_t row, std::int32_t index1) const {
  const LineNode* node = getLineEntry(row);
  return node == nullptr ? LineNode::kNoValue : node->number(index1);
}

float LineNode::otherNumber(const Val& cell) const {
  if (cell.typeCode == kInteger) return static_cast<float>(cell.integer);
  return static_cast<float>(text::toDouble(strings[static_cast<std::size_t>(cell.integer)]));
}

const LineNode* GDB2::getLineEntry(std::int32_t row) const {
  return row >= 1 && row <= lineCount ? &lineEntries[static_cast<std::size_t>(row) - 1] : nullptr;
}

std::int32_t GDB2::getVarIndex1(std::string_view name) const {
  const auto it = varIndex.find(name);
  return it == varIndex.end() ? 0 : it->second;
}
