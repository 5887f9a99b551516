// The triplet library: secondary shifts of residue triplets observed in known structures.
#include "shifts/triplet_library.h"

#include "tables/GDB.h"
#include "tables/text.h"

std::string tripletKey(const std::string& item, int p) {
  return item + "_R" + std::to_string(p);
}

TripletLibrary readTripletLibrary(const std::string& file, const std::map<int, std::string>& atomNames) {
  const GDB table(file);
  TripletLibrary library;
  std::map<std::string, int> ids;
  for (const auto& [number, row] : table.entries) {
    for (int p = 1; p <= 3; ++p) {
      for (const auto& [position, atom] : atomNames) {
        const double value = text::toDouble(GDB::cell(row, tripletKey(atom, p)));
        library.values[static_cast<std::size_t>((p - 1) * 6 + position - 1)].push_back(value);
        if (p == 2) library.centre[static_cast<std::size_t>(position - 1)].push_back(value);
      }
      const std::string& name = GDB::cell(row, tripletKey("RESNAME", p));
      const auto [id, isNew] = ids.try_emplace(name, static_cast<int>(ids.size()));
      if (isNew) library.names.push_back(name);
      library.nameIds[static_cast<std::size_t>(p - 1)].push_back(id->second);
    }
    library.sources.push_back(GDB::cell(row, "SOURCE"));
    ++library.rows;
  }
  return library;
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
