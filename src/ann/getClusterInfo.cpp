// Clusters of high boxes of a phi/psi box distribution: density clustering on the periodic grid.
#include <algorithm>

#include "base/boxes.h"
#include "base/statistics.h"
#include "driver/ORBEL.h"

namespace {

constexpr int kReach = 120 / kBoxWidth;    // neighbours lie within 120 degrees, given
constexpr std::size_t kFewestMembers = 5;  // neighbours of a seed, and boxes of a cluster; given

bool areNeighbours(int a, int b) {
  const int phi = axisDistance(phiIndexOf(a), phiIndexOf(b));
  const int psi = axisDistance(psiIndexOf(a), psiIndexOf(b));
  return phi * phi + psi * psi <= kReach * kReach;
}

/// Boxes at or above mean + standard deviation, highest first, the lower box number first among equals.
void findPeaks(ClusterData& result) {
  std::vector<double> left(result.values.begin(), result.values.begin() + ClusterData::kBoxes);
  for (int pick = 0; pick < ClusterData::kBoxes; ++pick) {
    const auto highest = std::max_element(left.begin(), left.end());
    if (*highest >= result.mean + result.standardDeviation) {
      const auto peak = static_cast<std::size_t>(++result.peakCount);
      result.peakBox[peak] = static_cast<int>(highest - left.begin());
      result.peakValue[peak] = *highest;
    }
    *highest = 0.0;
  }
}

/// Boxes of the other peaks near peak `i`, in peak order.
std::vector<int> neighbourBoxes(const ClusterData& result, int i) {
  std::vector<int> boxes;
  const int box = result.peakBox[static_cast<std::size_t>(i)];
  for (int other = 1; other <= result.peakCount; ++other) {
    const int otherBox = result.peakBox[static_cast<std::size_t>(other)];
    if (other != i && areNeighbours(box, otherBox)) boxes.push_back(otherBox);
  }
  return boxes;
}

/// Opens cluster `number` with the seed box and its neighbours that belong to no cluster yet; a cluster that
/// stays too small is dissolved again. True when the cluster stands.
bool formCluster(ClusterData& result, int number, int seedBox, const std::vector<int>& neighbours) {
  const auto c = static_cast<std::size_t>(number);
  std::vector<int>& members = result.clusterMembers[c];
  members = {0, seedBox};  // members are numbered from 1
  result.boxCluster[static_cast<std::size_t>(seedBox)] = number;
  result.clusterValue[c] = result.values[static_cast<std::size_t>(seedBox)];
  for (const int box : neighbours) {
    int& owner = result.boxCluster[static_cast<std::size_t>(box)];
    if (owner != 0) continue;
    owner = number;
    members.push_back(box);
    result.clusterValue[c] += result.values[static_cast<std::size_t>(box)];
  }
  if (members.size() - 1 >= kFewestMembers) {
    result.clusterSize[c] = static_cast<int>(members.size()) - 1;
    return true;
  }
  for (std::size_t m = 1; m < members.size(); ++m)
    result.boxCluster[static_cast<std::size_t>(members[m])] = 0;
  members.clear();
  result.clusterValue[c] = 0.0;
  return false;
}

}  // namespace

/// `values` holds one value per box; another length gives an empty record. Returns the number of clusters.
int ORBEL::getClusterInfo(std::vector<double>& values, ClusterData& result) {
  result = ClusterData{};
  if (values.size() != ClusterData::kBoxes) return 0;
  std::copy(values.begin(), values.end(), result.values.begin());
  result.mean = average(values);
  result.standardDeviation = ::standardDeviation(values);
  findPeaks(result);

  std::array<bool, ClusterData::kBoxes> visited{};
  for (int i = 1; i <= result.peakCount; ++i) {
    const int box = result.peakBox[static_cast<std::size_t>(i)];
    if (visited[static_cast<std::size_t>(box)]) continue;
    visited[static_cast<std::size_t>(box)] = true;
    const std::vector<int> neighbours = neighbourBoxes(result, i);
    if (neighbours.size() < kFewestMembers) continue;
    if (formCluster(result, result.clusterCount + 1, box, neighbours)) ++result.clusterCount;
    for (const int neighbour : neighbours) visited[static_cast<std::size_t>(neighbour)] = true;
  }
  return result.clusterCount;
}
