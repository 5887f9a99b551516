// Reliability class of a residue's torsion prediction, with the values written beside it.
#pragma once

#include <optional>
#include <string>

#include "driver/ORBEL.h"

/// Torsions of the reference structure.
struct ReferenceTorsions {
  float phi = 0.0F, psi = 0.0F;  ///< degrees, 9999 = undefined
  int box = 0;                   ///< phi/psi box; 0 = no usable torsions
};

/// One row of the summary table.
struct TorsionPrediction {
  double phi = 9999.0, psi = 9999.0;  ///< circular means of the consensus, degrees
  double dphi = 0.0, dpsi = 0.0;      ///< circular spreads, degrees
  double distance = 0.0;              ///< mean ranking key of the matches
  double s2 = 0.0;                    ///< order parameter, 0 where undefined or without a prediction
  int count = 0;
  std::string className = "None";  ///< None, Strong, Generous, Warn, Dyn or Bad
};

/// Torsions of residue `resid` in `structure`, with the box set to 0 where one of them is undefined.
ReferenceTorsions referenceTorsions(const PDB& structure, int resid);

/// The prediction of residue `resid` (a residue of the range) from its match lists, count and order
/// parameter. A residue with reference torsions is Bad when it deviates by 60 degrees or more, 80 where the
/// reference lies in a sparsely populated box.
TorsionPrediction classifyResidue(const ORBEL& run, int resid,
                                  const std::optional<ReferenceTorsions>& reference);

/// Backbone shifts present among `resid` and its two neighbours, of 18.
int tripletShiftCount(const ORBEL& run, int resid);
