// The runs of a batch side by side: a page with a picture, and a table.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "run/outcome.h"
#include "run/plan.h"

namespace run {

struct Compared {
  Job job;
  std::string folder;              ///< beside the page
  std::optional<Outcome> outcome;  ///< none when the run failed
  std::string problem;             ///< why the run failed, or what of it is missing
  bool report = true;              ///< it has a report page
};

/// `failed`: inputs that could not be read, with the reason.
std::string comparisonPage(const std::string& title, const std::vector<Compared>& runs,
                           const std::vector<std::string>& failed, const std::vector<std::string>& comments);

/// Tab-separated, a header line, one run a row.
std::string comparisonTable(const std::vector<Compared>& runs);

/// Runs of one protein: indices of `runs` with an outcome whose sequences agree, number by number.
std::vector<std::vector<std::size_t>> sameProteins(const std::vector<Compared>& runs);

/// The structure of one protein, residue by residue, a row a run.
std::string structurePicture(const std::vector<Compared>& runs, const std::vector<std::size_t>& group);

}  // namespace run
