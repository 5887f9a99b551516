// Rotamer of a chi1 value.
#include "base/missing.h"
#include "driver/ORBEL.h"

std::string ORBEL::getChi1Rotamer(float chi1) {
  if (isBeyondLimit(static_cast<double>(chi1))) return "na";
  if (chi1 > -120.0F && chi1 <= 0.0F) return "g-";
  if (chi1 > 0.0F && chi1 <= 120.0F) return "g+";
  return "t";
}
