// The input table of the run: what the conversion noted about the residues, and the shifts themselves.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "predictions/input_notes.h"
#include "restraints/labels.h"
#include "restraints/options.h"

namespace restraints {

struct InputShift {
  int resid = 0;
  char code = 'X';
  std::string atom, value;  ///< as the table has them
};

struct InputTable {
  std::string file;     ///< empty: there is none
  std::string problem;  ///< why the one beside the prediction is not used
  predictions::InputNotes notes;
  std::vector<InputShift> shifts;
};

/// The table that was named, or else the first one of the same `sequence` beside the prediction: input.tab,
/// or the table of secondary shifts, which repeats the remarks. Empty with `error` set when the named one
/// cannot be used.
std::optional<InputTable> loadInputTable(const Options& options, const std::map<int, char>& sequence,
                                         std::string& error);

/// What the residues are called: as the notes say, the numbers those of the table when asked for.
Labels labelsFrom(const InputTable& input, const Options& options);

}  // namespace restraints
