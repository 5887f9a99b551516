// Distance kernel of the triplet averaging: one query triplet against every library row.
#include "shifts/triplet_distance.h"

#include <algorithm>

#include "base/missing.h"
#include "base/processor.h"

namespace {

constexpr std::size_t kBlock = 1024;  // rows taken together: their sums stay in the first-level cache

/// One column's contribution: weight * (x - y)^2 per row, or `missingCost` where x is missing.
struct ShiftTerms {
  const double* x;
  double y, weight, missingCost;
};

ORBELN_ALWAYS_INLINE void addTerms(const ShiftTerms& terms, std::size_t rows, float* __restrict sums) {
  const double* __restrict x = terms.x;
  for (std::size_t row = 0; row < rows; ++row) {
    const double difference = x[row] - terms.y;
    const double term = isBeyondLimit(x[row]) ? terms.missingCost : terms.weight * (difference * difference);
    sums[row] = static_cast<float>(static_cast<double>(sums[row]) + term);
  }
}

void addTermsBaseline(const ShiftTerms& terms, std::size_t rows, float* sums) {
  addTerms(terms, rows, sums);
}

#ifdef ORBELN_AVX2
ORBELN_AVX2 void addTermsAvx2(const ShiftTerms& terms, std::size_t rows, float* sums) {
  addTerms(terms, rows, sums);
}
#endif

void addShiftTerms(const ShiftTerms& terms, std::size_t rows, float* sums) {
#ifdef ORBELN_AVX2
  if (hasAvx2()) return addTermsAvx2(terms, rows, sums);
#endif
  addTermsBaseline(terms, rows, sums);
}

void addConstant(double term, std::size_t rows, float* sums) {
  for (std::size_t row = 0; row < rows; ++row)
    sums[row] = static_cast<float>(static_cast<double>(sums[row]) + term);
}

/// Adds scale * h^2 per row, h the difference of the residue types, through a table by type.
void addTypeTerms(const int* nameIds, const std::vector<double>& terms, std::size_t rows, float* sums) {
  for (std::size_t row = 0; row < rows; ++row) {
    const double term = terms[static_cast<std::size_t>(nameIds[row])];
    sums[row] = static_cast<float>(static_cast<double>(sums[row]) + term);
  }
}

std::vector<double> typeTerms(const std::vector<double>& homology, double scale) {
  std::vector<double> terms;
  terms.reserve(homology.size());
  for (const double h : homology) terms.push_back(scale * (h * h));
  return terms;
}

}  // namespace

std::vector<float> tripletDistances(const TripletLibrary& library, const TripletQuery& query,
                                    const std::array<AtomWeights, 4>& ringWeights,
                                    const AtomWeights& atomWeights, const std::array<double, 4>& ringScale) {
  const auto rows = static_cast<std::size_t>(library.rows);
  std::vector<float> sums(rows, 0.0F);
  std::array<std::vector<double>, 3> types;
  for (std::size_t p = 0; p < 3; ++p) types[p] = typeTerms(query.homology[p], ringScale[p + 1]);
  for (std::size_t begin = 0; begin < rows; begin += kBlock) {
    const std::size_t n = std::min(kBlock, rows - begin);
    float* const block = sums.data() + begin;
    for (std::size_t p = 0; p < 3; ++p) {
      for (std::size_t atom = 0; atom < kAtoms; ++atom) {
        const auto y = static_cast<double>(query.shifts[p * kAtoms + atom]);
        const double weight = ringWeights[p + 1][atom + 1];
        const double missingCost = weight * atomWeights[atom + 1];
        if (isBeyondLimit(y)) {
          addConstant(missingCost, n, block);
        } else {
          addShiftTerms({library.values[p * kAtoms + atom].data() + begin, y, weight, missingCost}, n, block);
        }
      }
      addTypeTerms(library.nameIds[p].data() + begin, types[p], n, block);
    }
  }
  return sums;
}
