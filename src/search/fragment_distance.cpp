// Distance between the secondary shifts of a query stretch and of a database fragment.
#include "search/fragment_distance.h"

#include <cstdlib>

#include "base/missing.h"

namespace {

constexpr std::array<double, kMaxHalfWidth + 1> kDistanceWeights = {1.0, 0.64, 0.36, 0.25};  // given
constexpr double kMissingCost = 1.5;  // scales, as the chi1 networks are charged

}  // namespace

FragmentDistance::FragmentDistance(const ShiftRows& query, int resid) {
  for (auto& residue : query_) residue.fill(kMissingValue);
  for (int k = -kMaxHalfWidth; k <= kMaxHalfWidth; ++k) {
    if (const ShiftRow* row = query.find(resid + k)) query_[toIndex(k + kMaxHalfWidth)] = *row;
  }
}

double FragmentDistance::addResidue(double sum, const DB& db, int centre, int k, double weight) const {
  const auto& query = query_[toIndex(k + kMaxHalfWidth)];
  const float* entry = db.shifts(centre + k);
  for (std::size_t atom = 0; atom < query.size(); ++atom) {
    const double value = static_cast<double>(entry[2 * atom]);
    const double scale = static_cast<double>(entry[2 * atom + 1]);
    // Written so that a shift that is not a number counts as missing.
    const bool present = isPresent(query[atom]) && scale != 0.0;
    const double d = present ? (value - query[atom]) / scale : kMissingCost;
    sum += weight * d * d;
  }
  return sum;
}

double FragmentDistance::weighted(const DB& db, int centre, int halfWidth) const {
  double sum = 0.0;
  for (int k = -halfWidth; k <= halfWidth; ++k) {
    sum = addResidue(sum, db, centre, k, kDistanceWeights[toIndex(std::abs(k))]);
  }
  return sum;
}

double FragmentDistance::unweightedTriplet(const DB& db, int centre) const {
  double sum = 0.0;
  for (int k = -1; k <= 1; ++k) sum = addResidue(sum, db, centre, k, 1.0);
  return sum;
}
