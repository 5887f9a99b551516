// The report page.
#pragma once

#include <string>

#include "report/data.h"

namespace report {

/// One self-contained HTML document.
std::string htmlPage(const ReportData& data);

/// page.html, with {{names}} where the parts go, and page.css.
extern const char* const kSkeleton;
extern const char* const kStyle;

}  // namespace report
