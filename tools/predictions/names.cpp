// How residues are called in texts and in files that spell types out.
#include "predictions/names.h"

#include <cctype>

#include "common/residue_variants.h"

namespace predictions {

bool isUnknownType(char code) {
  return threeLetterName(code) == "UNK";
}

/// Lower case marks a state of the residue: c an oxidized cysteine, p a cis proline, h a charged histidine.
std::string threeLetterName(char code) {
  return std::string(
      tools::plainResidueName(static_cast<char>(std::toupper(static_cast<unsigned char>(code)))));
}

std::string residueRanges(const std::vector<int>& residues, const std::function<std::string(int)>& name) {
  std::string ranges;
  for (std::size_t i = 0; i < residues.size();) {
    std::size_t end = i;
    while (end + 1 < residues.size() && residues[end + 1] == residues[end] + 1) ++end;
    if (!ranges.empty()) ranges += ", ";
    ranges += name(residues[i]);
    const char* between = end == i + 1 ? ", " : residues[i] < 0 ? " to " : "-";
    if (end > i) ranges += between + name(residues[end]);
    i = end + 1;
  }
  return ranges;
}

}  // namespace predictions
