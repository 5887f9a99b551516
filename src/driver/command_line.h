// The command line as an option map.
#pragma once

#include <map>
#include <string>
#include <vector>

using OptionMap = std::map<std::string, std::string>;

struct CommandLine {
  OptionMap options;  ///< option name -> value text; the last occurrence of a name wins
  bool sequenceOnly = false;
};

/// Joins the arguments and cuts them at every hyphen, so values cannot contain one. Names that are not among
/// `accepted` are reported on standard error and kept.
CommandLine parseCommandLine(int argc, char** argv, const std::vector<std::string>& accepted);
