// Angle and phi/psi box arithmetic shared by the stages. Degrees throughout.
#pragma once

/// Difference of two angles brought into -180..180 by adding or subtracting 360 once.
constexpr double wrapOnce(double difference) {
  if (difference > 180.0) return difference - 360.0;
  if (difference < -180.0) return difference + 360.0;
  return difference;
}

/// Shifts, angles and table values of 999 or more stand for "missing"; 9999 is written for them.
inline constexpr double kMissingLimit = 999.0;
inline constexpr double kMissingValue = 9999.0;
