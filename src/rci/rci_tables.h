// Random coil shifts and sequence corrections of the random coil index.
#pragma once

#include <array>
#include <string_view>

#include "base/atoms.h"

/// Residue codes with a row in the tables below, in row order; c is oxidised cysteine, h the second form of
/// H, X any other residue.
inline constexpr std::string_view AAseqList = "ARNDCcQEGHILKMFPSTWYVhX";

/// One row per residue code; columns in kCoilOrder, ppm. 9999: the residue has no such atom.
using RCITable = std::array<std::array<double, kAtoms>, AAseqList.size()>;

/// Random coil shifts of denatured model peptides (Schwarzinger et al., J. Biomol. NMR 18, 43-48, 2000).
extern const RCITable random_coil;

/// Effects of a residue at i - 1, i + 1, i - 2 and i + 2 on the shifts of residue i (Schwarzinger et al.,
/// J. Am. Chem. Soc. 123, 2970-2978, 2001).
extern const RCITable preceed_res_effect;
extern const RCITable next_res_effect;
extern const RCITable preceed_preceed_res_effect;
extern const RCITable next_next_res_effect;
