// How tables and stages say that a shift, an angle or another number is missing.
#pragma once

/// Values from here on stand for "missing".
inline constexpr double kMissingLimit = 999.0;
/// What is written for a missing value.
inline constexpr double kMissingValue = 9999.0;

/// A usable value; what is no number is none.
constexpr bool isPresent(double value) {
  return value < kMissingLimit;
}

/// Beyond the limit. The limit itself, and what is no number, are neither present nor beyond; every rule says
/// by the test it takes what becomes of them.
constexpr bool isBeyondLimit(double value) {
  return value > kMissingLimit;
}
