// One network layer in the table image: weights packed as the kernel walks them.
#pragma once

#include <cstddef>
#include <optional>

#include "ann/ANN.h"
#include "tables/TableImage.h"
#include "tables/imageParts.h"

/// Shape that a weight table was read with.
struct LayerShape {
  std::size_t members = 0;
  int units = 0, inputs = 0;
};

/// The parts of a layer; nothing when a member lacks units.
std::optional<image::Parts> encodeLayer(const ANN::Layer& layer, const LayerShape& shape);

/// Fills the members from an image; the weights are used in place. False, and `layer` of no use, when the
/// parts are not those of a layer of this shape.
bool decodeLayer(const image::ImagedTable& table, const LayerShape& shape, ANN::Layer& layer);
