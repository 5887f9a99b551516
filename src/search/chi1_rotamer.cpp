// Rotamer of a chi1 value.
#include "driver/ORBEL.h"

std::string ORBEL::getChi1Rotamer(float chi1) {
  if (chi1 > 999.0F) return "na";
  if (chi1 > -120.0F && chi1 <= 0.0F) return "g-";
  if (chi1 > 0.0F && chi1 <= 120.0F) return "g+";
  return "t";
}
