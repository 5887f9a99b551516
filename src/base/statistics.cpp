// Mean and standard deviation.
#include "base/statistics.h"

#include <cmath>

double average(const std::vector<double>& values) {
  if (values.empty()) return 0.0;
  double sum = 0.0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

double standardDeviation(const std::vector<double>& values) {
  if (values.size() < 2) return 0.0;
  const double mean = average(values);
  double sum = 0.0;
  for (const double value : values) sum += (value - mean) * (value - mean);
  return std::sqrt(sum / static_cast<double>(values.size() - 1));
}
