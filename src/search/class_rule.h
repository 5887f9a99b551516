// Reliability class of a residue's torsion prediction, with the values written beside it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/missing.h"
#include "base/residue_range.h"
#include "tables/PDB.h"

/// Torsions of the reference structure.
struct ReferenceTorsions {
  float phi = 0.0F, psi = 0.0F;  ///< degrees, 9999 = undefined
  int box = 0;                   ///< phi/psi box; 0 = no usable torsions
};

/// One row of the summary table.
struct TorsionPrediction {
  double phi = kMissingValue, psi = kMissingValue;  ///< circular means of the consensus, degrees
  double dphi = 0.0, dpsi = 0.0;                    ///< circular spreads, degrees
  double distance = 0.0;                            ///< mean ranking key of the matches
  double s2 = 0.0;  ///< order parameter, 0 where undefined or without a prediction
  int count = 0;
  std::string className = "None";  ///< None, Strong, Generous, Warn, Dyn or Bad
};

/// Torsions of residue `resid` in `structure`, with the box set to 0 where one of them is undefined.
ReferenceTorsions referenceTorsions(const PDB& structure, int resid);

/// What a residue's class and values are drawn from.
struct ClassInput {
  int resid = 0;
  ResidueSpan span;
  std::vector<double> phi, psi, distance;  ///< of the consensus, and of all matches
  int count = 0;
  double flexibility = 0.0;  ///< 9999 = undefined
  int topCount = 10;
  double s2Cutoff = 0.4;  ///< 1 - smallest accepted S2
};

/// A residue with reference torsions is Bad when it deviates by 60 degrees or more, 80 where the reference
/// lies in a sparsely populated box.
TorsionPrediction classifyResidue(const ClassInput& input, const std::optional<ReferenceTorsions>& reference);
