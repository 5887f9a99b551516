// The steps from a shift file to the report: which program, with which arguments, leaving which file.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/arguments.h"

namespace run {

/// One chain and one shift list of one file.
struct Job {
  std::string input;        ///< as the user wrote it
  std::string title;        ///< what the results are called
  std::string folder;       ///< absolute path of the result folder
  std::string chain, list;  ///< for the conversion; empty: as on the command line
  /// The input's text, where it cannot be read again (standard input, a pipe); null for a file.
  std::shared_ptr<const std::string> text;
};

struct Step {
  std::string title;                   ///< for the progress line
  std::string program;                 ///< name of the program
  std::vector<std::string> arguments;  ///< file names relative to the working folder where `inside`
  bool inside = false;                 ///< run with the working folder as working directory
  std::string log;                     ///< in the working folder
  std::vector<std::string> products;   ///< in the working folder; all must be there afterwards
  bool essential = true;               ///< without it the later steps make no sense
};

struct Plan {
  Job job;
  std::vector<std::string> inputs;  ///< every file that the user named; none of them may be written to
  std::string table = "input.tab";  ///< the table that is predicted
  std::string reference;            ///< structure to compare with, copied into the folder; empty: none
  bool ownsReference = true;        ///< the copy is a result; false when it is the input itself
  /// Links to make in the working folder: files for orbeln, whose names may not hold hyphens.
  std::vector<std::pair<std::string, std::string>> links;
  std::vector<Step> steps;

  /// The files that the run leaves, those of failed steps included.
  std::vector<std::string> products() const;
};

/// What is wrong with the command line; empty when nothing is.
std::string usageProblem(const tools::Arguments& arguments);

/// The files on the command line that are read, "-" left out.
std::vector<std::string> namedInputs(const tools::Arguments& arguments);

/// The plan for one job of a command line without problem. It looks at the files in the job's folder.
Plan makePlan(const tools::Arguments& arguments, const Job& job);

}  // namespace run
