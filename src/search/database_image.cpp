// The fragment database in the table image, with the keys of the pre-screen.
#include "search/database_image.h"

#include <algorithm>

namespace {

struct DatabaseRecordCounts {
  std::uint64_t entries = 0, sources = 0, nameBytes = 0, codes = 0, hasOtherCodes = 0;
  std::int64_t incompleteRecords = 0, firstIncompleteLine = 0;
};

struct SourceRecord {
  std::int32_t first = 0;
  std::uint32_t nameBytes = 0;
};

bool decodeSources(image::PartReader& guide, const DatabaseRecordCounts& counts, DB& db) {
  const auto records = guide.array<SourceRecord>(counts.sources);
  const auto names = guide.array<char>(counts.nameBytes);
  std::size_t next = 0;
  std::int32_t after = 0;  // the first source starts at entry 0
  for (const SourceRecord& record : records) {
    const bool inOrder = db.dbSource.empty() ? record.first == 0 : record.first >= after;
    if (!inOrder || record.first >= db.entryCount || record.nameBytes > names.size() - next) return false;
    db.dbSource.push_back({record.first, std::string(names.data() + next, record.nameBytes)});
    next += record.nameBytes;
    after = record.first + 1;
  }
  return guide.ok() && !db.dbSource.empty();
}

/// No fragment may reach beyond the database.
bool staysInside(std::span<const std::uint16_t> keys) {
  const auto fits = [&](std::size_t i) {
    const auto reach = static_cast<std::size_t>(ScreenIndex::reach(keys[i]));
    return reach <= i && reach <= keys.size() - 1 - i;
  };
  for (std::size_t i = 0; i < std::min<std::size_t>(keys.size(), kMaxHalfWidth); ++i) {
    if (!fits(i) || !fits(keys.size() - 1 - i)) return false;
  }
  return true;
}

template <class T>
std::shared_ptr<const T[]> arrayIn(const std::shared_ptr<const void>& owner, std::span<const T> values) {
  return {owner, values.data()};
}

}  // namespace

image::Parts encodeDatabase(const DB& db, const ScreenIndex& index) {
  const auto n = static_cast<std::size_t>(db.entryCount);
  DatabaseRecordCounts counts{n,
                              db.dbSource.size(),
                              0,
                              index.codes.size(),
                              index.hasOtherCodes ? 1U : 0U,
                              db.incompleteRecords,
                              db.firstIncompleteLine};
  std::vector<SourceRecord> records;
  std::string names;
  for (const DB::Source& source : db.dbSource) {
    records.push_back({source.first, static_cast<std::uint32_t>(source.name.size())});
    names += source.name;
  }
  counts.nameBytes = names.size();
  image::Parts parts;
  image::appendValue(parts.guide, counts);
  image::appendArray(parts.guide, std::span<const SourceRecord>(records));
  image::appendArray(parts.guide, std::span<const char>(names));
  image::appendArray(parts.guide, std::span<const char>(index.codes));
  image::appendArray(parts.guide, index.keys);
  image::appendArray(parts.guide, std::span(db.dbResName.get(), n));
  image::appendArray(parts.bulk, std::span(db.dbShifts.get(), n * DB::kShiftsPerEntry));
  image::appendArray(parts.bulk, std::span(db.dbAngles.get(), n * DB::kAnglesPerEntry));
  image::appendArray(parts.bulk, std::span(db.dbResid.get(), n));
  image::appendArray(parts.bulk, index.places);  // last: see placesInImage
  return parts;
}

bool decodeDatabase(const image::ImagedTable& table, DB& db) {
  image::PartReader guide(table.guide), bulk(table.bulk.bytes);
  const auto counts = guide.value<DatabaseRecordCounts>();
  if (counts.entries == 0 || counts.entries > static_cast<std::uint64_t>(std::max(db.maxDBSize, 0)))
    return false;
  const auto n = static_cast<std::size_t>(counts.entries);
  db.entryCount = static_cast<std::int32_t>(n);
  db.incompleteRecords = counts.incompleteRecords;
  db.firstIncompleteLine = counts.firstIncompleteLine;
  db.dbSource.clear();
  if (!decodeSources(guide, counts, db)) return false;
  const auto codes = guide.array<char>(counts.codes);
  const auto keys = guide.array<std::uint16_t>(n);
  const auto resNames = guide.array<char>(n);
  const auto shifts = bulk.array<float>(n * DB::kShiftsPerEntry);
  const auto angles = bulk.array<float>(n * DB::kAnglesPerEntry);
  const auto resid = bulk.array<std::uint32_t>(n);
  const auto places = bulk.array<ScreenIndex::Place>(n);
  const bool placesAtEnd = places.empty() || std::as_bytes(places).data() + places.size_bytes() ==
                                                 table.bulk.bytes.data() + table.bulk.bytes.size();
  if (!guide.ok() || !bulk.ok() || !placesAtEnd || codes.size() > ScreenIndex::kCommonCodes ||
      !staysInside(keys))
    return false;
  db.screenKeys = std::make_shared<DB::ScreenKeys>(DB::ScreenKeys{
      {codes.begin(), codes.end()}, arrayIn(table.guideOwner, keys), counts.hasOtherCodes != 0});
  db.dbResName = arrayIn(table.guideOwner, resNames);
  db.dbShifts = arrayIn(table.bulk.owner, shifts);
  db.dbAngles = arrayIn(table.bulk.owner, angles);
  db.dbResid = arrayIn(table.bulk.owner, resid);
  db.dbClass = nullptr;
  db.imaged = table.bulk;
  return true;
}

std::span<const ScreenIndex::Place> placesInImage(const DB& db) {
  const auto n = static_cast<std::size_t>(db.entryCount);
  const auto bytes = db.imaged.bytes.last(n * sizeof(ScreenIndex::Place));
  return {reinterpret_cast<const ScreenIndex::Place*>(bytes.data()), n};
}

bool loadDatabaseImage(DB& db, const std::string& path, image::Bulk use) {
  const auto table = TableImage(path).find(path, image::Kind::Database, use);
  if (!table || !decodeDatabase(*table, db)) return false;
  db.dbFileName = path;
  return true;
}
