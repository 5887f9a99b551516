// Three-letter residue names and their one-letter codes.
#include "base/residues.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

using NameCode = std::pair<std::string_view, char>;

// The common name of a code stands first. A '+' marks the protonated form.
constexpr std::array<NameCode, 25> kCodes{{
    {"ALA", 'A'}, {"CYS", 'C'},  {"cys", 'c'}, {"ASP", 'D'}, {"GLU", 'E'}, {"PHE", 'F'},  {"GLY", 'G'},
    {"HIS", 'H'}, {"HIS+", 'H'}, {"his", 'h'}, {"ILE", 'I'}, {"LYS", 'K'}, {"LYS+", 'K'}, {"LEU", 'L'},
    {"MET", 'M'}, {"ASN", 'N'},  {"PRO", 'P'}, {"GLN", 'Q'}, {"ARG", 'R'}, {"ARG+", 'R'}, {"SER", 'S'},
    {"THR", 'T'}, {"VAL", 'V'},  {"TRP", 'W'}, {"TYR", 'Y'},
}};

}  // namespace

char oneLetterCode(std::string_view name) {
  const auto it = std::ranges::find(kCodes, name, &NameCode::first);
  return it == kCodes.end() ? 'X' : it->second;
}

std::string_view threeLetterName(char code) {
  const auto it = std::ranges::find(kCodes, foldedCode(code), &NameCode::second);
  return it == kCodes.end() ? std::string_view() : it->first;
}
