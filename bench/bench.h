// Shared by the benchmarks: the full-size installation and checksums of results.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace bench {

/// FNV-1a over the bytes of whatever is added; shown as a counter, so that a faster but different result
/// shows.
class Checksum {
 public:
  void add(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) hash_ = (hash_ ^ bytes[i]) * 1099511628211ULL;
  }
  template <class Number>
  void addNumber(Number value) {
    add(&value, sizeof value);
  }
  void addText(const std::string& text) { add(text.data(), text.size()); }
  /// Six decimal digits, exact in the report's number format.
  void report(benchmark::State& state) const {
    state.counters["checksum"] = static_cast<double>(hash_ % 1000000);
  }

 private:
  std::uint64_t hash_ = 14695981039346656037ULL;
};

/// Folder of the full-size synthetic installation.
inline const char* fullSize() {
  return ORBELN_FULL_SIZE;
}

}  // namespace bench
