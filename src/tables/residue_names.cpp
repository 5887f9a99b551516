// Three-letter residue names -> one-letter codes.
#include <algorithm>
#include <array>
#include <utility>

#include "tables/PDB.h"

namespace {

using NameCode = std::pair<std::string_view, char>;

// Lower-case names carry a state: "cys" is disulfide-bonded. A '+' marks the protonated form.
constexpr std::array<NameCode, 25> kCodes{{
    {"ALA", 'A'}, {"CYS", 'C'},  {"cys", 'c'}, {"ASP", 'D'}, {"GLU", 'E'}, {"PHE", 'F'},  {"GLY", 'G'},
    {"HIS", 'H'}, {"HIS+", 'H'}, {"his", 'h'}, {"ILE", 'I'}, {"LYS", 'K'}, {"LYS+", 'K'}, {"LEU", 'L'},
    {"MET", 'M'}, {"ASN", 'N'},  {"PRO", 'P'}, {"GLN", 'Q'}, {"ARG", 'R'}, {"ARG+", 'R'}, {"SER", 'S'},
    {"THR", 'T'}, {"VAL", 'V'},  {"TRP", 'W'}, {"TYR", 'Y'},
}};

}  // namespace

std::string PDB::getOneAAName(std::string_view name) {
  const auto it =
      std::find_if(kCodes.begin(), kCodes.end(), [name](const NameCode& e) { return e.first == name; });
  return {it == kCodes.end() ? 'X' : it->second};
}
