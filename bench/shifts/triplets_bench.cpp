// Triplet averaging: one query against 24,000 library rows, kernel and definition.
#include <filesystem>

#include "bench.h"
#include "shifts/plain_triplets.h"
#include "shifts/triplet_library.h"

namespace {

struct Setup {
  Setup()
      : triplets(readTripletLibrary(std::string(bench::fullSize()) + "/tab/orbel_obsCS.tab",
                                    {{1, "N"}, {2, "HA"}, {3, "C"}, {4, "CA"}, {5, "CB"}, {6, "HN"}})) {
    for (std::size_t i = 0; i < query.shifts.size(); ++i)
      query.shifts[i] = i % 5 == 0 ? 9999.0F : 0.3F * float(i);
    for (auto& row : query.homology) row.assign(triplets.names.size(), 1.5);
    for (auto& row : ring) row.fill(0.7);
    atoms.fill(1.2);
    scale.fill(0.2);
  }
  TripletLibrary triplets;
  TripletQuery query;
  std::array<std::array<double, 7>, 4> ring{};
  std::array<double, 7> atoms{};
  std::array<double, 4> scale{};
};

const Setup& setup() {
  static const Setup kSetup;
  return kSetup;
}

void finish(benchmark::State& state, const std::vector<float>& distances) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(distances.size()));
  bench::Checksum checksum;
  checksum.add(distances.data(), sizeof(float) * distances.size());
  checksum.report(state);
}

void tripletLibrary(benchmark::State& state) {
  const std::string file = std::string(bench::fullSize()) + "/tab/orbel_obsCS.tab";
  TripletLibrary read;
  for ([[maybe_unused]] auto _ : state)
    read = readTripletLibrary(file, {{1, "N"}, {2, "HA"}, {3, "C"}, {4, "CA"}, {5, "CB"}, {6, "HN"}});
  state.SetItemsProcessed(state.iterations() * read.rows);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(file)));
  bench::Checksum checksum;
  for (const auto& column : read.values) checksum.add(column.data(), sizeof(double) * column.size());
  checksum.report(state);
}
BENCHMARK(tripletLibrary)->Unit(benchmark::kMillisecond);

void tripletDistance(benchmark::State& state) {
  const Setup& s = setup();
  std::vector<float> distances;
  for ([[maybe_unused]] auto _ : state)
    distances = tripletDistances(s.triplets, s.query, s.ring, s.atoms, s.scale);
  finish(state, distances);
}
BENCHMARK(tripletDistance)->Unit(benchmark::kMicrosecond);

void tripletDistancePlain(benchmark::State& state) {
  const Setup& s = setup();
  std::vector<float> distances(static_cast<std::size_t>(s.triplets.rows));
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t row = 0; row < distances.size(); ++row) {
      distances[row] = support::plainDistance(s.triplets, row, s.query, s.ring, s.atoms, s.scale);
    }
  }
  finish(state, distances);
}
BENCHMARK(tripletDistancePlain)->Unit(benchmark::kMicrosecond);

}  // namespace
