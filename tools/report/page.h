// The report page.
#pragma once

#include <string>

#include "report/data.h"

namespace report {

/// One self-contained HTML document.
std::string htmlPage(const ReportData& data);

/// The style sheet, light and dark, screen and print.
extern const char* const kStyle;

}  // namespace report
