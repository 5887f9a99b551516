// Residue numbers of the converted chain, from the file or by a sequence given beside it.
#pragma once

#include <string>
#include <vector>

#include "convert/entry.h"

namespace convert {

/// Numbers the residues as the author does (by the sequence, else by the shift rows) when those numbers rise;
/// residues that they leave out become X. Gaps of more than 100 residues, insertion codes and falling numbers
/// cannot be kept: numbered from 1, with a warning. `settings.firstResid` overrides. With `sequenceFollows`
/// gaps are left to applySequence(). What was done goes to `remarks`.
bool numberResidues(const Entry& entry, Chain& chain, const Settings& settings, bool sequenceFollows,
                    std::vector<std::string>& remarks, Log& log);

/// Replaces the residues of `chain` by those of a sequence file, placed so that they agree with the residue
/// types of the shifts. An error names the first disagreement when they fit nowhere.
bool applySequence(const Entry& entry, Chain& chain, const std::vector<Chain>& sequences,
                   const Settings& settings, std::vector<std::string>& remarks, Log& log);

}  // namespace convert
