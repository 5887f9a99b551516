// What the conversion of a shift list noted about its source in the remarks of the input table.
#pragma once

#include <list>
#include <map>
#include <string>

namespace predictions {

/// From the lines REMARK ENTRY, CHAIN and LIST with a text, REMARK NAME and NUMBER with the table's residue
/// number and a word. Other remarks, and words that no output
/// could carry, are passed over.
struct InputNotes {
  std::string entry, chain, list;
  std::map<int, std::string> names;    ///< residue names of the source, where they say more than the code
  std::map<int, std::string> numbers;  ///< residue numbers of the source, insertion code included
};

InputNotes readInputNotes(const std::list<std::string>& remarks);

}  // namespace predictions
