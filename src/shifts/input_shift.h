// Shift of an input row, with the one rule of what counts as a shift.
#pragma once

#include <cmath>
#include <cstdlib>
#include <optional>

#include "base/missing.h"
#include "tables/GDB.h"

/// SHIFT of an input row in ppm. None when the row stands for a missing shift: 999 or more, no number, or a
/// number that is not finite or whose square is not, which would turn distances into non-numbers. Such a row
/// acts everywhere as if it were not there.
inline std::optional<double> inputShift(const GDB::Row& row) {
  constexpr double kSmallest = -1e100;
  const std::string& cell = GDB::cell(row, "SHIFT");
  char* end = nullptr;
  const double shift = std::strtod(cell.c_str(), &end);
  if (end == cell.c_str() || !(shift > kSmallest && isPresent(shift))) return std::nullopt;
  return shift;
}
