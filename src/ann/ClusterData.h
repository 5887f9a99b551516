// Clusters of high boxes of one residue's phi/psi box distribution.
#pragma once

#include <array>
#include <vector>

/// Boxes are numbered 18 * phi index + psi index. Peaks and clusters are numbered from 1: entry 0 of the
/// per-peak and per-cluster lists is unused.
struct ClusterData {
  static constexpr int kBoxes = 324;

  int clusterCount = 0;
  int peakCount = 0;
  double mean = 0.0;               ///< of the 324 values
  double standardDeviation = 0.0;  ///< of the 324 values, divisor 323
  std::array<double, kBoxes + 1> values{};
  std::array<int, kBoxes + 1> peakBox{};       ///< 1..peakCount, descending value
  std::array<double, kBoxes + 1> peakValue{};  ///< 1..peakCount
  std::array<int, 65> clusterSize{};
  std::array<double, 65> clusterValue{};            ///< sum of the members' values
  std::array<std::vector<int>, 65> clusterMembers;  ///< members at 1..size; 1 is the seed, the highest box
  std::array<int, kBoxes + 1> boxCluster{};         ///< cluster number of a box, 0 for none

  /// Seed box of cluster c (1..clusterCount).
  int seed(int c) const { return clusterMembers[static_cast<std::size_t>(c)][1]; }
};
