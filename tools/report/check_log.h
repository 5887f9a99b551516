// The quality check's findings, read from a saved log or from the remarks of the adjusted-shift table.
#pragma once

#include <string>

#include "report/data.h"

namespace report {

/// Adds the outliers, offsets and notes of the log at `path` to `result`; false with `error` set when the
/// file cannot be opened or holds no check output.
bool readCheckLog(const std::string& path, CheckResult& result, std::string& error);

/// Adds the offset that `remark` says was applied; does nothing for other remarks.
void readAppliedOffset(const std::string& remark, CheckResult& result);

}  // namespace report
