// Reading of the fragment database into flat arrays.
#include "tables/DB.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "tables/LineReader.h"
#include "tables/db_record.h"

namespace {

bool isRecordLine(std::string_view line) {
  return !line.empty() && line.front() != '#';
}

/// The arrays of a database while it is read.
struct Filling {
  // Left uninitialised on purpose: pages beyond the last entry are never touched and cost no memory.
  explicit Filling(std::size_t n)
      : shifts(new float[n * DB::kShiftsPerEntry]),
        angles(new float[n * DB::kAnglesPerEntry]),
        resid(new std::uint32_t[n]),
        boxClass(new std::uint32_t[n]),
        resName(new char[n]) {}

  void append(DB& db, const DatabaseRecord& record) {
    const auto i = static_cast<std::size_t>(db.entryCount);
    std::copy(record.shifts.begin(), record.shifts.end(), shifts.get() + i * DB::kShiftsPerEntry);
    std::copy(record.angles.begin(), record.angles.end(), angles.get() + i * DB::kAnglesPerEntry);
    resid[i] = record.resid;
    boxClass[i] = record.boxClass;
    resName[i] = record.resName;
    const bool sameSource = !db.dbSource.empty() && (record.source.data() == db.dbSource.back().name.data() ||
                                                     record.source == db.dbSource.back().name);
    if (!sameSource) db.dbSource.push_back({db.entryCount, std::string(record.source)});
    ++db.entryCount;
  }
  void handOver(DB& db) {
    db.dbShifts = std::move(shifts);
    db.dbAngles = std::move(angles);
    db.dbResid = std::move(resid);
    db.dbClass = std::move(boxClass);
    db.dbResName = std::move(resName);
  }

  std::shared_ptr<float[]> shifts, angles;
  std::shared_ptr<std::uint32_t[]> resid, boxClass;
  std::shared_ptr<char[]> resName;
};

void release(DB& db) {
  db.entryCount = 0;
  db.dbSource.clear();
  db.screenKeys.reset();
  db.imaged = {};
  Filling(0).handOver(db);
}

}  // namespace

void DB::loadDB(const std::string& path) {
  release(*this);
  dbFileName = path;
  LineReader reader(path);
  if (!reader.isOpen()) {
    std::cerr << "\tCan't open database file " << path << " for reading" << std::endl;
    std::exit(0);
  }
  Filling filling(static_cast<std::size_t>(std::max(maxDBSize, 0)));
  incompleteRecords = firstIncompleteLine = 0;
  bool moreRecords = false;
  DatabaseRecord record;
  std::string_view line;
  while (!moreRecords && reader.next(line)) {
    if (!isRecordLine(line)) continue;
    moreRecords = entryCount >= maxDBSize;
    if (moreRecords) continue;
    const std::string_view previous = dbSource.empty() ? std::string_view() : dbSource.back().name;
    if (!record.parse(line, previous) && incompleteRecords++ == 0) firstIncompleteLine = reader.lineNumber();
    filling.append(*this, record);
  }
  filling.handOver(*this);
  if (moreRecords) {
    std::cerr << "Warning:: Database " << path << "is larger than the allocated (" << maxDBSize
              << "), not all entries are read!" << std::endl;
  }
}

const std::string& DB::source(std::int32_t i) const {
  const auto after = std::upper_bound(dbSource.begin(), dbSource.end(), i,
                                      [](std::int32_t entry, const Source& s) { return entry < s.first; });
  return std::prev(after)->name;
}
