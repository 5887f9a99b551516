// Which residues of a shift list belong to a protein: amino acids, nucleotides and everything else.
#pragma once

#include <string_view>
#include <vector>

#include "convert/entry.h"

namespace convert {

/// A plain amino acid, one of its states or a known modification, by a name of three letters or more.
bool isAminoAcidName(std::string_view name);

/// True when a sequence is one of amino acids: by names, or by letters that are not those of nucleic acids.
bool areAminoAcids(const std::vector<Residue>& residues);

/// Takes ligands, nucleotides, water and ions out of the shifts of chains without a given sequence, where
/// nothing but the rows tells what they are (Entry::others counts them). A chain of which nothing is left
/// becomes no protein.
void leaveOutOtherMolecules(Entry& entry);

}  // namespace convert
