// What the pre-screen reads of the database: box and unbroken reach of every entry, and the sources in order.
#include "search/screen_index.h"

#include <algorithm>
#include <array>

#include "base/maps.h"
#include "search/database_image.h"

ScreenIndex::ScreenIndex(const DB& db, const SourceRanges& ranges) {
  for (int p = 1; p < ranges.count; ++p) {
    const int first = std::max(valueOr(ranges.first, p), 0);
    const int last = std::min(valueOr(ranges.last, p, -1), db.entryCount - 1);
    if (first <= last) sources.push_back({first, last});
  }
  if (db.screenKeys != nullptr) {
    keys = {db.screenKeys->keys.get(), toIndex(db.entryCount)};
    codes = db.screenKeys->codes;
    hasOtherCodes = db.screenKeys->hasOtherCodes;
  } else {
    makeKeys(db);
    for (const Source& source : sources) addReach(db, source);
    keys = made_;
  }
  countGroups();
  if (db.screenKeys != nullptr) {
    places = placesInImage(db);
  } else {
    makePlaces();
    places = madePlaces_;
  }
}

namespace {

std::size_t groupOf(std::uint16_t key) {
  return (key & ScreenIndex::kBoxMask) * ScreenIndex::kCodeNumbers +
         static_cast<std::size_t>(key >> ScreenIndex::kCodeShift);
}

}  // namespace

void ScreenIndex::countGroups() {
  groupStart.assign((kBoxMask + 1) * kCodeNumbers + 1, 0);
  for (const std::uint16_t key : keys) ++groupStart[groupOf(key) + 1];
  for (std::size_t g = 1; g < groupStart.size(); ++g) groupStart[g] += groupStart[g - 1];
}

void ScreenIndex::makePlaces() {
  std::vector<std::uint32_t> next = groupStart;
  madePlaces_.resize(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    Place& place = madePlaces_[next[groupOf(keys[i])]++];
    const auto steps = static_cast<std::uint32_t>(reach(keys[i]));
    place.entryAndReach = static_cast<std::uint32_t>(i) | steps << Place::kEntryBits;
    if (steps == 0) continue;
    place.before = keys[i - 1];
    place.after = keys[i + 1];
  }
}

/// Boxes and numbers of the residue codes.
void ScreenIndex::makeKeys(const DB& db) {
  made_.resize(toIndex(db.entryCount));
  std::array<int, 256> numbers{};  // from 1
  for (std::size_t i = 0; i < made_.size(); ++i) {
    int& number = numbers[static_cast<unsigned char>(db.dbResName[i])];
    if (number == 0) {
      if (codes.size() < kCommonCodes) {
        codes.push_back(db.dbResName[i]);
        number = static_cast<int>(codes.size());
      } else {
        hasOtherCodes = true;
        number = static_cast<int>(kCommonCodes) + 1;
      }
    }
    const auto box = std::min<std::uint32_t>(db.dbClass[i], kNoBox);
    made_[i] = static_cast<std::uint16_t>(box | static_cast<std::uint32_t>(number - 1) << kCodeShift);
  }
}

void ScreenIndex::addReach(const DB& db, const Source& source) {
  const auto [first, last] = source;
  // Residue numbers are unsigned and negative ones wrap; steps are taken modulo 2^32.
  const auto follows = [&](int i) { return db.dbResid[toIndex(i)] - db.dbResid[toIndex(i - 1)] == 1; };
  std::vector<int> back(toIndex(last - first) + 1);
  for (int i = first + 1; i <= last; ++i) {
    if (follows(i)) back[toIndex(i - first)] = std::min(back[toIndex(i - first - 1)] + 1, kMaxHalfWidth);
  }
  int ahead = 0;
  for (int i = last; i >= first; --i) {
    ahead = i < last && follows(i + 1) ? std::min(ahead + 1, kMaxHalfWidth) : 0;
    const int reach = std::min(ahead, back[toIndex(i - first)]);
    made_[toIndex(i)] = static_cast<std::uint16_t>(made_[toIndex(i)] | reach << kReachShift);
  }
}

int ScreenIndex::endOfSource(int entry) const {
  const auto source = std::lower_bound(sources.begin(), sources.end(), entry,
                                       [](const Source& s, int i) { return s.last < i; });
  return source == sources.end() ? entry : source->last;
}
