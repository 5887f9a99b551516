// Everything a report shows: the tables, what the check said, and a reference structure.
#pragma once

#include <string>
#include <vector>

#include "predictions/model.h"

namespace report {

using predictions::BoxMap;
using predictions::kAtoms;
using predictions::kBoxesPerAxis;
using predictions::Match;
using predictions::Residue;

/// One line of the outlier check.
struct Outlier {
  int resid = 0;
  std::string code, atom;
  double shift = 0, limit = 0;  ///< secondary shift and the limit that it passes, ppm
  bool extreme = false;
};

/// A referencing offset that the check estimated or that a run applied.
struct ReferencingOffset {
  std::string nuclei;  ///< CA/CB, HA or C'
  double offset = 0;   ///< ppm
  double error = 0;    ///< 0 when unknown
  int shifts = 0;      ///< number of shifts used; 0 when unknown
  bool applied = false;
};

struct CheckResult {
  bool fromLog = false;  ///< the check's own output was read
  std::vector<Outlier> outliers;
  std::vector<ReferencingOffset> offsets;
  std::vector<std::string> notes;  ///< "No enough ..." and warnings, as printed
};

struct ReportData : predictions::Model {
  CheckResult check;
  bool deuterated = false;       ///< deuterium correction applied
  bool hasReference = false;     ///< reference phi and psi are there
  std::string referenceProblem;  ///< why a reference structure that was given is not compared with
};

}  // namespace report
