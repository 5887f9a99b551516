// One atom of a reference structure.
#pragma once

#include <cstdint>
#include <string>

struct CORdata {
  std::int32_t serial = 0;
  std::int32_t resid = 0;
  std::string atomName;  ///< normalised; empty stands for a missing atom
  std::string resName;   ///< three letters
  std::string chainID;
  float x = 0.0F, y = 0.0F, z = 0.0F;  ///< angstrom
  float bFactor = 0.0F;
  float x2 = 0.0F, y2 = 0.0F, z2 = 0.0F;  ///< second coordinate triple, equal to the first after reading
};
