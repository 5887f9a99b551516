// The triplet library: secondary shifts of residue triplets observed in known structures.
#include "shifts/triplet_library.h"

#include <functional>
#include <string_view>

#include "base/maps.h"
#include "tables/GDB.h"
#include "tables/LineReader.h"
#include "tables/short_decimal.h"
#include "tables/text.h"

std::string tripletKey(const std::string& item, int p) {
  return item + "_R" + std::to_string(p);
}

namespace {

static_assert(LineReader::kPadding >= kShortDecimalPadding);

/// The number a cell of a table row holds; nearly all are short decimals.
double cellNumber(std::string_view cell) {
  const ShortDecimal decimal = scanShortDecimal(cell.data());
  return decimal.length == cell.size() ? decimal.toDouble() : text::toDouble(cell);
}

/// Collects the triplets from the rows of the library table.
class LibraryRows : public RowSink {
 public:
  explicit LibraryRows(const std::map<int, std::string>& atomNames) : atomNames_(atomNames) {}

  void redefine(const std::map<std::int32_t, std::string>& varNames) override {
    triplets = {};
    ids_.clear();
    std::map<std::string, std::size_t> columns;  // of columns with equal names the last one counts
    for (const auto& [index, name] : varNames) columns[name] = static_cast<std::size_t>(index);
    source_ = valueOr(columns, "SOURCE", kAbsent);
    for (int p = 1; p <= 3; ++p) {
      names_[static_cast<std::size_t>(p - 1)] = valueOr(columns, tripletKey("RESNAME", p), kAbsent);
      for (const auto& [position, atom] : atomNames_) {
        values_[static_cast<std::size_t>((p - 1) * static_cast<int>(kAtoms) + position - 1)] =
            valueOr(columns, tripletKey(atom, p), kAbsent);
      }
    }
  }

  void add(const std::vector<std::string_view>& cells) override {
    for (std::size_t i = 0; i < values_.size(); ++i) {
      const double value = values_[i] == kAbsent ? 0.0 : cellNumber(cells[values_[i]]);
      triplets.values[i].push_back(value);
      if (i / kAtoms == 1) triplets.centre[i % kAtoms].push_back(value);
    }
    for (std::size_t p = 0; p < names_.size(); ++p)
      triplets.nameIds[p].push_back(idOf(cell(cells, names_[p])));
    triplets.sources.emplace_back(cell(cells, source_));
    ++triplets.rows;
  }

  TripletLibrary triplets;

 private:
  static constexpr std::size_t kAbsent = static_cast<std::size_t>(-1);

  static std::string_view cell(const std::vector<std::string_view>& cells, std::size_t column) {
    return column == kAbsent ? std::string_view() : cells[column];
  }
  int idOf(std::string_view name) {
    const auto known = ids_.find(name);
    if (known != ids_.end()) return known->second;
    const int id = static_cast<int>(ids_.size());
    ids_.emplace(name, id);
    triplets.names.emplace_back(name);
    return id;
  }

  const std::map<int, std::string>& atomNames_;
  std::array<std::size_t, 3 * kAtoms> values_{};  // columns
  std::array<std::size_t, 3> names_{};
  std::size_t source_ = kAbsent;
  std::map<std::string, int, std::less<>> ids_;
};

}  // namespace

TripletLibrary readTripletLibrary(const std::string& file, const std::map<int, std::string>& atomNames) {
  LibraryRows rows(atomNames);
  GDB().loadGDB(file, rows);
  return std::move(rows.triplets);
}

void excludeSources(TripletLibrary& library, const std::string& exclusionList) {
  constexpr double kExcludedValue = 99.0;
  if (exclusionList.empty()) return;
  for (std::size_t row = 0; row < library.sources.size(); ++row) {
    const std::string& source = library.sources[row];
    if (source.empty() || exclusionList.find(source) == std::string::npos) continue;
    for (auto& column : library.values) column[row] = kExcludedValue;
  }
}
