// How residues are called in texts and in files that spell types out.
#include "predictions/names.h"

#include <utility>

namespace predictions {

namespace {

constexpr std::pair<char, const char*> kNames[] = {
    {'A', "ALA"}, {'R', "ARG"}, {'N', "ASN"}, {'D', "ASP"}, {'C', "CYS"}, {'c', "CYS"},
    {'Q', "GLN"}, {'E', "GLU"}, {'G', "GLY"}, {'H', "HIS"}, {'h', "HIS"}, {'I', "ILE"},
    {'L', "LEU"}, {'K', "LYS"}, {'M', "MET"}, {'F', "PHE"}, {'P', "PRO"}, {'p', "PRO"},
    {'S', "SER"}, {'T', "THR"}, {'W', "TRP"}, {'Y', "TYR"}, {'V', "VAL"}};

}  // namespace

const char* threeLetterName(char code) {
  for (const auto& [known, name] : kNames) {
    if (known == code) return name;
  }
  return "UNK";
}

std::string residueRanges(const std::vector<int>& residues) {
  std::string ranges;
  for (std::size_t i = 0; i < residues.size();) {
    std::size_t end = i;
    while (end + 1 < residues.size() && residues[end + 1] == residues[end] + 1) ++end;
    if (!ranges.empty()) ranges += ", ";
    ranges += std::to_string(residues[i]);
    const char* between = end == i + 1 ? ", " : residues[i] < 0 ? " to " : "-";
    if (end > i) ranges += between + std::to_string(residues[end]);
    i = end + 1;
  }
  return ranges;
}

}  // namespace predictions
