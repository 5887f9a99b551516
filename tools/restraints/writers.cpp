// What the writers share: the comment block and one-line descriptions.
#include "restraints/writers.h"

#include <cstdarg>
#include <cstdio>

namespace restraints {

std::string print(const char* format, ...) {
  char buffer[512];
  va_list values;
  va_start(values, format);
  std::vsnprintf(buffer, sizeof buffer, format, values);
  va_end(values);
  return buffer;
}

std::string commentBlock(const RestraintList& list, const std::string& lead) {
  std::string block =
      lead + "Dihedral restraints from chemical shifts, orbeln-restraints " ORBELN_VERSION "\n";
  for (const std::string& statement : list.report) block += lead + statement + "\n";
  return block;
}

std::vector<SequenceResidue> namedResidues(const RestraintList& list) {
  std::vector<SequenceResidue> residues;
  for (const auto& [resid, code] : list.sequence) {
    std::string name = list.labels.componentName(resid, code);
    if (!name.empty()) residues.push_back({resid, code, list.labels.number(resid), std::move(name)});
  }
  return residues;
}

std::string describe(const Restraint& restraint, const Labels& labels) {
  const std::string name = labels.name(restraint.resid, restraint.code);
  return labels.number(restraint.resid) + " " + (name.empty() ? "X" : name) + " " + restraint.angleName() +
         ", " + restraint.note;
}

}  // namespace restraints
