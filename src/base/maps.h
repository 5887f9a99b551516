// Look-ups in per-residue maps that never insert.
#pragma once

#include <map>

/// The value stored under `key`, else `fallback`.
template <class Map>
typename Map::mapped_type valueOr(const Map& map, const typename Map::key_type& key,
                                  typename Map::mapped_type fallback = {}) {
  const auto it = map.find(key);
  return it == map.end() ? fallback : it->second;
}

/// Pointer to the value stored under `key`, or nullptr.
template <class Map>
const typename Map::mapped_type* findValue(const Map& map, const typename Map::key_type& key) {
  const auto it = map.find(key);
  return it == map.end() ? nullptr : &it->second;
}
