// One fully connected network layer: weights laid out so that all units advance in lockstep.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

/// Weights of one layer in tiles of units, each stored input by input and filled up with zeros:
/// w[(tile * cols + input) * kTile + unit in the tile]. Call `seal` once after filling them.
struct LayerWeights {
  /// Units begin..end - 1 of one tile, counted from the tile's first unit; multiples of kStep.
  struct UnitRun {
    std::int16_t begin = 0;
    std::int16_t end = 0;
  };
  static constexpr int kTile = 64;  ///< units evaluated together; their sums stay in the first-level cache
  static constexpr int kStep = 8;   ///< units that advance at least together

  LayerWeights() = default;
  LayerWeights(int units, int inputs)
      : rows(units),
        cols(inputs),
        w(static_cast<std::size_t>((units + kTile - 1) / kTile * kTile) * static_cast<std::size_t>(inputs)) {}

  float& at(int unit, int input) { return w[index(unit, input)]; }
  float at(int unit, int input) const { return w[index(unit, input)]; }
  /// Derives `maxAbs` and the non-zero runs from the weights.
  void seal();

  int rows = 0;  ///< units
  int cols = 0;  ///< inputs per unit
  std::vector<float> w;
  double maxAbs = std::numeric_limits<double>::infinity();  ///< infinity while unsealed or not all finite
  std::vector<UnitRun> runs;                                ///< weights outside the runs are exactly zero
  std::vector<std::size_t> firstRun;  ///< [tile * cols + input] -> its first run; one more entry at the end

 private:
  void appendRuns(int firstUnit, int input);
  std::size_t index(int unit, int input) const {
    const auto tile = static_cast<std::size_t>(unit / kTile);
    return (tile * static_cast<std::size_t>(cols) + static_cast<std::size_t>(input)) * kTile +
           static_cast<std::size_t>(unit % kTile);
  }
};

/// Activation codes of a layer; any other code yields no output.
inline constexpr int kLinear = 0;
inline constexpr int kTanh = 1;

/// Which version of the kernel runs: the widest that the processor has, or the one for every processor. The
/// results are the same.
enum class KernelVersion : std::uint8_t { Widest, Baseline };

/// Evaluates one layer for several input vectors at once and appends each vector's unit values to its output.
/// Every input must hold `weights.cols` values and `bias` `weights.rows`.
///
/// A unit's sum is kept as a remainder below one in magnitude and a whole-number total, so that small terms
/// do not drown in a large sum; bias and total are added last. The result does not depend on the grouping of
/// the vectors.
void evaluateLayer(const LayerWeights& weights, const std::vector<double>& bias,
                   std::span<const std::vector<double>> inputs, std::span<std::vector<double>> outputs,
                   int activation, KernelVersion version = KernelVersion::Widest);
