// The triplet library in the table image.
#include "shifts/triplet_image.h"

#include <algorithm>
#include <cstdint>

namespace {

struct LibraryRecord {
  std::uint64_t rows = 0, names = 0, nameBytes = 0, sources = 0, sourceBytes = 0;
};

/// A text, and how many rows have it (1 for the names of residues).
struct TextRecord {
  std::uint32_t bytes = 0, rows = 1;
};

/// Runs of equal texts.
struct Texts {
  std::vector<TextRecord> records;
  std::string letters;

  void add(const std::string& text) {
    records.push_back({static_cast<std::uint32_t>(text.size()), 1});
    letters += text;
  }
};

/// The texts, each as often as its record says; more than `limit` are not made.
std::vector<std::string> readTexts(std::span<const TextRecord> records, std::span<const char> letters,
                                   std::size_t limit) {
  std::vector<std::string> texts;
  std::size_t next = 0;
  for (const TextRecord& record : records) {
    if (record.bytes > letters.size() - next || record.rows > limit - texts.size()) return {};
    texts.insert(texts.end(), record.rows, std::string(letters.data() + next, record.bytes));
    next += record.bytes;
  }
  return texts;
}

}  // namespace

image::Parts encodeTriplets(const TripletLibrary& library) {
  Texts names, sources;
  for (const std::string& name : library.names) names.add(name);
  const std::string* previous = nullptr;
  for (const std::string& source : library.sources) {
    if (previous != nullptr && *previous == source) {
      ++sources.records.back().rows;
    } else {
      sources.add(source);
    }
    previous = &source;
  }
  image::Parts parts;
  image::appendValue(parts.guide,
                     LibraryRecord{static_cast<std::uint64_t>(library.rows), names.records.size(),
                                   names.letters.size(), sources.records.size(), sources.letters.size()});
  for (const Texts* texts : {&names, &sources}) {
    image::appendArray(parts.guide, std::span<const TextRecord>(texts->records));
    image::appendArray(parts.guide, std::span<const char>(texts->letters));
  }
  for (const std::vector<int>& ids : library.nameIds) image::appendArray(parts.guide, std::span(ids));
  for (const auto& column : library.values) image::appendArray(parts.bulk, std::span(column));
  return parts;
}

std::optional<TripletLibrary> decodeTriplets(const image::ImagedTable& table) {
  image::PartReader guide(table.guide), bulk(table.bulk.bytes);
  const auto record = guide.value<LibraryRecord>();
  TripletLibrary library;
  const auto nameRecords = guide.array<TextRecord>(record.names);
  const auto names = guide.array<char>(record.nameBytes);
  const auto sourceRecords = guide.array<TextRecord>(record.sources);
  const auto sources = guide.array<char>(record.sourceBytes);
  for (std::vector<int>& ids : library.nameIds) {
    const auto found = guide.array<int>(record.rows);
    const auto isName = [&](int id) { return id >= 0 && static_cast<std::uint64_t>(id) < record.names; };
    if (!std::all_of(found.begin(), found.end(), isName)) return std::nullopt;
    ids.assign(found.begin(), found.end());
  }
  for (std::size_t i = 0; i < library.values.size(); ++i) {
    const auto column = bulk.array<double>(record.rows);
    library.values[i].assign(column.begin(), column.end());
    if (i / 6 == 1) library.centre[i % 6] = library.values[i];
  }
  if (!guide.ok() || !bulk.ok() || !table.bulk.intact()) return std::nullopt;
  library.rows = static_cast<int>(record.rows);
  library.names = readTexts(nameRecords, names, record.names);
  library.sources = readTexts(sourceRecords, sources, record.rows);
  if (library.names.size() != record.names || library.sources.size() != record.rows) return std::nullopt;
  return library;
}

std::optional<TripletLibrary> loadTripletImage(const std::string& file) {
  const auto table = TableImage(file).find(file, image::Kind::Triplets);
  return table ? decodeTriplets(*table) : std::nullopt;
}
