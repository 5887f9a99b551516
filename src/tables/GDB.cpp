// The table class: columns, formats, cells, look-ups, remarks and DATA entries.
#include "tables/GDB.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "tables/tableLines.h"
#include "tables/text.h"

namespace {

/// True when `row` holds `value` under `key`; an absent cell reads as empty text.
bool cellEquals(const GDB::Row& row, const std::string& key, std::string_view value) {
  return GDB::cell(row, key) == value;
}

template <class Matches>
const GDB::Row* nthRow(const std::map<std::int32_t, GDB::Row>& entries, std::int32_t n, Matches matches) {
  if (n < 1) return nullptr;
  for (const auto& [number, row] : entries) {
    if (matches(row) && --n == 0) return &row;
  }
  return nullptr;
}

[[noreturn]] void endWith(const std::string& message) {
  std::cerr << message << std::endl;
  std::exit(0);
}

}  // namespace

GDB::GDB(const std::string& file) {
  loadGDB(file);
}

void GDB::loadGDB(const std::string& file) {
  if (const auto error = read(file)) endWith('\t' + error->what);
}

void GDB::loadGDB(const std::string& file, RowSink& rows) {
  if (const auto error = read(file, rows)) endWith('\t' + error->what);
}

void GDB::VARS_str_parser(std::string_view text) {
  varNames.clear();
  entries.clear();
  varCount = 0;
  for (std::string& name : text::split(' ', text)) {
    varNames.emplace_hint(varNames.end(), varCount, std::move(name));
    ++varCount;
  }
}

std::string GDB::defineFormats(std::string_view text) {
  varFormats.clear();
  entries.clear();
  if (varCount <= 0) return {};
  std::int32_t column = 0;
  for (std::string& piece : formatPieces(text, static_cast<std::size_t>(varCount))) {
    if (!text::checkFormat(piece)) return "Bad format syntax '" + piece + "'";
    varFormats.emplace_hint(varFormats.end(), column, std::move(piece));
    ++column;
  }
  return {};
}

void GDB::FORMAT_str_parser(std::string_view text) {
  if (const std::string fault = defineFormats(text); !fault.empty()) endWith('\t' + fault);
}

void GDB::addVAR(const std::string& name, const std::string& format) {
  if (!text::checkFormat(format)) {
    std::cerr << "\tBad format syntax '" << format << "'" << std::endl;
    return;
  }
  if (name.find(' ') != std::string::npos) {
    std::cerr << "\tInvalid varible name '" << name << "' (with space)" << std::endl;
    return;
  }
  for (const auto& [column, known] : varNames) {
    if (known == name) {
      varFormats[column] = format;
      return;
    }
  }
  varNames[varCount] = name;
  varFormats[varCount] = format;
  ++varCount;
}

void GDB::setEntry(std::int32_t row, const std::string& name, std::string_view value) {
  // Writers fill rows column by column: mostly it is the one after the last.
  auto column = varNames.find(lastSet + 1);
  if (column == varNames.end() || column->second != name) {
    column = std::find_if(varNames.begin(), varNames.end(), [&](const auto& c) { return c.second == name; });
    if (column == varNames.end()) endWith("\tInvalid varible name '" + name + "'");
  }
  lastSet = column->first;
  entries[row][name] = value;
}

GDB::Row GDB::getEntry(const std::string& key, std::string_view value, std::int32_t n) const {
  const Row* row = nthRow(entries, n, [&](const Row& r) { return cellEquals(r, key, value); });
  return row != nullptr ? *row : Row{};
}

GDB::Row GDB::getEntry(const std::string& key1, std::string_view value1, const std::string& key2,
                       std::string_view value2, std::int32_t n) const {
  const Row* row = nthRow(
      entries, n, [&](const Row& r) { return cellEquals(r, key1, value1) && cellEquals(r, key2, value2); });
  return row != nullptr ? *row : Row{};
}

const GDB::Row* GDB::findRow(const std::string& key, std::string_view value) const {
  return nthRow(entries, 1, [&](const Row& r) { return cellEquals(r, key, value); });
}

const GDB::Row* GDB::findRow(const std::string& key1, std::string_view value1, const std::string& key2,
                             std::string_view value2) const {
  return nthRow(entries, 1,
                [&](const Row& r) { return cellEquals(r, key1, value1) && cellEquals(r, key2, value2); });
}

const std::string& GDB::cell(const Row& row, const std::string& name) {
  static const std::string kEmpty;
  const auto it = row.find(name);
  return it == row.end() ? kEmpty : it->second;
}

void GDB::addRemark(std::string_view text) {
  remarks.emplace_back(text);
}

void GDB::setData(std::string_view key, std::string_view value) {
  std::string entry(key);
  entry += ' ';
  entry += value;
  dataLines.push_back(std::move(entry));
}

std::string GDB::getData(std::string_view key) const {
  std::string values;
  for (const std::string& entry : dataLines) {
    const std::size_t blank = std::min(entry.find(' '), entry.size());
    if (text::upper(std::string_view(entry).substr(0, blank)) != key) continue;
    values += ' ';
    values += tailFrom(entry, blank + 1);
  }
  return values;
}

bool GDB::checkFormat(std::string_view format) {
  return text::checkFormat(format);
}

std::string GDB::simplifyWhiteSpace(std::string_view s) {
  return text::simplifyWhiteSpace(s);
}

std::vector<std::string> GDB::split(std::string_view separator, std::string_view s) {
  return text::split(separator, s);
}
