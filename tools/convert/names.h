// Residue, atom and number conventions of the exchange formats, brought to those of the input table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace convert {

/// One-letter code of a residue name: three letters in any case, one letter, charged and protonation
/// variants (ARG+, ASP-, HISE ...), CYSS and the like as 'c', cPRO as 'P'; 'X' for everything else, modified
/// residues included. A selenomethionine is 'M' when `mseAsMet`.
char residueCode(std::string_view name, bool mseAsMet = false);

/// The code of the residue that a modified one was made from ('c' where its sulfur is bound); the same as
/// residueCode() for all others.
char parentCode(std::string_view name);

/// One of the 20 amino acids or an oxidized cysteine.
bool isStandard(char code);

/// The three-letter name of a one-letter code; the code itself when it has none.
std::string threeLetterName(char code);

/// What an atom of the given residue is called among the six backbone atoms: N, HN, HA, C, CA, CB; for
/// glycine HA1, HA2, HA3 and "HA*" for a value of both. Empty for every other atom.
std::string backboneAtom(char code, std::string_view atom);

/// The integer a text consists of entirely, blanks around it allowed.
std::optional<int> wholeInteger(std::string_view text);

/// The number a text consists of entirely; nan and inf are numbers here.
std::optional<double> wholeNumber(std::string_view text);

/// The shift range in ppm outside which a value belongs to no protein backbone atom of that name.
bool plausibleShift(std::string_view backboneAtom, double ppm);

}  // namespace convert
