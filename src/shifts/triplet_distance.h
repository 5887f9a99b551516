// Distance kernel of the triplet averaging: one query triplet against every library row.
#pragma once

#include <array>
#include <vector>

#include "shifts/triplet_library.h"

/// A query triplet as numbers.
struct TripletQuery {
  std::array<float, 3 * kAtoms> shifts{};       ///< [(p - 1) * kAtoms + column], ppm; above 999 = missing
  std::array<std::vector<double>, 3> homology;  ///< [p - 1][library name id]: difference of residue types
};

/// One distance per library row: weighted squared shift differences (a fixed cost for missing shifts) and
/// squared residue-type differences, summed in the order p, atoms, type. Each term is formed in double
/// precision, the running sum kept in single: part of the definition, since equal distances collapse.
std::vector<float> tripletDistances(const TripletLibrary& library, const TripletQuery& query,
                                    const std::array<AtomWeights, 4>& ringWeights,
                                    const AtomWeights& atomWeights, const std::array<double, 4>& ringScale);
