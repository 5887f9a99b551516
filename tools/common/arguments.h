// Command lines of the companion programs: options, positional words, help text.
#pragma once

#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

struct Option {
  std::string name;       ///< with its dashes, as in "--chain"
  std::string shortName;  ///< "-o", or empty
  std::string value;      ///< what the value is called in the help text; empty for a switch
  std::string help;       ///< one sentence; lines are wrapped
};

struct Program {
  std::string name;
  std::string usage;        ///< what follows the name on the usage line
  std::string description;  ///< one paragraph
  std::vector<Option> options;
  std::string epilogue;  ///< exit statuses, examples; printed as it is
};

struct Arguments {
  std::map<std::string, std::string> options;  ///< long name -> value ("1" for a switch); the last one wins
  std::vector<std::string> words;              ///< everything that is no option
  std::vector<std::string> rest;               ///< everything after a lone "--"
  std::string error;                           ///< not empty: the command line cannot be used

  bool has(const std::string& name) const { return options.count(name) > 0; }
  /// The value of an option, `fallback` when it was not given.
  std::string value(const std::string& name, const std::string& fallback = {}) const;
};

/// Reads "--name value", "--name=value", "-o value" and switches. "-" alone is a word.
Arguments parseArguments(const Program& program, const std::vector<std::string>& arguments);

std::string helpText(const Program& program);
/// Answers --help and --version on `out`; false when neither was given.
bool answerHelp(const Program& program, const Arguments& arguments, std::ostream& out = std::cout);

/// Prints a usage error the way every program does and returns its exit status, 2.
int usageError(const Program& program, const std::string& message, std::ostream& err = std::cerr);

}  // namespace tools
