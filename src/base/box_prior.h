// Prior of the phi/psi boxes.
#pragma once

#include <array>

#include "base/boxes.h"

/// How often proteins visit each box: the average over residues of known structure of exp(-d^2 / 2), d the
/// distance in boxes between the residue's own torsions and the box centre. Sums to about 2 pi.
extern const std::array<double, kPhiPsiBoxes> D324;

/// Factor of a predicted box value: the square root of the prior, at least 0.03. `box` is a box of the grid.
double boxWeight(int box);

/// True for boxes that few residues visit (prior below 0.06).
bool isSparseBox(int box);
