// The triplet library: secondary shifts of residue triplets observed in known structures.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "base/atoms.h"

/// One weight per atom at its position, from 1.
using AtomWeights = std::array<double, kAtoms + 1>;

/// Values column by column, so that the distances of a query to all rows run in lockstep.
struct TripletLibrary {
  int rows = 0;
  std::array<std::vector<double>, 3 * kAtoms> values;  ///< [(p - 1) * kAtoms + column][row], ppm
  std::array<std::vector<double>, kAtoms> centre;  ///< centre shifts as in the table, whatever is excluded
  std::vector<std::string> names;                  ///< distinct residue names of the library
  std::array<std::vector<int>, 3> nameIds;         ///< [p - 1][row] -> names
  std::vector<std::string> sources;                ///< [row]
};

/// Record key of an item at position p (1 to 3): "CA_R2", "RESNAME_R1".
std::string tripletKey(const std::string& item, int p);

/// Reads a library table; ends the process (exit status 0) when it cannot be opened.
TripletLibrary readTripletLibrary(const std::string& file, const std::map<int, std::string>& atomNames);

/// Gives the rows whose source occurs in `exclusionList` values that match nothing.
void excludeSources(TripletLibrary& library, const std::string& exclusionList);
