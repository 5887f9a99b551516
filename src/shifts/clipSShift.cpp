// Secondary shifts brought into the limits observed for their residue type and atom.
#include <cstdio>

#include "base/maps.h"
#include "base/missing.h"
#include "driver/ORBEL.h"
#include "tables/text.h"

double ORBEL::clipSShift(int resid, double shift, const std::string& atom) const {
  const std::string code = valueOr(sequence, resid);
  double lowest = 0.0;
  double highest = 0.0;
  if (const GDB::Row* row = ssLimitTable.findRow("RESNAME", code)) {
    lowest = text::toDouble(GDB::cell(*row, atom + "_MIN"));
    highest = text::toDouble(GDB::cell(*row, atom + "_MAX"));
  }
  double clipped = shift;
  if (shift < lowest && isPresent(shift)) {
    clipped = lowest;
  } else if (shift > highest && isPresent(shift)) {
    clipped = highest;
  }
  if (clipped < shift || clipped > shift) {
    if (reportClipping && !quiet) {
      std::printf(" Clipped %3d %s %3s Secondary Shift: %8.3f Limit: %8.3f\n", resid, code.c_str(),
                  atom.c_str(), shift, clipped);
    }
  }
  return clipped;
}
