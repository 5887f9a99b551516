// Trimming and cutting of the search's candidate lists.
#pragma once

#include <cstddef>
#include <iterator>
#include <map>

/// Search candidates: ascending score or distance -> database entry; an equal key replaces the entry.
using CandidateMap = std::map<double, int>;

inline constexpr std::size_t kMatchesKept = 25;  ///< matches of a residue
inline constexpr std::size_t kMatchesCut = 26;   ///< a longer list is cut to one more than is kept

/// Removes the lowest keys until `limit` remain and sets `threshold` to the lowest key left. A list of at
/// most `limit` entries stays as it is, and so does the threshold.
inline void trimToHighest(CandidateMap& candidates, std::size_t limit, double& threshold) {
  if (candidates.size() <= limit) return;
  const auto excess = static_cast<std::ptrdiff_t>(candidates.size() - limit);
  candidates.erase(candidates.begin(), std::next(candidates.begin(), excess));
  threshold = candidates.begin()->first;
}

/// The `kept` smallest keys of a list longer than `limit`; a shorter list whole.
inline CandidateMap cutToSmallest(const CandidateMap& candidates, std::size_t limit, std::size_t kept) {
  if (candidates.size() <= limit) return candidates;
  return {candidates.begin(), std::next(candidates.begin(), static_cast<std::ptrdiff_t>(kept))};
}

/// The `kept` highest keys of a list longer than `limit`; a shorter list whole.
inline CandidateMap cutToHighest(const CandidateMap& candidates, std::size_t limit, std::size_t kept) {
  if (candidates.size() <= limit) return candidates;
  return {std::prev(candidates.end(), static_cast<std::ptrdiff_t>(kept)), candidates.end()};
}

/// Key of the `rank`-th entry counted from the highest key, of the lowest one in a shorter list; 0 for none.
inline double keyFromTop(const CandidateMap& candidates, std::size_t rank) {
  if (candidates.empty()) return 0.0;
  if (candidates.size() < rank) return candidates.begin()->first;
  return std::prev(candidates.end(), static_cast<std::ptrdiff_t>(rank))->first;
}

/// Centre entry -> key of a candidate list.
inline std::map<int, double> keysByEntry(const CandidateMap& candidates) {
  std::map<int, double> keys;
  for (const auto& [key, entry] : candidates) keys[entry] = key;
  return keys;
}
