// One fully connected network layer: weights laid out so that all units advance in lockstep.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

/// Weights of one layer. They are set in tiles of units, each input by input and filled up with zeros; `seal`
/// packs them: stretches that are zero are left out, the rest of a tile follows input by input without gaps.
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
        unpacked_(tiles() * static_cast<std::size_t>(kTile) * static_cast<std::size_t>(inputs)) {}

  /// Before `seal`.
  float& at(int unit, int input) { return unpacked_[index(unit, input)]; }
  /// After `seal`: the weight, looked up slowly.
  float at(int unit, int input) const;
  /// Packs the weights, and derives `maxAbs` from them. Once, after all are set.
  void seal();
  std::size_t tiles() const { return static_cast<std::size_t>((rows + kTile - 1) / kTile); }

  int rows = 0;                                             ///< units
  int cols = 0;                                             ///< inputs per unit
  double maxAbs = std::numeric_limits<double>::infinity();  ///< infinity while unsealed or not all finite
  std::vector<UnitRun> runs;                                ///< weights outside the runs are exactly zero
  std::vector<std::uint32_t> firstRun;   ///< [tile * cols + input] -> its first run; one more at the end
  std::vector<std::uint64_t> tileStart;  ///< [tile] -> its first packed weight; one more at the end
  std::shared_ptr<const float[]> packed;

 private:
  std::vector<float> unpacked_;

  void appendRuns(int firstUnit, int input, std::vector<float>& weights);
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
