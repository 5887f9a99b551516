// Residue labels (M1, Met1, 1MET, A.43.ALA) and assignments (M1CA, 43.CA, A.43.ALA.CA) in one word.
#pragma once

#include <string>
#include <string_view>

namespace convert {

struct Assignment {
  std::string chain, name, number, atom;  ///< empty when not given
};

/// Takes a label apart. False when it names no residue number, or a residue known relative to another one
/// only (43-1). With `dashJoins` a dash is a separator (Met-1 is residue 1), otherwise the sign of the
/// number.
bool parseAssignment(std::string_view text, bool dashJoins, Assignment& assignment);

/// Whether the text is the name of an atom of a protein, pseudo atoms included.
bool looksLikeAtom(std::string_view text);

/// What stands for the atom in a column heading: CA for "Ca", "13CA", "C\u03B1 (ppm)", N for "15N" and "N15",
/// HN for "1H"; empty for headings that name no atom, those of the residue before (CA-1) included.
std::string atomOfHeading(std::string_view heading);

/// A heading in lower case with letters and digits alone: greek letters spelled, units and STAR prefixes
/// gone.
std::string plainHeading(std::string_view heading);

}  // namespace convert
