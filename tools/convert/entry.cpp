// What every reader makes of its file: chains with their sequence, shift lists, shifts with line numbers.
#include "convert/entry.h"

#include <algorithm>

namespace convert {

Chain* Entry::findChain(const std::string& id) {
  const auto it = std::find_if(chains.begin(), chains.end(), [&](const Chain& c) { return c.id == id; });
  return it == chains.end() ? nullptr : &*it;
}

const Chain* Entry::findChain(const std::string& id) const {
  const auto it = std::find_if(chains.begin(), chains.end(), [&](const Chain& c) { return c.id == id; });
  return it == chains.end() ? nullptr : &*it;
}

const Residue* Entry::findResidue(const Chain& chain, const std::string& key) const {
  const auto it = std::find_if(chain.residues.begin(), chain.residues.end(),
                               [&](const Residue& r) { return r.key == key; });
  return it == chain.residues.end() ? nullptr : &*it;
}

void Entry::leaveOut(const std::string& molecule) {
  const auto it =
      std::find_if(others.begin(), others.end(), [&](const auto& other) { return other.first == molecule; });
  if (it != others.end()) {
    ++it->second;
  } else {
    others.emplace_back(molecule, 1);
  }
}

}  // namespace convert
