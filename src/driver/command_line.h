// The command line as an option map.
#pragma once

#include "driver/ORBEL.h"

struct CommandLine {
  OptionMap options;  ///< option name -> value text; the last occurrence of a name wins
  bool sequenceOnly = false;
};

/// Joins the arguments and cuts them at every hyphen, so values cannot contain one. Names that `driver` does
/// not accept are reported on standard error and kept.
CommandLine parseCommandLine(int argc, char** argv, const ORBEL& driver);
