// Residue types: one-letter codes, three-letter names, states that count as one type.
#pragma once

#include <string>
#include <string_view>

/// The 20 types in the order of profiles and network inputs.
inline constexpr std::string_view kAminoAcids = "ACDEFGHIKLMNPQRSTVWY";
/// The same in the order of score matrices and of PSI-BLAST checkpoints.
inline constexpr std::string_view kScoreOrder = "ARNDCQEGHILKMFPSTWYV";
static_assert(kAminoAcids.size() == kScoreOrder.size());

/// Code of a three-letter name as coordinate files and shift tables write it, 'X' for any other. The case
/// tells: "cys" is disulfide-bonded ('c') and "his" the second form of histidine ('h').
char oneLetterCode(std::string_view name);
/// Capital name of a code, states folded; empty for no residue type.
std::string_view threeLetterName(char code);

/// Oxidised cysteine and the second form of histidine count as the common type.
constexpr char foldedCode(char code) {
  if (code == 'c') return 'C';
  if (code == 'h') return 'H';
  return code;
}
inline std::string foldedCode(const std::string& code) {
  return code.size() == 1 ? std::string(1, foldedCode(code[0])) : code;
}

/// Reduced or oxidised.
constexpr bool isCysteine(std::string_view code) {
  return code == "C" || code == "c";
}

/// Alanine and glycine have no chi1, that of proline is bound by its ring.
constexpr bool hasChi1Rotamers(char code) {
  return code != 'A' && code != 'G' && code != 'P';
}
