// How the residues of a restraint list are called in the user's topology: number, name, chain.
#include "restraints/labels.h"

#include <set>

#include "common/residue_variants.h"
#include "predictions/names.h"
#include "tables/text.h"

namespace restraints {

namespace {

void quote(std::string& word) {
  const std::string raised = text::upper(word);
  bool special = word == "." || word == "?" ||
                 (!word.empty() && std::string_view("_#$'\"[];").find(word[0]) != std::string_view::npos);
  for (const char* keyword : {"DATA_", "LOOP_", "SAVE_", "STOP_", "GLOBAL_"})
    special = special || raised.starts_with(keyword);
  if (special) word = word[0] == '\'' ? '"' + word + '"' : '\'' + word + '\'';
}

}  // namespace

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

void Labels::quoteForStar() {
  quote(chain);
  for (auto& [resid, number] : numbers) quote(number);
  for (auto& [resid, name] : names) quote(name);
}

std::string Labels::sharedNumber() const {
  std::set<std::string> seen;
  for (const auto& [resid, number] : numbers) {
    if (!seen.insert(number).second) return number;
  }
  return {};
}

}  // namespace restraints
