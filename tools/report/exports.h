// The report's data for other programs.
#pragma once

#include <string>

#include "report/data.h"

namespace report {

/// One JSON object; missing values are null.
std::string jsonExport(const ReportData& data);
/// Tab-separated, a header line, one row per residue; missing values are empty.
std::string tsvExport(const ReportData& data);

}  // namespace report
