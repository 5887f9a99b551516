// Distance kernel of the triplet averaging: one query triplet against every library row.
#include "shifts/triplet_distance.h"

#include "driver/angles.h"

namespace {

/// Adds weight * (x - y)^2 per row, or `missingCost` where x is missing.
void addShiftTerms(const double* x, std::size_t rows, double y, double weight, double missingCost,
                   float* sums) {
  for (std::size_t row = 0; row < rows; ++row) {
    const double difference = x[row] - y;
    const double term = x[row] > kMissingLimit ? missingCost : weight * (difference * difference);
    sums[row] = static_cast<float>(static_cast<double>(sums[row]) + term);
  }
}

void addConstant(double term, std::vector<float>& sums) {
  for (float& sum : sums) sum = static_cast<float>(static_cast<double>(sum) + term);
}

/// Adds scale * h^2 per row, h the difference of the residue types.
void addTypeTerms(const std::vector<int>& nameIds, const std::vector<double>& homology, double scale,
                  std::vector<float>& sums) {
  for (std::size_t row = 0; row < nameIds.size(); ++row) {
    const double h = homology[static_cast<std::size_t>(nameIds[row])];
    sums[row] = static_cast<float>(static_cast<double>(sums[row]) + scale * (h * h));
  }
}

}  // namespace

std::vector<float> tripletDistances(const TripletLibrary& library, const TripletQuery& query,
                                    const std::array<std::array<double, 7>, 4>& ringWeights,
                                    const std::array<double, 7>& atomWeights,
                                    const std::array<double, 4>& ringScale) {
  std::vector<float> sums(static_cast<std::size_t>(library.rows), 0.0F);
  for (std::size_t p = 1; p <= 3; ++p) {
    for (std::size_t atom = 1; atom <= 6; ++atom) {
      const std::size_t column = (p - 1) * 6 + atom - 1;
      const double y = static_cast<double>(query.shifts[column]);
      const double weight = ringWeights[p][atom];
      const double missingCost = weight * atomWeights[atom];
      if (y > kMissingLimit) {
        addConstant(missingCost, sums);
      } else {
        addShiftTerms(library.values[column].data(), sums.size(), y, weight, missingCost, sums.data());
      }
    }
    addTypeTerms(library.nameIds[p - 1], query.homology[p - 1], ringScale[p], sums);
  }
  return sums;
}
