// What a run found, in the few figures that a user wants to see first.
#pragma once

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace run {

struct Outcome {
  std::array<std::pair<const char*, int>, 6> classes{};  ///< Strong, Generous, Warn, Dyn, Bad, None
  std::map<int, char> sequence;                          ///< residue number -> one-letter code
  std::map<int, char> structure;  ///< H E L from shifts, h e c from the sequence, x none
  std::string referencing;        ///< verdict with its numbers, one sentence
  bool referencingDoubtful = false;
  std::vector<std::string> outliers;  ///< "12 K CA +9.12 ppm"
  std::vector<std::string> notes;     ///< what else the check said
  int s2Count = 0;
  double s2Mean = 0;

  int classCount(const std::string& name) const;
  int reliable() const { return classes[0].second + classes[1].second; }
  /// Residues in helices (H, h) or strands (E, e).
  int inStructure(char capital) const;
};

/// Reads the tables and the log in `folder`. False with `problem` set when they cannot be read.
bool readOutcome(const std::string& folder, const std::string& log, Outcome& outcome, std::string& problem);

/// One statement a line: classes, referencing, outliers.
std::vector<std::string> outcomeLines(const Outcome& outcome);

}  // namespace run
