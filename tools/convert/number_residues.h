// Residue numbers of the converted chain, from the file or by a sequence given beside it.
#pragma once

#include <string>
#include <vector>

#include "convert/entry.h"

namespace convert {

/// Numbers the residues as the author does when those numbers are integers rising by one (from the sequence,
/// else from the shift rows), else from 1; `settings.firstResid` overrides. What was done goes to `remarks`.
bool numberResidues(const Entry& entry, Chain& chain, const Settings& settings,
                    std::vector<std::string>& remarks, Log& log);

/// Replaces the residues of `chain` by those of a sequence file, placed so that they agree with the residue
/// types of the shifts. An error names the first disagreement when they fit nowhere.
bool applySequence(const Entry& entry, Chain& chain, const std::vector<Chain>& sequences,
                   const Settings& settings, std::vector<std::string>& remarks, Log& log);

}  // namespace convert
