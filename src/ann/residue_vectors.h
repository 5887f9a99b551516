// The two layouts of a residue's network input.
#pragma once

#include <cstddef>
#include <vector>

#include "base/atoms.h"
#include "base/residues.h"

inline constexpr std::size_t kShiftEntries = 2 * kAtoms;  ///< (secondary shift, missing flag) in kInputOrder
inline constexpr std::size_t kResidueEntries = kShiftEntries + kAminoAcids.size();  ///< and the type values
/// Chi1 networks: of three residues sin and cos of phi and psi, chi1 with a flag, a deviation per atom.
inline constexpr std::size_t kChi1Entries = 3 * (7 + kAtoms);
inline constexpr double kTypeScale = 10.0;  ///< residue type values are matrix scores / 10

/// Shifts-first layout -> residue type first, in whole matrix scores. `entry` holds kResidueEntries values.
inline std::vector<double> typeFirst(const std::vector<double>& entry) {
  std::vector<double> result;
  for (std::size_t i = kShiftEntries; i < entry.size(); ++i) result.push_back(entry[i] * kTypeScale);
  for (std::size_t i = 0; i < kShiftEntries; ++i) result.push_back(entry[i]);
  return result;
}
