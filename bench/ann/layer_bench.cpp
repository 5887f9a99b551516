// One layer of the network engine for 76 residues, kernel and plain evaluation; clustering of a distribution.
#include <cmath>
#include <map>
#include <random>

#include "ann/SURFANN.h"
#include "ann/layer_kernel.h"
#include "ann/plain_layer.h"
#include "bench.h"
#include "driver/ORBEL.h"

namespace {

constexpr int kResidues = 76;

struct Layer {
  /// `density`: share of non-zero weights.
  Layer(int units, int inputs, double density) : weights(units, inputs) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> symmetric(-1.0, 1.0);
    for (int j = 0; j < units; ++j) {
      for (int i = 0; i < inputs; ++i) {
        const bool present = 0.5 * (symmetric(random) + 1.0) < density;
        weights.at(j, i) = present ? static_cast<float>(0.1 * symmetric(random)) : 0.0F;
        plain[j].push_back(static_cast<double>(weights.at(j, i)));
      }
      bias.push_back(symmetric(random));
    }
    weights.seal();
    x.resize(kResidues);
    for (auto& vector : x) {
      for (int i = 0; i < inputs; ++i) vector.push_back(symmetric(random));
    }
  }
  LayerWeights weights;
  std::map<int, std::vector<double>> plain;
  std::vector<double> bias;
  std::vector<std::vector<double>> x;
};

void finish(benchmark::State& state, const Layer& layer, const std::vector<std::vector<double>>& y) {
  state.SetItemsProcessed(state.iterations() * kResidues * layer.weights.rows * layer.weights.cols);
  bench::Checksum checksum;
  for (const auto& vector : y) checksum.add(vector.data(), sizeof(double) * vector.size());
  checksum.report(state);
}

void layer(benchmark::State& state) {
  const Layer made(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                   static_cast<double>(state.range(2)) / 1000.0);
  std::vector<std::vector<double>> y;
  for ([[maybe_unused]] auto _ : state) {
    y.assign(kResidues, {});
    evaluateLayer(made.weights, made.bias, made.x, y, kTanh);
  }
  finish(state, made, y);
}
// Units, inputs, density in thousandths: level 1 of the phi/psi network, level 2 dense and as installed.
BENCHMARK(layer)
    ->Args({180, 160, 1000})
    ->Args({1620, 1620, 1000})
    ->Args({1620, 1620, 15})
    ->Unit(benchmark::kMillisecond);

void layerPlain(benchmark::State& state) {
  const Layer made(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                   static_cast<double>(state.range(2)) / 1000.0);
  std::vector<std::vector<double>> y;
  for ([[maybe_unused]] auto _ : state) {
    y.assign(kResidues, {});
    for (std::size_t p = 0; p < y.size(); ++p) {
      for (std::size_t j = 0; j < made.bias.size(); ++j) {
        const double s = ann_test::plainSum(made.x[p], made.plain.at(static_cast<int>(j)), made.bias[j]);
        y[p].push_back(2.0 / (1.0 + std::exp(-2.0 * s)) - 1.0);
      }
    }
  }
  finish(state, made, y);
}
BENCHMARK(layerPlain)
    ->Args({180, 160, 1000})
    ->Args({1620, 1620, 1000})
    ->Args({1620, 1620, 15})
    ->Unit(benchmark::kMillisecond);

/// Level 1 of the phi/psi network: three members of three layers, 76 residues.
void networkLevel(benchmark::State& state) {
  SURFANN network(160, 180, kPhiPsiBoxes, 5 * kPhiPsiBoxes, 360, kPhiPsiBoxes,
                  std::string(bench::fullSize()) + "/tab", "surf20");
  network.setHybrid(1);  // level 1 only
  network.loadWeights();
  std::mt19937 random(8);
  for (int resid = 1; resid <= kResidues; ++resid) {
    for (int i = 0; i < 160; ++i)
      network.level1Inputs[resid].push_back(static_cast<double>(random()) / 2147483648.0 - 1.0);
  }
  for ([[maybe_unused]] auto _ : state) network.calcLevel1();
  state.SetItemsProcessed(state.iterations() * kResidues * 3 * (160 * 160 + 180 * 160 + kPhiPsiBoxes * 180));
  bench::Checksum checksum;
  for (const auto& [resid, output] : network.level1Outputs)
    checksum.add(output.data(), sizeof(double) * output.size());
  checksum.report(state);
}
BENCHMARK(networkLevel)->Unit(benchmark::kMillisecond);

void clustering(benchmark::State& state) {
  std::vector<double> values(kPhiPsiBoxes);
  for (int k = 0; k < kPhiPsiBoxes; ++k) {
    const double phi = phiIndexOf(k) - 5.5;
    const double psi = psiIndexOf(k) - 6.5;
    values[static_cast<std::size_t>(k)] = std::exp(-0.5 * (phi * phi + psi * psi)) + 0.001 * (k % 7);
  }
  ClusterData clusters;
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(ORBEL::getClusterInfo(values, clusters));
  state.SetItemsProcessed(state.iterations());
  bench::Checksum checksum;
  checksum.add(clusters.boxCluster.data(), sizeof(int) * clusters.boxCluster.size());
  checksum.report(state);
}
BENCHMARK(clustering)->Unit(benchmark::kMicrosecond);

}  // namespace
