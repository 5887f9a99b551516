// SHIFTY: one row per residue under the header #NUM AA HA CA CB CO N HN; 0 or **** stands for a missing
// shift.
#include "convert/readers.h"

namespace convert {

bool readShifty(std::string_view text, const std::string& given, Entry& entry, Log& log) {
  entry.zeroIsMissing = true;
  const bool read = readDelimited(text, given, entry, log);
  entry.format = "SHIFTY";
  return read;
}

}  // namespace convert
