// Reading of the fragment database into flat arrays.
#include "tables/DB.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <system_error>

#include "tables/LineReader.h"
#include "tables/text.h"

namespace {

constexpr float kNoAngle = 9999.0F;

/// One line of the database; the initial values are those of fields that a line lacks.
struct Record {
  std::string_view source;
  char resName = 'X';
  std::uint32_t resid = 0, boxClass = 0;
  std::array<float, DB::kAnglesPerEntry> angles{kNoAngle, kNoAngle, kNoAngle};
  std::array<float, DB::kShiftsPerEntry> shifts{};
};

/// Reads the fields of well-formed records. Each reader says false for every spelling on which it could
/// differ from the formatted scan, which then decides.
class FieldCursor {
 public:
  explicit FieldCursor(std::string_view line) : p(line.data()), end(p + line.size()) {}

  std::string_view token() {
    skipSpace();
    const char* const start = p;
    while (p != end && !text::isSpace(*p)) ++p;
    return {start, static_cast<std::size_t>(p - start)};
  }
  bool character(char& value) {
    skipSpace();
    if (p == end) return false;
    value = *p++;
    return true;
  }
  bool number(std::uint32_t& value) {
    skipSpace();
    const bool negative = p != end && *p == '-';
    if (negative) ++p;
    const char* const start = p;
    const auto result = std::from_chars(p, end, value);
    p = result.ptr;
    if (negative) value = 0U - value;
    return result.ec == std::errc{} && p != start && atFieldEnd();
  }
  bool number(float& value) {
    skipSpace();
    const char* const first = p != end && *p == '-' ? p + 1 : p;
    if (first == end || !((*first >= '0' && *first <= '9') || *first == '.')) return false;
    const auto result = std::from_chars(p, end, value);  // one rounding, as strtof
    p = result.ptr;
    return result.ec == std::errc{} && atFieldEnd() && std::isfinite(value);
  }
  std::string_view rest() const { return {p, static_cast<std::size_t>(end - p)}; }

 private:
  void skipSpace() {
    while (p != end && text::isSpace(*p)) ++p;
  }
  bool atFieldEnd() const { return p == end || text::isSpace(*p); }

  const char* p;
  const char* end;
};

bool parseFast(FieldCursor fields, Record& record) {
  if (!fields.character(record.resName) || !fields.number(record.resid)) return false;
  for (float& angle : record.angles) {
    if (!fields.number(angle)) return false;
  }
  if (!fields.number(record.boxClass)) return false;
  for (float& shift : record.shifts) {
    if (!fields.number(shift)) return false;
  }
  return true;
}

/// Values that are not finite would spoil every score they enter: they count as missing.
bool dropNonFinite(Record& record) {
  bool dropped = false;
  for (float& angle : record.angles) {
    if (std::isfinite(angle)) continue;
    angle = kNoAngle;
    dropped = true;
  }
  for (std::size_t i = 0; i < record.shifts.size(); i += 2) {
    if (std::isfinite(record.shifts[i]) && std::isfinite(record.shifts[i + 1])) continue;
    record.shifts[i] = record.shifts[i + 1] = 0.0F;
    dropped = true;
  }
  return dropped;
}

/// The formatted scan of all fields after the source; false when a field is missing.
bool parseScan(std::string_view fields, Record& record) {
  const std::string copy(fields);
  auto& a = record.angles;
  auto& s = record.shifts;
  // sscanf is the definition of what a field may look like (signs, hexadecimal, glued fields).
  const int converted = std::sscanf(  // NOLINT(cert-err34-c)
      copy.c_str(), " %c %u %f %f %f %u %f %f %f %f %f %f %f %f %f %f %f %f ", &record.resName, &record.resid,
      &a[0], &a[1], &a[2], &record.boxClass, &s[0], &s[1], &s[2], &s[3], &s[4], &s[5], &s[6], &s[7], &s[8],
      &s[9], &s[10], &s[11]);
  const bool dropped = dropNonFinite(record);
  return converted == 18 && !dropped;
}

/// Fills `record` from a line; false when a field is missing or does not convert.
bool parseRecord(std::string_view line, Record& record) {
  line = line.substr(0, line.find('\0'));
  FieldCursor fields(line);
  const std::string_view source = fields.token();
  record = {};
  record.source = source;
  if (parseFast(fields, record)) return true;
  record = {};
  record.source = source;
  return parseScan(fields.rest(), record);
}

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

void append(DB& db, const Record& record) {
  const auto i = static_cast<std::size_t>(db.entryCount);
  std::copy(record.shifts.begin(), record.shifts.end(), db.dbShifts.get() + i * DB::kShiftsPerEntry);
  std::copy(record.angles.begin(), record.angles.end(), db.dbAngles.get() + i * DB::kAnglesPerEntry);
  db.dbResid[i] = record.resid;
  db.dbClass[i] = record.boxClass;
  db.dbResName[i] = record.resName;
  if (db.sourceNames.empty() || db.sourceNames.back() != record.source) {
    db.sourceNames.emplace_back(record.source);
  }
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
  Record record;
  std::string_view line;
  while (!moreRecords && reader.next(line)) {
    if (!isRecordLine(line)) continue;
    moreRecords = entryCount >= maxDBSize;
    if (moreRecords) continue;
    if (!parseRecord(line, record) && incompleteRecords++ == 0) firstIncompleteLine = reader.lineNumber();
    append(*this, record);
  }
  if (moreRecords) {
    std::cerr << "Warning:: Database " << path << "is larger than the allocated (" << maxDBSize
              << "), not all entries are read!" << std::endl;
  }
}
