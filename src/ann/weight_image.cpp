// One network layer in the table image: weights packed as the kernel walks them.
#include "ann/weight_image.h"

#include <algorithm>
#include <cstdint>

namespace {

struct ShapeRecord {
  std::uint64_t members = 0;
  std::int64_t units = 0, inputs = 0;
};

struct MemberRecord {
  double maxAbs = 0.0;
  std::uint64_t runs = 0, weights = 0;
};

template <class T>
std::vector<T> copied(std::span<const T> values) {
  return {values.begin(), values.end()};
}

/// The kernel follows the runs without looking: they must lie in their tiles and add up to the weights.
bool isConsistent(const LayerWeights& weights, std::size_t packed) {
  const auto cols = static_cast<std::size_t>(weights.cols);
  if (weights.firstRun.front() != 0 || weights.tileStart.front() != 0) return false;
  if (weights.firstRun.back() != weights.runs.size() || weights.tileStart.back() != packed) return false;
  if (!std::is_sorted(weights.firstRun.begin(), weights.firstRun.end())) return false;
  for (std::size_t tile = 0; tile < weights.tiles(); ++tile) {
    std::uint64_t sum = weights.tileStart[tile];
    for (std::uint32_t r = weights.firstRun[tile * cols]; r < weights.firstRun[(tile + 1) * cols]; ++r) {
      const auto [begin, end] = weights.runs[r];
      const bool whole = begin % LayerWeights::kStep == 0 && end % LayerWeights::kStep == 0;
      if (!whole || begin < 0 || begin >= end || end > LayerWeights::kTile) return false;
      sum += static_cast<std::uint64_t>(end - begin);
    }
    if (sum != weights.tileStart[tile + 1]) return false;
  }
  return true;
}

bool decodeMember(image::PartReader& guide, image::PartReader& bulk, const std::shared_ptr<const void>& owner,
                  const LayerShape& shape, ANN::LayerMember& member) {
  const auto record = guide.value<MemberRecord>();
  LayerWeights& weights = member.weights;
  weights = {};
  weights.rows = shape.units;
  weights.cols = shape.inputs;
  weights.maxAbs = record.maxAbs;
  const std::size_t lists = weights.tiles() * static_cast<std::size_t>(shape.inputs) + 1;
  weights.firstRun = copied(guide.array<std::uint32_t>(lists));
  weights.tileStart = copied(guide.array<std::uint64_t>(weights.tiles() + 1));
  weights.runs = copied(guide.array<LayerWeights::UnitRun>(record.runs));
  member.bias = copied(guide.array<double>(static_cast<std::size_t>(shape.units)));
  const std::span<const float> packed = bulk.array<float>(record.weights);
  weights.packed = std::shared_ptr<const float[]>(owner, packed.data());
  return guide.ok() && bulk.ok() && isConsistent(weights, packed.size());
}

}  // namespace

std::optional<image::Parts> encodeLayer(const ANN::Layer& layer, const LayerShape& shape) {
  image::Parts parts;
  image::appendValue(parts.guide, ShapeRecord{shape.members, shape.units, shape.inputs});
  for (std::size_t k = 0; k < shape.members; ++k) {
    const LayerWeights& weights = layer[k].weights;
    if (weights.rows != shape.units || weights.cols != shape.inputs) return std::nullopt;
    const std::size_t count = weights.tileStart.back();
    image::appendValue(parts.guide, MemberRecord{weights.maxAbs, weights.runs.size(), count});
    image::appendArray(parts.guide, std::span(weights.firstRun));
    image::appendArray(parts.guide, std::span(weights.tileStart));
    image::appendArray(parts.guide, std::span(weights.runs));
    image::appendArray(parts.guide, std::span(layer[k].bias));
    image::appendArray(parts.bulk, std::span(weights.packed.get(), count));
  }
  return parts;
}

bool decodeLayer(const image::ImagedTable& table, const LayerShape& shape, ANN::Layer& layer) {
  image::PartReader guide(table.guide), bulk(table.bulk.bytes);
  const auto found = guide.value<ShapeRecord>();
  if (!guide.ok() || found.members != shape.members || found.units != shape.units ||
      found.inputs != shape.inputs)
    return false;
  for (std::size_t k = 0; k < shape.members; ++k) {
    if (!decodeMember(guide, bulk, table.bulk.owner, shape, layer[k])) return false;
  }
  return true;
}
