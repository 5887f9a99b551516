// Pre-screen and ranking of one query residue on the full-size database, kernel and plain rendering.
#include <random>

#include "bench.h"
#include "search/fragment_distance.h"
#include "search/plain_prescreen.h"
#include "search/prescreen.h"

namespace {

/// A query of 15 residues whose maps favour helix, strand or nothing in turn.
const ORBEL& setup() {
  static const ORBEL* const kRun = [] {
    auto* run = new ORBEL;
    run->hidePaths = run->quiet = true;
    run->databaseFile = std::string(bench::fullSize()) + "/tab/orbel.tab";
    run->loadDatabase();
    run->buildSourceIndex();
    const GDB blosum(std::string(bench::fullSize()) + "/tab/BLOSUM62.tab");
    for (const auto& [number, row] : blosum.entries) {
      for (const auto& [column, cell] : row) {
        if (column.size() == 1) run->blosumMatrix[row.at("RESNAME")[0]][column[0]] = std::stod(cell);
      }
    }
    run->firstResidOption = 1;
    run->lastResidOption = 15;
    std::mt19937 random(3);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int r = 1; r <= 15; ++r) {
      run->residueCode[r] = "KLEAVDTIRSGNFQY"[r - 1];
      run->secondaryShift.push_back({unit(random), 0.1, unit(random), unit(random), unit(random), 0.1});
      for (int box = 0; box < kPhiPsiBoxes; ++box) run->searchPrior[r][box] = -9.99;
      const int centre = r % 3 == 0 ? boxAt(3, 15) : boxAt(5, 6);
      for (int phi = -2; phi <= 2; ++phi) {
        for (int psi = -2; psi <= 2; ++psi)
          run->searchPrior[r][centre + boxAt(phi, psi)] = 0.9 * unit(random);
      }
    }
    return run;
  }();
  return *kRun;
}

constexpr int kResid = 8;

template <class Lists>
void finish(benchmark::State& state, const Lists& lists) {
  state.SetItemsProcessed(state.iterations() * setup().fragmentDatabase->entryCount);
  bench::Checksum checksum;
  for (const auto* list : {&lists.matches, &lists.sameType}) {
    for (const auto& [key, entry] : *list) {
      checksum.addNumber(key);
      checksum.addNumber(entry);
    }
  }
  checksum.report(state);
}

void prescreen(benchmark::State& state) {
  const ORBEL& run = setup();
  static const ScreenIndex kIndex(*run.fragmentDatabase, run.sourceRanges());
  search_test::Lists lists;
  for ([[maybe_unused]] auto _ : state) {
    Prescreen screen({kResid, kMaxHalfWidth, run.residueCode, run.searchPrior, run.blosumMatrix});
    screen.scan(*run.fragmentDatabase, kIndex);
    lists = {screen.matches, screen.sameType};
  }
  finish(state, lists);
}
BENCHMARK(prescreen)->Unit(benchmark::kMillisecond)->Iterations(20)->Repetitions(3);

void prescreenPlain(benchmark::State& state) {
  search_test::Lists lists;
  for ([[maybe_unused]] auto _ : state) lists = search_test::plainScreen(setup(), kResid);
  finish(state, lists);
}
BENCHMARK(prescreenPlain)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

void ranking(benchmark::State& state) {
  const ORBEL& run = setup();
  const FragmentDistance distance(run.shiftRows(), kResid);
  double sum = 0.0;
  for ([[maybe_unused]] auto _ : state) {
    sum = 0.0;
    for (int entry = 1000; entry < 2000; ++entry) sum += distance.weighted(*run.fragmentDatabase, entry, 3);
  }
  state.SetItemsProcessed(state.iterations() * 1000);
  bench::Checksum checksum;
  checksum.addNumber(sum);
  checksum.report(state);
}
BENCHMARK(ranking)->Unit(benchmark::kMicrosecond);

}  // namespace
