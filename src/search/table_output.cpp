// Parts shared by the writers of the prediction tables.
#include "search/table_output.h"

#include <cmath>

#include "base/maps.h"
#include "base/missing.h"
#include "tables/output_text.h"

std::string finiteCell(double value) {
  return cellText(std::isfinite(value) ? value : kMissingValue);
}

std::string residueName(const std::map<int, std::string>& names, int resid) {
  const std::string* name = findValue(names, resid);
  return name != nullptr && name->size() == 1 ? *name : "?";
}

char printableCode(char code) {
  return code > ' ' && code < '\x7f' ? code : '?';
}

void addRemarks(GDB& table, const std::vector<std::string>& remarks) {
  for (const std::string& remark : remarks) table.addRemark(remark);
}

void addReferenceRemarks(GDB& table) {
  addRemarks(table, {"Reference:", " ORBEL-N: protein torsion angles from chemical shifts by neural networks",
                     " and fragments of known structure; the manual tells how to cite it.",
                     " Shifts and backbone conformation: D. S. Wishart, B. D. Sykes and",
                     " F. M. Richards, J. Mol. Biol. 222, 311-333 (1991)."});
}

void addSequenceData(GDB& table, const GDB& input) {
  table.setData("FIRST_RESID", cellText(input.firstResid));
  table.setData("SEQUENCE", input.getData("SEQUENCE"));
}
