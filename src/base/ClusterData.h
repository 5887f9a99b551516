// Clusters of high boxes of one residue's phi/psi box distribution.
#pragma once

#include <array>
#include <vector>

#include "base/boxes.h"

/// Peaks and clusters are numbered from 1: entry 0 of the
/// per-peak and per-cluster lists is unused.
struct ClusterData {
  static constexpr int kBoxes = kPhiPsiBoxes;
  /// At least five boxes each: 64 of them fill the grid.
  static constexpr int kClusters = kBoxes / 5;

  int clusterCount = 0;
  int peakCount = 0;
  double mean = 0.0;               ///< of all values
  double standardDeviation = 0.0;  ///< of all values, divisor one less
  std::array<double, kBoxes + 1> values{};
  std::array<int, kBoxes + 1> peakBox{};       ///< 1..peakCount, descending value
  std::array<double, kBoxes + 1> peakValue{};  ///< 1..peakCount
  std::array<int, kClusters + 1> clusterSize{};
  std::array<double, kClusters + 1> clusterValue{};  ///< sum of the members' values
  std::array<std::vector<int>, kClusters + 1>
      clusterMembers;                        ///< members at 1..size; 1 is the seed, the highest box
  std::array<int, kBoxes + 1> boxCluster{};  ///< cluster number of a box, 0 for none

  /// Seed box of cluster c (1..clusterCount).
  int seed(int c) const { return clusterMembers[static_cast<std::size_t>(c)][1]; }
};
