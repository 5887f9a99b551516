// How residues are called in texts and in files that spell types out.
#pragma once

#include <string>
#include <vector>

namespace predictions {

/// "THR"; "UNK" for X, ? and unknown letters.
const char* threeLetterName(char code);

/// "3-5, 9" for {3, 4, 5, 9}.
std::string residueRanges(const std::vector<int>& residues);

}  // namespace predictions
