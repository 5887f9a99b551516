// Circular statistics.
#include "base/angles.h"

#include <cmath>

#include "base/missing.h"
#include "base/statistics.h"

namespace {

/// Angles far beyond any turn come from a damaged database; their mean is not brought into range.
constexpr double kAbsurdAngle = -1e6;

}  // namespace

/// Where positive and negative angles lie closer across +-180 than across 0, the negative ones are averaged a
/// turn higher.
double circularMean(const std::vector<double>& angles) {
  if (angles.empty()) return kMissingValue;
  if (angles.size() == 1) return angles.front();
  std::vector<double> negative;
  std::vector<double> positive;
  for (const double angle : angles) (angle < 0.0 ? negative : positive).push_back(angle);
  if (negative.empty() || positive.empty()) return average(angles);
  if (average(positive) - average(negative) < 180.0) return average(angles);

  std::vector<double> raised = angles;
  for (double& angle : raised) {
    if (angle < 0.0) angle += 360.0;
  }
  double mean = average(raised);
  if (isBeyondLimit(mean) || !(mean > kAbsurdAngle)) return kMissingValue;
  while (mean > 180.0) mean -= 360.0;
  while (mean < -180.0) mean += 360.0;
  return mean;
}

double circularSpread(const std::vector<double>& angles) {
  if (angles.empty()) return 0.0;
  if (angles.size() == 1) return 180.0;
  const double mean = circularMean(angles);
  double sum = 0.0;
  for (const double angle : angles) {
    const double d = wrapOnce(angle - mean);
    sum += d * d;
  }
  return std::sqrt(sum / static_cast<double>(angles.size() - 1));
}
