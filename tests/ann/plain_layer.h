// A network layer evaluated plainly, unit by unit: what the lockstep kernel is compared with.
#pragma once

#include <cmath>
#include <vector>

namespace ann_test {

/// Remainder and whole-number total of one unit, one input after the other.
inline double plainSum(const std::vector<double>& x, const std::vector<double>& w, double bias) {
  double remainder = 0.0;
  double total = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    remainder = x[i] * w[i] + remainder;
    const double whole = std::trunc(remainder);
    total += whole;
    remainder -= whole;
  }
  return (remainder + bias) + total;
}

}  // namespace ann_test
