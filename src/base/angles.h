// Arithmetic of angles. Degrees throughout.
#pragma once

#include <numbers>
#include <vector>

/// Difference of two angles brought into -180..180 by adding or subtracting 360 once.
constexpr double wrapOnce(double difference) {
  if (difference > 180.0) return difference - 360.0;
  if (difference < -180.0) return difference + 360.0;
  return difference;
}

constexpr double radians(double degrees) {
  return degrees * std::numbers::pi / 180.0;
}

/// In -180..180, 9999 for no angles.
double circularMean(const std::vector<double>& angles);
/// Standard deviation about the circular mean; 0 for none, 180 for one.
double circularSpread(const std::vector<double>& angles);
