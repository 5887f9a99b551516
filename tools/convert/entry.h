// What every reader makes of its file: chains with their sequence, shift lists, shifts with line numbers.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "common/log.h"

namespace convert {

using tools::Log;

/// One residue of a chain, in sequence order.
struct Residue {
  std::string key;     ///< how the shifts of the same file refer to it; empty when none does
  std::string name;    ///< as in the file: three letters, one letter or a variant; empty when unknown
  std::string author;  ///< the author's residue number, empty when none is given
  char code = 'X';     ///< one-letter code, see residueCode()
  int line = 0;
  int number = 0;  ///< RESID of the table; set by numberResidues()
};

struct Chain {
  std::string id;
  std::vector<std::string> aliases;  ///< other names a user may choose it by
  std::string description;
  std::vector<Residue> residues;
  bool protein = true;         ///< false for nucleic acids and other molecules
  bool sequenceGiven = false;  ///< false: put together from the shift rows
  std::string entity;          ///< molecule that this chain is a copy of, where the format knows such a thing
  bool idGiven = false;        ///< the file names the chain so; false for the "1" of files without chains
};

struct ShiftList {
  std::string id;
  std::string name;
  std::string details;
  std::vector<std::string> aliases = {};  ///< other names a user may choose it by
};

/// One assigned shift as read.
struct Shift {
  std::string chain;     ///< Chain::id
  std::string list;      ///< ShiftList::id
  std::string residue;   ///< Residue::key
  std::string name;      ///< residue name in the shift row, may be empty
  std::string atom;      ///< as in the file
  std::string text;      ///< the value as in the file
  std::string author;    ///< author's residue number in the shift row, may be empty
  int ambiguity = 0;     ///< NMR-STAR ambiguity code, 0 when not given
  bool missing = false;  ///< the file says that there is no value
  int line = 0;
};

/// Isotope labelling of one component of a sample.
struct Labelling {
  std::string entity;  ///< molecule it is about; empty for buffers, solvents and the like
  std::string text;
};

struct Entry {
  std::string format;  ///< in words, as in "NMR-STAR 3.1.1.61"
  std::string title;   ///< what the entry is about, empty when the file does not say
  std::vector<Chain> chains;
  std::vector<ShiftList> lists;
  std::vector<Shift> shifts;
  std::vector<std::string> facts;  ///< context worth a remark
  std::vector<Labelling> labelling;
  std::size_t unassigned = 0;                               ///< shift rows of no residue of the sequence
  std::vector<std::pair<std::string, std::size_t>> others;  ///< ligands and the like: name, their shift rows
  bool zeroIsMissing = false;
  bool needsSequence = false;  ///< the format carries no sequence worth the name
  bool sequenceAlone = false;  ///< it holds a sequence and no shift list

  Chain* findChain(const std::string& id);
  const Chain* findChain(const std::string& id) const;
  const Residue* findResidue(const Chain& chain, const std::string& key) const;
  /// Counts a shift row of a molecule that is no part of any protein chain.
  void leaveOut(const std::string& molecule);
};

/// Settings that a user may change.
struct Settings {
  std::string format;        ///< empty: recognise it from the content
  std::string chain, list;   ///< empty: the only one
  std::string sequenceFile;  ///< FASTA or XEASY .seq; empty: none
  std::string columns;       ///< --columns: "resid=1,atom=3,...", empty: found by headings and content
  std::string firstResid;    ///< number of the first residue; empty: as in the file
  int listOffset = 0;        ///< residues that the shifts are moved by against the sequence
  bool mseAsMet = false;
  bool modifiedAsParent = false;  ///< take modified residues as the plain ones they were made from
  bool keepFirst = false;
  bool skipAmbiguous = false;
  bool strict = false;
};

}  // namespace convert
