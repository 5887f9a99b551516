// Circular and plain statistics of the matches.
#include <cmath>

#include "driver/ORBEL.h"
#include "driver/angles.h"

namespace {

constexpr double kNoMean = 9999.0;
/// Angles far beyond any turn come from a damaged database; their mean is not brought into range.
constexpr double kAbsurdAngle = -1e6;

}  // namespace

double ORBEL::getAverage(const std::vector<double>& values) {
  if (values.empty()) return 0.0;
  double sum = 0.0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

double ORBEL::getSTDev(const std::vector<double>& values) {
  if (values.size() < 2) return 0.0;
  const double mean = getAverage(values);
  double sum = 0.0;
  for (const double value : values) sum += (value - mean) * (value - mean);
  return std::sqrt(sum / static_cast<double>(values.size() - 1));
}

/// Degrees in -180..180. Where positive and negative angles lie closer across +-180 than across 0, the
/// negative ones are averaged a turn higher.
double ORBEL::getAVGAngle2(const std::vector<double>& angles) {
  if (angles.empty()) return kNoMean;
  if (angles.size() == 1) return angles.front();
  std::vector<double> negative;
  std::vector<double> positive;
  for (const double angle : angles) (angle < 0.0 ? negative : positive).push_back(angle);
  if (negative.empty() || positive.empty()) return getAverage(angles);
  if (getAverage(positive) - getAverage(negative) < 180.0) return getAverage(angles);

  std::vector<double> raised = angles;
  for (double& angle : raised) {
    if (angle < 0.0) angle += 360.0;
  }
  double mean = getAverage(raised);
  if (mean > kMissingLimit || !(mean > kAbsurdAngle)) return kNoMean;
  while (mean > 180.0) mean -= 360.0;
  while (mean < -180.0) mean += 360.0;
  return mean;
}

double ORBEL::getSTDAngle(const std::vector<double>& angles) {
  if (angles.empty()) return 0.0;
  if (angles.size() == 1) return 180.0;
  const double mean = getAVGAngle2(angles);
  double sum = 0.0;
  for (const double angle : angles) {
    const double d = wrapOnce(angle - mean);
    sum += d * d;
  }
  return std::sqrt(sum / static_cast<double>(angles.size() - 1));
}
