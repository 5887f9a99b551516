// How the residues of a restraint list are called in the user's topology: number, name, chain.
#include "restraints/labels.h"

#include <set>

#include "common/residue_variants.h"
#include "predictions/names.h"

namespace restraints {

std::string Labels::number(int resid) const {
  const auto it = numbers.find(resid);
  return it == numbers.end() ? std::to_string(resid) : it->second;
}

std::string Labels::name(int resid, char code) const {
  const auto it = names.find(resid);
  if (it != names.end()) return it->second;
  return predictions::isUnknownType(code) ? std::string() : predictions::threeLetterName(code);
}

std::string Labels::componentName(int resid, char code) const {
  const std::string given = name(resid, code);
  const tools::ResidueVariant* variant = fixed ? nullptr : tools::findResidueVariant(given);
  if (variant == nullptr || variant->kind == tools::VariantKind::Modified) return given;
  return predictions::threeLetterName(variant->parent);
}

std::string Labels::sharedNumber() const {
  std::set<std::string> seen;
  for (const auto& [resid, number] : numbers) {
    if (!seen.insert(number).second) return number;
  }
  return {};
}

}  // namespace restraints
