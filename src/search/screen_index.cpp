// What the pre-screen reads of the database: box and unbroken reach of every entry, and the sources in order.
#include "search/screen_index.h"

#include <algorithm>
#include <array>

#include "base/maps.h"

ScreenIndex::ScreenIndex(const DB& db, const SourceRanges& ranges) {
  keys.resize(toIndex(db.entryCount));
  std::array<int, 256> numbers{};  // from 1
  for (std::size_t i = 0; i < keys.size(); ++i) {
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
    keys[i] = static_cast<std::uint16_t>(box | static_cast<std::uint32_t>(number - 1) << kCodeShift);
  }
  std::vector<int> back;
  for (int p = 1; p < ranges.count; ++p) {
    const int first = std::max(valueOr(ranges.first, p), 0);
    const int last = std::min(valueOr(ranges.last, p, -1), db.entryCount - 1);
    if (last < first) continue;
    sources.push_back({first, last});
    // Residue numbers are unsigned and negative ones wrap; steps are taken modulo 2^32.
    const auto follows = [&](int i) { return db.dbResid[toIndex(i)] - db.dbResid[toIndex(i - 1)] == 1; };
    back.assign(toIndex(last - first) + 1, 0);
    for (int i = first + 1; i <= last; ++i) {
      if (follows(i)) back[toIndex(i - first)] = std::min(back[toIndex(i - first - 1)] + 1, kMaxHalfWidth);
    }
    int ahead = 0;
    for (int i = last; i >= first; --i) {
      ahead = i < last && follows(i + 1) ? std::min(ahead + 1, kMaxHalfWidth) : 0;
      const int reach = std::min(ahead, back[toIndex(i - first)]);
      keys[toIndex(i)] = static_cast<std::uint16_t>(keys[toIndex(i)] | reach << kReachShift);
    }
  }
}

int ScreenIndex::endOfSource(int entry) const {
  const auto source = std::lower_bound(sources.begin(), sources.end(), entry,
                                       [](const Source& s, int i) { return s.last < i; });
  return source == sources.end() ? entry : source->last;
}
