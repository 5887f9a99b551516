// Rows of the adjusted-shift table: observed shift, subtracted reference value, secondary shift.
#pragma once

#include <string>

#include "driver/ORBEL.h"

/// Fills adjustedShiftTable (one row per residue of the range and atom), secondaryShift, missingCount,
/// residueCode and shiftAdjustment from the input table and the reference tables.
void fillAdjustedShifts(ORBEL& run);

/// `format` holds one %6.3f for the offset in ppm.
std::string formatOffset(const char* format, double offset);
