// Chi1 scores of database fragments whose centre has the query residue's type.
#include <cmath>

#include "ann/CHI1ANN.h"
#include "base/angles.h"
#include "base/maps.h"
#include "base/missing.h"
#include "base/residues.h"
#include "driver/ORBEL.h"

namespace {

constexpr int kIndexLimit = kDatabaseCapacity + 1;
constexpr double kMissingDeviation = 1.5;  // scales charged for a shift that cannot be compared; given

/// sin and cos of phi and psi, then of chi1 with a flag for residues without one.
void appendAngles(const float* angles, std::vector<double>& input) {
  for (int k = 0; k < 2; ++k) {
    const double angle = radians(static_cast<double>(angles[k]));
    input.insert(input.end(), {std::sin(angle), std::cos(angle)});
  }
  const double chi1 = static_cast<double>(angles[2]);
  if (isPresent(chi1)) {
    input.insert(input.end(), {std::sin(radians(chi1)), std::cos(radians(chi1)), 0.0});
  } else {
    input.insert(input.end(), {0.0, 0.0, 1.0});
  }
}

/// Deviation of each database shift from the query's in units of its scale. `query` is null outside the
/// range.
void appendDeviations(const float* shifts, const ShiftRow* query, std::vector<double>& input) {
  for (std::size_t atom = 0; atom < kAtoms; ++atom) {
    const double value = static_cast<double>(shifts[2 * atom]);
    const double scale = static_cast<double>(shifts[2 * atom + 1]);
    const bool comparable = query != nullptr && isPresent((*query)[atom]) && scale != 0.0;
    input.push_back(comparable ? (value - (*query)[atom]) / scale : kMissingDeviation);
  }
}

}  // namespace

std::vector<double> ORBEL::chi1NetworkInput(int resid, int entry) const {
  std::vector<double> input;
  for (int d = -1; d <= 1; ++d) {
    appendAngles(fragmentDatabase->angles(entry + d), input);
    appendDeviations(fragmentDatabase->shifts(entry + d), shiftRows().find(resid + d), input);
  }
  return input;
}

/// Entries without a neighbour on both sides in the database, and scores that are not numbers, are dropped.
void ORBEL::evalChi1WithANN(int resid, CandidateMap& fragments) {
  const std::string code = foldedCode(valueOr(sequence, resid));
  const auto network = code.size() == 1 ? chi1Networks.find(code[0]) : chi1Networks.end();
  if (network == chi1Networks.end() || network->second == nullptr) return;
  std::vector<int> entries;
  std::vector<std::vector<double>> inputs;
  for (const auto& [key, entry] : fragments) {
    const bool hasNeighbours = entry > 0 && entry < kIndexLimit && entry + 1 < fragmentDatabase->entryCount;
    if (!hasNeighbours) continue;
    entries.push_back(entry);
    inputs.push_back(chi1NetworkInput(resid, entry));
  }
  const std::vector<float> scores = network->second->runANNLevel1(std::move(inputs));
  CandidateMap scored;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto score = static_cast<double>(scores[i]);
    if (!std::isnan(score)) scored[score] = entries[i];
  }
  fragments = std::move(scored);
}
