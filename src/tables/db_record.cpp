// One line of the fragment database as numbers.
#include "tables/db_record.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>

#include "tables/LineReader.h"
#include "tables/short_decimal.h"
#include "tables/text.h"

namespace {

static_assert(LineReader::kPadding >= kShortDecimalPadding);

/// Reads the fields of well-formed records. Each reader says false for every spelling on which it could
/// differ from the formatted scan, which then decides.
class FieldCursor {
 public:
  explicit FieldCursor(std::string_view line) : p(line.data()), end(p + line.size()) {}

  std::string_view source(std::string_view previous) {
    const auto left = static_cast<std::size_t>(end - p);
    if (!previous.empty() && left > previous.size() && text::isSpace(p[previous.size()]) &&
        std::memcmp(p, previous.data(), previous.size()) == 0) {
      p += previous.size();
      return previous;
    }
    while (p != end && text::isSpace(*p)) ++p;
    const char* const start = p;
    while (p != end && !text::isSpace(*p)) ++p;
    return {start, static_cast<std::size_t>(p - start)};
  }
  bool character(char& value) {
    skipSpace();
    value = *p;
    if (p == end || value == '\0') return false;
    ++p;
    return true;
  }
  bool number(std::uint32_t& value) {
    skipSpace();
    const ShortDecimal decimal = scanShortDecimal(p);
    if (decimal.length == 0 || decimal.point || !text::isSpace(p[decimal.length])) return anyNumber(value);
    const auto magnitude = static_cast<std::uint32_t>(decimal.digits);
    value = decimal.negative ? 0U - magnitude : magnitude;
    p += decimal.length;
    return true;
  }
  bool number(float& value) {
    skipSpace();
    const ShortDecimal decimal = scanShortDecimal(p);
    if (decimal.length == 0 || !decimal.isExactInFloat() || !text::isSpace(p[decimal.length]))
      return anyNumber(value);
    value = decimal.toFloat();
    p += decimal.length;
    return true;
  }
  std::string_view rest() const { return {p, static_cast<std::size_t>(end - p)}; }

 private:
  /// Fields are nearly always one blank apart; the processor then need not wait for it.
  void skipSpace() {
    if (*p == ' ' && !text::isSpace(p[1])) [[likely]] {
      ++p;
      return;
    }
    while (p < end && text::isSpace(*p)) ++p;
  }
  bool anyNumber(std::uint32_t& value) {
    const bool negative = p != end && *p == '-';
    if (negative) ++p;
    const char* const start = p;
    const auto result = std::from_chars(p, end, value);
    p = result.ptr;
    if (negative) value = 0U - value;
    return result.ec == std::errc{} && p != start && atFieldEnd();
  }
  bool anyNumber(float& value) {
    const char* const first = p != end && *p == '-' ? p + 1 : p;
    if (first == end || !((*first >= '0' && *first <= '9') || *first == '.')) return false;
    const auto result = std::from_chars(p, end, value);  // one rounding, as strtof
    p = result.ptr;
    return result.ec == std::errc{} && atFieldEnd() && std::isfinite(value);
  }
  bool atFieldEnd() const { return p == end || text::isSpace(*p); }

  const char* p;
  const char* end;
};

template <std::size_t n>
bool readAll(FieldCursor& fields, std::array<float, n>& values) {
  for (float& value : values) {
    if (!fields.number(value)) return false;
  }
  return true;
}

/// Values that are not finite would spoil every score they enter: they count as missing.
bool dropNonFinite(DatabaseRecord& record) {
  bool dropped = false;
  for (float& angle : record.angles) {
    if (std::isfinite(angle)) continue;
    angle = DatabaseRecord::kNoAngle;
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
bool parseScan(std::string_view fields, DatabaseRecord& record) {
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

}  // namespace

bool DatabaseRecord::parse(std::string_view line, std::string_view previousSource) {
  FieldCursor fields(line);
  source = fields.source(previousSource);
  const bool plainSource =
      source.data() == previousSource.data() || source.find('\0') == std::string_view::npos;
  if (plainSource && fields.character(resName) && fields.number(resid) && readAll(fields, angles) &&
      fields.number(boxClass) && readAll(fields, shifts)) {
    return true;
  }
  // Every other spelling; a scanned line ends at its first null character.
  FieldCursor again(line.substr(0, line.find('\0')));
  *this = {};
  source = again.source({});
  return parseScan(again.rest(), *this);
}
