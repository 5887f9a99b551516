// The tables of the page as markup.
#pragma once

#include <string>

#include "report/data.h"

namespace report {

std::string outlierTable(const ReportData& data);
std::string residueTable(const ReportData& data);  ///< all numbers, one row per residue

}  // namespace report
