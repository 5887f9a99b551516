// Completeness gate and consensus of a residue's matches: the dominant cluster and its count.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/angles.h"
#include "base/boxes.h"
#include "base/maps.h"
#include "base/missing.h"
#include "driver/ORBEL.h"

namespace {

constexpr double kJoinTolerance = 40.0;  // degrees, given

/// Phi and psi of the members of one cluster.
struct Group {
  std::vector<double> phi, psi;
};

/// Shifts of a residue that may be missing.
int missingAllowance(const std::string& code, bool noProton) {
  if (code == "P") return 4;
  return code == "G" && noProton ? 4 : 3;
}

/// Index of a torsion on an axis of the box grid; -1000 for an angle that is no number or far out of range.
int axisIndex(double angle) {
  const double position = axisPosition(angle);
  if (!(std::abs(position) < 1e6)) return -1000;
  return static_cast<int>(position) % kBoxesPerAxis;
}

/// Cluster number of the box of (phi, psi), 0 for none.
int clusterOf(double phi, double psi, const ClusterData& clusters) {
  const int box = boxAt(axisIndex(phi), axisIndex(psi));
  if (box < 0 || box >= kPhiPsiBoxes) return 0;
  return std::clamp(clusters.boxCluster[static_cast<std::size_t>(box)], 0, clusters.clusterCount);
}

bool close(double a, double b) {
  if (isBeyondLimit(a) || isBeyondLimit(b)) return false;
  return std::abs(wrapOnce(a - b)) <= kJoinTolerance;
}

/// The cluster that match `i` joins: that of the first clustered match near it, 0 for none.
int nearbyCluster(std::size_t i, const std::vector<double>& phi, const std::vector<double>& psi,
                  const std::vector<int>& number) {
  for (std::size_t j = 0; j < number.size(); ++j) {
    if (number[j] > 0 && close(phi[i], phi[j]) && close(psi[i], psi[j])) return number[j];
  }
  return 0;
}

std::vector<Group> groupByCluster(const std::vector<double>& phi, const std::vector<double>& psi,
                                  const std::vector<int>& number, int clusterCount) {
  std::vector<Group> groups(static_cast<std::size_t>(clusterCount) + 1);
  for (std::size_t i = 0; i < number.size(); ++i) {
    Group& group = groups[static_cast<std::size_t>(number[i])];
    group.phi.push_back(phi[i]);
    group.psi.push_back(psi[i]);
  }
  return groups;
}

/// Unclustered matches join the cluster of a near match, in rank order; each can then anchor later ones.
void joinNearbyClusters(const std::vector<double>& phi, const std::vector<double>& psi,
                        std::vector<int>& number, std::vector<Group>& groups) {
  Group left;
  for (std::size_t i = 0; i < number.size(); ++i) {
    if (number[i] != 0) continue;
    number[i] = nearbyCluster(i, phi, psi, number);
    Group& group = number[i] == 0 ? left : groups[static_cast<std::size_t>(number[i])];
    group.phi.push_back(phi[i]);
    group.psi.push_back(psi[i]);
  }
  groups[0] = std::move(left);
}

/// Number of the largest group; the higher number wins a tie, and group 0 can win.
std::size_t largestGroup(const std::vector<Group>& groups) {
  std::size_t chosen = 0;
  for (std::size_t i = 1; i < groups.size(); ++i) {
    if (groups[i].phi.size() >= groups[chosen].phi.size()) chosen = i;
  }
  return chosen;
}

/// `limit` for an unbroken run of that many members, `top` for a run of at least `top`, else the members
/// among the first `top` matches. The run starts at the first member, wherever it ranks.
int consensusCount(const std::vector<double>& flags, int limit, int top) {
  const auto first = std::find(flags.begin(), flags.end(), 1.0);
  const auto end = std::find_if(first, flags.end(), [](double flag) { return flag != 1.0; });
  const auto run = end - first;
  if (run == limit) return limit;
  if (run >= top) return top;
  const auto last = flags.begin() + std::min<std::ptrdiff_t>(top, std::ssize(flags));
  return static_cast<int>(std::count(flags.begin(), last, 1.0));
}

}  // namespace

/// True when the residue lies inside the shift range and at most one of it and its two neighbours lacks
/// more shifts than its type may.
bool ORBEL::checkCSCompleteness(int resid) const {
  if (resid <= shiftFirstResid || resid >= shiftLastResid) return false;
  int incomplete = 0;
  for (int r = resid - 1; r <= resid + 1; ++r) {
    if (valueOr(missingCount, r) > missingAllowance(valueOr(sequence, r), noProton)) ++incomplete;
  }
  return incomplete <= 1;
}

/// Narrows the angle lists to the members of the dominant cluster (direct members in rank order, then those
/// that joined), sets `flags` by match rank and `count`.
void ORBEL::classifyMatchCluster(std::vector<double>& phi, std::vector<double>& psi, int& count,
                                 std::vector<double>& flags, const ClusterData& clusters) const {
  std::vector<int> number;
  for (std::size_t i = 0; i < phi.size(); ++i) number.push_back(clusterOf(phi[i], psi[i], clusters));
  std::vector<Group> groups = groupByCluster(phi, psi, number, clusters.clusterCount);
  joinNearbyClusters(phi, psi, number, groups);

  const std::size_t chosen = largestGroup(groups);
  flags.clear();
  for (const int n : number) flags.push_back(static_cast<std::size_t>(n) == chosen ? 1.0 : 0.0);
  count = consensusCount(flags, matchLimit, topCount);
  phi = groups[chosen].phi;
  psi = groups[chosen].psi;
}
