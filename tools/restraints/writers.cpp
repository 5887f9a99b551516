// What the writers share: the comment block and one-line descriptions.
#include "restraints/writers.h"

#include <cstdarg>
#include <cstdio>

#include "predictions/names.h"

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

std::string describe(const Restraint& restraint) {
  return std::to_string(restraint.resid) + " " + predictions::threeLetterName(restraint.code) + " " +
         restraint.angleName() + ", " + restraint.note;
}

}  // namespace restraints
