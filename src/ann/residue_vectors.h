// Residue codes and the two layouts of a residue's network input.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

inline constexpr std::size_t kShiftEntries = 12;    ///< six (secondary shift, missing flag) pairs
inline constexpr std::size_t kResidueEntries = 32;  ///< shift entries and 20 residue type values
inline constexpr double kTypeScale = 10.0;          ///< residue type values are matrix scores / 10

/// The residue type of a code: both forms of cysteine and histidine count as one.
inline std::string foldedCode(const std::string& code) {
  if (code == "c") return "C";
  if (code == "h") return "H";
  return code;
}

/// Shifts-first layout -> residue type first, in whole matrix scores. `entry` holds 32 values.
inline std::vector<double> typeFirst(const std::vector<double>& entry) {
  std::vector<double> result;
  for (std::size_t i = kShiftEntries; i < entry.size(); ++i) result.push_back(entry[i] * kTypeScale);
  for (std::size_t i = 0; i < kShiftEntries; ++i) result.push_back(entry[i]);
  return result;
}
