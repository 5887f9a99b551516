// Do the values make sense where they stand? Units, exchanged atoms, a list moved against its sequence.
#pragma once

#include <string>

#include "convert/entry.h"

namespace convert {

/// Looks at the shifts of one list of a numbered chain. What cannot be a protein's (values in Hz, exchanged N
/// and HN, residue types that fit the sequence only when moved) is an error, false; what looks wrong (CA and
/// CB exchanged, values that fit better some residues further on) a warning. Nothing is changed.
bool checkSense(const Entry& entry, const Chain& chain, const std::string& list, Log& log);

/// Moves the shifts of a chain by `offset` residues against its sequence, as the user asks for. Rows that
/// leave the sequence are an error.
bool moveList(Entry& entry, const Chain& chain, int offset, Log& log);

}  // namespace convert
