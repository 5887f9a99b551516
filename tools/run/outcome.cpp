// What a run found, in the few figures that a user wants to see first.
#include "run/outcome.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "report/load.h"
#include "report/options.h"
#include "report/summary.h"

namespace run {

namespace {

constexpr std::size_t kNamedOutliers = 6;

std::string formatted(const char* format, double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

std::string offsetText(const report::ReferencingOffset& offset) {
  std::string text = offset.nuclei + " " + formatted("%+.2f", offset.offset);
  if (offset.error > 0) text += " +/- " + formatted("%.2f", offset.error);
  text += " ppm";
  if (offset.shifts > 0) text += " (" + std::to_string(offset.shifts) + " shifts)";
  return text + (offset.applied ? ", corrected in this run" : "");
}

void readReferencing(const report::CheckResult& check, Outcome& outcome) {
  for (const report::ReferencingOffset& offset : check.offsets) {
    outcome.referencing += (outcome.referencing.empty() ? "" : "; ") + offsetText(offset);
    outcome.referencingDoubtful = outcome.referencingDoubtful || !offset.applied;
  }
  if (outcome.referencing.empty()) outcome.referencing = "no offset found";
}

}  // namespace

int Outcome::classCount(const std::string& name) const {
  for (const auto& [known, count] : classes) {
    if (name == known) return count;
  }
  return 0;
}

int Outcome::inStructure(char capital) const {
  return static_cast<int>(std::count_if(structure.begin(), structure.end(), [&](const auto& residue) {
    return std::toupper(static_cast<unsigned char>(residue.second)) == capital;
  }));
}

bool readOutcome(const std::string& folder, const std::string& log, Outcome& outcome, std::string& problem) {
  report::Options options;
  options.directory = folder;
  options.stem = "pred";
  options.logFile = (std::filesystem::path(folder) / log).string();
  const auto data = report::loadReport(options, problem);
  if (!data) return false;
  outcome.classes = report::countClasses(*data);
  double sum = 0;
  for (const report::Residue& residue : data->residues) {
    outcome.sequence[residue.resid] = residue.code;
    if (residue.ss) outcome.structure[residue.resid] = residue.ss->className;
    if (!residue.s2 || *residue.s2 > 1.5) continue;  // 9999: none
    sum += *residue.s2;
    ++outcome.s2Count;
  }
  if (outcome.s2Count > 0) outcome.s2Mean = sum / outcome.s2Count;
  readReferencing(data->check, outcome);
  for (const report::Outlier& found : data->check.outliers) {
    outcome.outliers.push_back(std::to_string(found.resid) + " " + found.code + " " + found.atom + " " +
                               formatted("%+.2f", found.shift) + " ppm");
  }
  outcome.notes = data->check.notes;
  return true;
}

std::vector<std::string> outcomeLines(const Outcome& outcome) {
  std::string classes;
  for (const auto& [name, count] : outcome.classes) {
    if (count > 0) classes += (classes.empty() ? "" : ", ") + std::to_string(count) + " " + name;
  }
  std::vector<std::string> lines = {"Classes: " + classes + " of " + std::to_string(outcome.sequence.size()) +
                                    " residues"};
  const char* advice = outcome.referencingDoubtful ? "; check it, --offset corrects it" : "";
  lines.push_back("Referencing (CA/CB, HA, C'): " + outcome.referencing + advice);
  for (const std::string& note : outcome.notes) lines.push_back("Check: " + note);
  std::string outliers =
      outcome.outliers.empty() ? "no shift" : std::to_string(outcome.outliers.size()) + " shifts";
  outliers += " outside the limits of the residue type";
  for (std::size_t k = 0; k < std::min(kNamedOutliers, outcome.outliers.size()); ++k) {
    outliers += (k == 0 ? ": " : ", ") + outcome.outliers[k];
  }
  if (outcome.outliers.size() > kNamedOutliers) outliers += ", ...";
  lines.push_back("Outliers: " + outliers);
  return lines;
}

}  // namespace run
