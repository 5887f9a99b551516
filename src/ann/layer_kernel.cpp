// One fully connected network layer: weights laid out so that all units advance in lockstep.
#include "ann/layer_kernel.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "base/processor.h"

namespace {

constexpr std::size_t kVectors = 8;  // input vectors per pass over the weights
constexpr std::size_t kTile = LayerWeights::kTile;
constexpr double kInt32Limit = 2147483648.0;

/// Running sums of one tile of units for one input vector.
struct TileSum {
  double remainder[kTile];
  double total[kTile];  // whole numbers
};
using TileSums = std::array<TileSum, kVectors>;

/// The whole part of `sum`, through the 32-bit integers: the caller knows that |sum| < 2^31.
struct SmallTruncation {
  static double whole(double sum) { return static_cast<double>(static_cast<std::int32_t>(sum)); }
};

/// The whole part of any number; slow without a rounding instruction.
struct AnyTruncation {
  static double whole(double sum) { return std::trunc(sum); }
};

constexpr std::size_t roundedUp(std::size_t units) {
  return (units + LayerWeights::kStep - 1) / LayerWeights::kStep * LayerWeights::kStep;
}

/// One input's contribution to `n` neighbouring units.
template <class Truncation>
ORBELN_ALWAYS_INLINE void accumulate(const float* __restrict w, double x, double* __restrict remainder,
                                     double* __restrict total, std::size_t n) {
  constexpr std::size_t kStep = LayerWeights::kStep;
  for (std::size_t j = 0; j < n / kStep * kStep; ++j) {  // n is a multiple: told to the compiler
    const double sum = x * static_cast<double>(w[j]) + remainder[j];
    const double whole = Truncation::whole(sum);
    total[j] += whole;
    remainder[j] = sum - whole;
  }
}

/// Sums of the units `begin`..`begin + n - 1`, all inputs in ascending order.
///
/// Units whose weight is exactly zero may be passed over when the inputs are finite: the product is a zero of
/// either sign, the remainder is never -0 (it starts at +0, and x + y as well as x - y give +0 whenever equal
/// magnitudes cancel), so adding the zero changes no bit, and a remainder below one has no whole part.
template <class Truncation, bool skipZeros>
ORBELN_ALWAYS_INLINE void accumulateTile(const LayerWeights& weights, std::size_t begin,
                                         [[maybe_unused]] std::size_t n,
                                         std::span<const std::vector<double>> inputs, TileSums& sums) {
  const std::size_t cols = static_cast<std::size_t>(weights.cols);
  const std::uint32_t* const firstRun = weights.firstRun.data() + begin / kTile * cols;
  const float* w = weights.packed.get() + weights.tileStart[begin / kTile];
  for (std::size_t i = 0; i < cols; ++i) {
    const LayerWeights::UnitRun* run = weights.runs.data() + firstRun[i];
    const LayerWeights::UnitRun* const end = weights.runs.data() + firstRun[i + 1];
    std::array<float, kTile> all{};  // of one input, zeros included
    for (; run != end; ++run) {
      const auto lo = static_cast<std::size_t>(run->begin);
      const auto count = static_cast<std::size_t>(run->end - run->begin);
      if constexpr (skipZeros) {
        for (std::size_t p = 0; p < inputs.size(); ++p) {
          accumulate<Truncation>(w, inputs[p][i], sums[p].remainder + lo, sums[p].total + lo, count);
        }
      } else {
        std::copy_n(w, count, all.data() + lo);
      }
      w += count;
    }
    if constexpr (!skipZeros) {
      for (std::size_t p = 0; p < inputs.size(); ++p) {
        accumulate<Truncation>(all.data(), inputs[p][i], sums[p].remainder, sums[p].total, roundedUp(n));
      }
    }
  }
}

using TileFunction = void (*)(const LayerWeights&, std::size_t, std::size_t,
                              std::span<const std::vector<double>>, TileSums&);

template <class Truncation, bool skipZeros>
void baselineTile(const LayerWeights& weights, std::size_t begin, std::size_t n,
                  std::span<const std::vector<double>> inputs, TileSums& sums) {
  accumulateTile<Truncation, skipZeros>(weights, begin, n, inputs, sums);
}

#ifdef ORBELN_AVX2
/// The same operations on four numbers at a time, with the processor's rounding instruction.
template <bool skipZeros>
ORBELN_AVX2 void avx2Tile(const LayerWeights& weights, std::size_t begin, std::size_t n,
                          std::span<const std::vector<double>> inputs, TileSums& sums) {
  accumulateTile<AnyTruncation, skipZeros>(weights, begin, n, inputs, sums);
}
#endif

/// `small`: all inputs are finite and no partial sum leaves the 32-bit integers.
TileFunction chooseTile(bool small, [[maybe_unused]] KernelVersion version) {
#ifdef ORBELN_AVX2
  if (version == KernelVersion::Widest && hasAvx2()) return small ? avx2Tile<true> : avx2Tile<false>;
#endif
  return small ? baselineTile<SmallTruncation, true> : baselineTile<AnyTruncation, false>;
}

/// Largest magnitude of all inputs, infinity when one is not finite.
double largestMagnitude(std::span<const std::vector<double>> inputs) {
  double largest = 0.0;
  for (const auto& input : inputs) {
    for (const double x : input) {
      if (!std::isfinite(x)) return std::numeric_limits<double>::infinity();
      largest = std::max(largest, std::fabs(x));
    }
  }
  return largest;
}

void appendActivated(double sum, int activation, std::vector<double>& output) {
  if (activation == kTanh) output.push_back(2.0 / (1.0 + std::exp(-2.0 * sum)) - 1.0);
  if (activation == kLinear) output.push_back(sum);
}

void evaluateBlock(const LayerWeights& weights, const std::vector<double>& bias,
                   std::span<const std::vector<double>> inputs, std::span<std::vector<double>> outputs,
                   int activation, KernelVersion version) {
  // A partial sum is at most one product plus a remainder below one. NaN fails the comparison as well.
  const bool small = largestMagnitude(inputs) * weights.maxAbs + 1.0 < kInt32Limit;
  const TileFunction addTile = chooseTile(small, version);
  const std::size_t rows = static_cast<std::size_t>(weights.rows);
  TileSums sums;
  for (std::size_t begin = 0; begin < rows; begin += kTile) {
    const std::size_t n = std::min(kTile, rows - begin);
    for (std::size_t p = 0; p < inputs.size(); ++p) {
      std::fill_n(sums[p].remainder, roundedUp(n), 0.0);
      std::fill_n(sums[p].total, roundedUp(n), 0.0);
    }
    addTile(weights, begin, n, inputs, sums);
    for (std::size_t p = 0; p < inputs.size(); ++p) {
      for (std::size_t j = 0; j < n; ++j) {
        appendActivated((sums[p].remainder[j] + bias[begin + j]) + sums[p].total[j], activation, outputs[p]);
      }
    }
  }
}

}  // namespace

void LayerWeights::seal() {
  // Without the sign, the bits of floats order as their magnitudes, infinity and what is no number last.
  constexpr std::uint32_t kSign = 0x80000000U;
  std::uint32_t largest = 0;
  for (const float value : unpacked_)
    largest = std::max(largest, std::bit_cast<std::uint32_t>(value) & ~kSign);
  const auto magnitude = static_cast<double>(std::bit_cast<float>(largest));
  maxAbs = std::isfinite(magnitude) ? magnitude : std::numeric_limits<double>::infinity();
  runs.clear();
  firstRun.clear();
  tileStart.clear();
  std::vector<float> weights;
  for (int unit = 0; unit < rows; unit += kTile) {
    tileStart.push_back(weights.size());
    for (int i = 0; i < cols; ++i) {
      firstRun.push_back(static_cast<std::uint32_t>(runs.size()));
      appendRuns(unit, i, weights);
    }
  }
  tileStart.push_back(weights.size());
  firstRun.push_back(static_cast<std::uint32_t>(runs.size()));
  const auto kept = std::make_shared<std::vector<float>>(std::move(weights));
  packed = std::shared_ptr<const float[]>(kept, kept->data());
  unpacked_ = {};
}

/// Runs of one tile for one input, in whole steps, and their weights.
void LayerWeights::appendRuns(int firstUnit, int input, std::vector<float>& weights) {
  const float* values = unpacked_.data() + index(firstUnit, input);
  int end = -1;  // of the run being extended
  for (int j = 0; j < kTile; j += kStep) {
    const bool zero = std::all_of(values + j, values + j + kStep, [](float value) { return value == 0.0F; });
    if (zero) continue;
    if (j != end) runs.push_back({static_cast<std::int16_t>(j), 0});
    end = j + kStep;
    runs.back().end = static_cast<std::int16_t>(end);
    weights.insert(weights.end(), values + j, values + end);
  }
}

float LayerWeights::at(int unit, int input) const {
  const auto tile = static_cast<std::size_t>(unit / kTile);
  const std::size_t wanted = tile * static_cast<std::size_t>(cols) + static_cast<std::size_t>(input);
  const float* weight = packed.get() + tileStart[tile];
  for (std::uint32_t r = firstRun[tile * static_cast<std::size_t>(cols)]; r < firstRun[wanted + 1]; ++r) {
    const int place = unit % kTile - runs[r].begin;
    if (r >= firstRun[wanted] && place >= 0 && unit % kTile < runs[r].end) return weight[place];
    weight += runs[r].end - runs[r].begin;
  }
  return 0.0F;
}

void evaluateLayer(const LayerWeights& weights, const std::vector<double>& bias,
                   std::span<const std::vector<double>> inputs, std::span<std::vector<double>> outputs,
                   int activation, KernelVersion version) {
  for (std::size_t begin = 0; begin < inputs.size(); begin += kVectors) {
    const std::size_t n = std::min(kVectors, inputs.size() - begin);
    evaluateBlock(weights, bias, inputs.subspan(begin, n), outputs.subspan(begin, n), activation, version);
  }
}
