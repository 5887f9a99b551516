// How residues are called in texts and in files that spell types out.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace predictions {

/// True for X, ? and letters that stand for no residue type.
bool isUnknownType(char code);
/// "THR"; "UNK" for an unknown type.
std::string threeLetterName(char code);

/// "3-5, 9" for {3, 4, 5, 9}; `name` says how a residue is called where that differs from its number.
std::string residueRanges(
    const std::vector<int>& residues,
    const std::function<std::string(int)>& name = [](int resid) { return std::to_string(resid); });

}  // namespace predictions
