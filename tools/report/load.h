// The tables of a run, the check's findings and the reference structure as the report's data.
#pragma once

#include <optional>
#include <string>

#include "report/data.h"
#include "report/options.h"

namespace report {

/// Empty with `error` set ("file:line: what") when the summary table is missing or a table is faulty.
std::optional<ReportData> loadReport(const Options& options, std::string& error);

}  // namespace report
