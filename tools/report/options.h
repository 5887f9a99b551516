// Settings of orbeln-report.
#pragma once

#include <string>

#include "common/arguments.h"

namespace report {

struct Options {
  std::string directory, stem;
  std::string htmlFile, jsonFile, tsvFile;
  std::string logFile, referenceFile, title;
  bool quiet = false;
};

const tools::Program& program();

/// Settings from the command line; a text that is not empty says why it cannot be used.
std::string readOptions(const tools::Arguments& arguments, Options& options);

}  // namespace report
