// The figures of the page, each as ready markup.
#pragma once

#include <string>

#include "report/data.h"

namespace report {

std::string sequenceStrip(const ReportData& data);  ///< letters, secondary structure, confidence, classes
std::string torsionPlots(const ReportData& data);   ///< phi and psi with error bars, degrees
std::string orderParameterPlots(const ReportData& data);
std::string chi1Plots(const ReportData& data);
std::string ramachandranMaps(const ReportData& data);

/// An error bar of a periodic angle as pieces inside -180..180 degrees; a bar of half width 180 or more is
/// the whole axis.
struct AngleSpan {
  double from, to;
};
std::vector<AngleSpan> angleSpans(double centre, double halfWidth);

}  // namespace report
