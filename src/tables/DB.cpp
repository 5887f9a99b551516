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

void allocate(DB& db, std::size_t n) {
  // Left uninitialised on purpose: pages beyond the last entry are never touched and cost no memory.
  db.dbShifts = std::make_unique_for_overwrite<float[]>(n * DB::kShiftsPerEntry);
  db.dbAngles = std::make_unique_for_overwrite<float[]>(n * DB::kAnglesPerEntry);
  db.dbResid = std::make_unique_for_overwrite<std::uint32_t[]>(n);
  db.dbClass = std::make_unique_for_overwrite<std::uint32_t[]>(n);
  db.dbResName = std::make_unique_for_overwrite<char[]>(n);
  db.dbSource = std::make_unique_for_overwrite<const std::string*[]>(n);
}

void release(DB& db) {
  db.entryCount = 0;
  db.sourceNames.clear();
  db.dbShifts.reset();
  db.dbAngles.reset();
  db.dbResid.reset();
  db.dbClass.reset();
  db.dbResName.reset();
  db.dbSource.reset();
}

void append(DB& db, const DatabaseRecord& record) {
  const auto i = static_cast<std::size_t>(db.entryCount);
  std::copy(record.shifts.begin(), record.shifts.end(), db.dbShifts.get() + i * DB::kShiftsPerEntry);
  std::copy(record.angles.begin(), record.angles.end(), db.dbAngles.get() + i * DB::kAnglesPerEntry);
  db.dbResid[i] = record.resid;
  db.dbClass[i] = record.boxClass;
  db.dbResName[i] = record.resName;
  const bool sameSource = !db.sourceNames.empty() && (db.sourceNames.back().data() == record.source.data() ||
                                                      db.sourceNames.back() == record.source);
  if (!sameSource) db.sourceNames.emplace_back(record.source);
  db.dbSource[i] = &db.sourceNames.back();  // a deque never moves its elements
  ++db.entryCount;
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
  allocate(*this, static_cast<std::size_t>(std::max(maxDBSize, 0)));
  incompleteRecords = firstIncompleteLine = 0;
  bool moreRecords = false;
  DatabaseRecord record;
  std::string_view line;
  while (!moreRecords && reader.next(line)) {
    if (!isRecordLine(line)) continue;
    moreRecords = entryCount >= maxDBSize;
    if (moreRecords) continue;
    const std::string_view previous = sourceNames.empty() ? std::string_view() : sourceNames.back();
    if (!record.parse(line, previous) && incompleteRecords++ == 0) firstIncompleteLine = reader.lineNumber();
    append(*this, record);
  }
  if (moreRecords) {
    std::cerr << "Warning:: Database " << path << "is larger than the allocated (" << maxDBSize
              << "), not all entries are read!" << std::endl;
  }
}
