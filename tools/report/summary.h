// The findings of a run in plain sentences.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "report/data.h"

namespace report {

struct Statement {
  std::string text;
  bool warning = false;  ///< something the user should act on
};

/// Sentences from the most to the least important: classes, referencing, outliers, secondary structure, chi1,
/// flexibility, reference.
std::vector<Statement> summarize(const ReportData& data);

/// Number of residues of each class, in the order Strong, Generous, Warn, Dyn, Bad, None.
std::array<std::pair<const char*, int>, 6> countClasses(const ReportData& data);

/// Difference of two angles brought into -180..180 degrees.
double angleDifference(double a, double b);

/// Secondary shifts far from the others of their nucleus: more than four robust standard deviations (1.4826 x
/// median absolute deviation) from the median, for nuclei with at least 10 values. `limit` is the bound that
/// is passed.
std::vector<Outlier> unusualShifts(const ReportData& data);

}  // namespace report
