// The grid of phi/psi boxes: the Ramachandran plane in square boxes, periodic in both directions.
#pragma once

#include <cstdlib>

inline constexpr int kBoxesPerAxis = 18;
inline constexpr int kBoxWidth = 360 / kBoxesPerAxis;  ///< degrees
inline constexpr int kPhiPsiBoxes = kBoxesPerAxis * kBoxesPerAxis;
static_assert(kBoxWidth * kBoxesPerAxis == 360);

constexpr int boxAt(int phiIndex, int psiIndex) {
  return kBoxesPerAxis * phiIndex + psiIndex;
}
constexpr int phiIndexOf(int box) {
  return box / kBoxesPerAxis;
}
constexpr int psiIndexOf(int box) {
  return box % kBoxesPerAxis;
}

/// Lower edge of the boxes with an index along one axis, degrees.
constexpr int lowerEdge(int index) {
  return kBoxWidth * index - 180;
}

/// Where an angle lies along its axis, in boxes; its whole part is the index.
constexpr double axisPosition(double degrees) {
  return (degrees + 180.0) / kBoxWidth;
}

/// Steps between two indices of an axis, the shorter way round.
inline int axisDistance(int a, int b) {
  const int distance = std::abs(a - b);
  return distance > kBoxesPerAxis / 2 ? kBoxesPerAxis - distance : distance;
}
