// The triplet distance by its definition: what the kernel is compared with.
#pragma once

#include "shifts/triplet_distance.h"

namespace support {

/// The definition, one row at a time.
inline float plainDistance(const TripletLibrary& library, std::size_t row, const TripletQuery& query,
                           const std::array<std::array<double, 7>, 4>& ring,
                           const std::array<double, 7>& atoms, const std::array<double, 4>& scale) {
  float d = 0.0F;
  for (std::size_t p = 1; p <= 3; ++p) {
    for (std::size_t atom = 1; atom <= 6; ++atom) {
      const double x = library.values[(p - 1) * 6 + atom - 1][row];
      const double y = static_cast<double>(query.shifts[(p - 1) * 6 + atom - 1]);
      double term = ring[p][atom] * ((x - y) * (x - y));
      if (x > 999 || y > 999) term = ring[p][atom] * atoms[atom];
      d = static_cast<float>(static_cast<double>(d) + term);
    }
    const double h = query.homology[p - 1][static_cast<std::size_t>(library.nameIds[p - 1][row])];
    d = static_cast<float>(static_cast<double>(d) + scale[p] * (h * h));
  }
  return d;
}

}  // namespace support
