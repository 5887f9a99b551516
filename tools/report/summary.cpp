// The findings of a run in plain sentences.
#include "report/summary.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "predictions/names.h"
#include "report/svg.h"

namespace report {

namespace {

std::string plural(int count, const std::string& singular, const std::string& more) {
  return std::to_string(count) + " " + (count == 1 ? singular : more);
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

Statement classStatement(const ReportData& data) {
  const auto counts = countClasses(data);
  std::vector<int> bad;
  int strong = counts[0].second, generous = counts[1].second;
  for (const Residue& r : data.residues) {
    if (!r.torsion || r.torsion->className != "Bad") continue;
    bad.push_back(r.resid);
    ++(r.torsion->ownClass() == "Strong" ? strong : generous);
  }
  const auto all = static_cast<int>(data.residues.size());
  std::string text = std::to_string(strong) + " of " + plural(all, "residue is", "residues are") +
                     " Strong and " + std::to_string(generous) + " Generous: phi and psi of these " +
                     std::to_string(strong + generous) + " can be used.";
  if (!bad.empty()) {
    text += " Among them, class Bad because far from the reference structure: residues " +
            predictions::residueRanges(bad) + ".";
  }
  std::string others;
  for (const std::size_t k : {2U, 3U, 5U}) {
    if (counts[k].second == 0) continue;
    others += (others.empty() ? "" : ", ") + std::to_string(counts[k].second) + " " + counts[k].first;
  }
  if (!others.empty()) text += " Not to be used: " + others + ".";
  return {text, (strong + generous) * 2 < all};
}

Statement offsetStatement(const ReferencingOffset& offset) {
  const std::string size = fixed(std::fabs(offset.offset), 2) + " ppm";
  const std::string error = offset.error > 0 ? " (±" + fixed(offset.error, 2) + " ppm" : std::string();
  const std::string used = offset.shifts > 0 ? ", " + std::to_string(offset.shifts) + " shifts" : "";
  const std::string detail = error.empty() ? std::string() : error + used + ")";
  const std::string direction = offset.offset > 0 ? " too high" : " too low";
  if (offset.applied) {
    return {offset.nuclei + " referencing was " + size + direction + detail +
                " and was corrected in this run (-offset).",
            false};
  }
  return {offset.nuclei + " referencing looks " + size + direction + detail +
              ": check the referencing, or rerun with -offset.",
          true};
}

void addReferencing(const ReportData& data, std::vector<Statement>& out) {
  for (const ReferencingOffset& offset : data.check.offsets) out.push_back(offsetStatement(offset));
  if (data.check.offsets.empty()) {
    out.push_back(data.check.fromLog
                      ? Statement{"The check found no referencing offset for CA/CB, HA or C'.", false}
                      : Statement{"Nothing is known here about the referencing: the output of the check was "
                                  "not given (--log).",
                                  false});
  }
}

void addOutliers(const ReportData& data, std::vector<Statement>& out) {
  if (data.check.fromLog) {
    const std::vector<Outlier>& found = data.check.outliers;
    const auto extreme = static_cast<int>(
        std::count_if(found.begin(), found.end(), [](const Outlier& o) { return o.extreme; }));
    if (found.empty()) {
      out.push_back({"No shift lies outside the limits of its residue type.", false});
    } else {
      const auto number = static_cast<int>(found.size());
      out.push_back(
          {plural(number, "shift lies", "shifts lie") + " outside the limits of the residue type" +
               (extreme > 0 ? ", " + std::to_string(extreme) + " of them far outside" : std::string()) +
               ": check the assignments in the outlier table.",
           true});
    }
  } else if (data.hasShifts) {
    const auto number = static_cast<int>(unusualShifts(data).size());
    if (number == 0) {
      out.push_back({"No secondary shift stands out from the others of its nucleus.", false});
    } else {
      out.push_back({plural(number, "secondary shift stands", "secondary shifts stand") +
                         " out from the others of the same nucleus: see the outlier table.",
                     true});
    }
  }
  for (const std::string& note : data.check.notes) out.push_back({"The check said: " + note, true});
}

void addStructure(const ReportData& data, std::vector<Statement>& out) {
  if (!data.hasSs) return;
  int helix = 0, strand = 0, fromSequence = 0;
  for (const Residue& r : data.residues) {
    if (!r.ss) continue;
    helix += r.ss->className == 'H' || r.ss->className == 'h' ? 1 : 0;
    strand += r.ss->className == 'E' || r.ss->className == 'e' ? 1 : 0;
    fromSequence += std::string_view("hec").find(r.ss->className) != std::string_view::npos ? 1 : 0;
  }
  std::string text = "Secondary structure: " + plural(helix, "residue", "residues") + " in helices, " +
                     std::to_string(strand) + " in strands";
  if (fromSequence > 0) {
    text += "; " + std::to_string(fromSequence) + " predicted from the sequence alone";
  }
  out.push_back({text + ".", false});
}

void addFlexibility(const ReportData& data, std::vector<Statement>& out) {
  std::vector<int> flexible;
  for (const Residue& r : data.residues) {
    if (r.torsion && r.torsion->className == "Dyn") flexible.push_back(r.resid);
  }
  if (flexible.empty()) return;
  out.push_back({"Flexible by the random coil index (class Dyn): residues " +
                     predictions::residueRanges(flexible) + ".",
                 false});
}

void addChi1(const ReportData& data, std::vector<Statement>& out) {
  if (!data.hasChi1) return;
  int all = 0, predicted = 0;
  for (const Residue& r : data.residues) {
    if (!r.chi1) continue;
    ++all;
    predicted += r.chi1->className != "na" ? 1 : 0;
  }
  out.push_back({"A chi1 rotamer is predicted for " + std::to_string(predicted) + " of " +
                     plural(all, "side chain.", "side chains."),
                 false});
}

/// Every reliable residue counts, also where the run called it Bad for its distance from the reference.
void addReference(const ReportData& data, std::vector<Statement>& out) {
  constexpr double kFar = 60;  // degrees in phi and psi together, where class Bad begins in populated regions
  if (!data.referenceProblem.empty()) {
    out.push_back({"Not compared with the reference structure: " + data.referenceProblem + ".", true});
  }
  if (!data.hasReference) return;
  int compared = 0, close = 0;
  double phiSum = 0, psiSum = 0;
  std::vector<int> far;
  for (const Residue& r : data.residues) {
    if (!r.isReliable() || !r.referencePhi || !r.referencePsi) continue;
    const double phi = angleDifference(r.torsion->phi, *r.referencePhi);
    const double psi = angleDifference(r.torsion->psi, *r.referencePsi);
    ++compared;
    close += std::fabs(phi) <= 30 && std::fabs(psi) <= 30 ? 1 : 0;
    if (std::hypot(phi, psi) >= kFar) far.push_back(r.resid);
    phiSum += phi * phi;
    psiSum += psi * psi;
  }
  if (compared == 0) return;
  const std::string disagreeing =
      far.empty() ? "."
                  : "; 60° or more away in both together: residues " + predictions::residueRanges(far) + ".";
  out.push_back({"Against the reference " + data.referenceTitle + ", " + std::to_string(close) + " of " +
                     plural(compared, "reliable residue lies", "reliable residues lie") +
                     " within 30° in both angles; root mean square difference " +
                     fixed(std::sqrt(phiSum / compared), 1) + "° in phi and " +
                     fixed(std::sqrt(psiSum / compared), 1) + "° in psi" + disagreeing,
                 !far.empty()});
}

}  // namespace

double angleDifference(double a, double b) {
  double d = a - b;
  if (d > 180) d -= 360;
  if (d < -180) d += 360;
  return d;
}

std::array<std::pair<const char*, int>, 6> countClasses(const ReportData& data) {
  std::array<std::pair<const char*, int>, 6> counts = {
      {{"Strong", 0}, {"Generous", 0}, {"Warn", 0}, {"Dyn", 0}, {"Bad", 0}, {"None", 0}}};
  for (const Residue& r : data.residues) {
    const std::string name = r.torsion ? r.torsion->className : "None";
    for (auto& [known, count] : counts) count += known == name ? 1 : 0;
  }
  return counts;
}

std::vector<Outlier> unusualShifts(const ReportData& data) {
  constexpr double kRobust = 1.4826;  // median absolute deviation to standard deviation
  constexpr double kBound = 4.0;
  constexpr std::size_t kFewest = 10;
  std::vector<Outlier> found;
  for (std::size_t atom = 0; atom < kAtoms.size(); ++atom) {
    std::vector<double> values, deviations;
    for (const Residue& r : data.residues) {
      if (r.secondaryShifts[atom]) values.push_back(*r.secondaryShifts[atom]);
    }
    if (values.size() < kFewest) continue;
    const double centre = median(values);
    for (const double value : values) deviations.push_back(std::fabs(value - centre));
    const double bound = kBound * kRobust * median(deviations);
    for (const Residue& r : data.residues) {
      if (bound <= 0 || !r.secondaryShifts[atom] || std::fabs(*r.secondaryShifts[atom] - centre) <= bound)
        continue;
      const double limit = *r.secondaryShifts[atom] > centre ? centre + bound : centre - bound;
      found.push_back(
          {r.resid, std::string(1, r.code), kAtoms[atom], *r.secondaryShifts[atom], limit, false});
    }
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const Outlier& a, const Outlier& b) { return a.resid < b.resid; });
  return found;
}

std::vector<Statement> summarize(const ReportData& data) {
  std::vector<Statement> out = {classStatement(data)};
  addReferencing(data, out);
  addOutliers(data, out);
  addStructure(data, out);
  addChi1(data, out);
  addFlexibility(data, out);
  addReference(data, out);
  if (data.deuterated) {
    out.push_back({"CA and CB shifts were corrected for deuterium isotope effects (-iso).", false});
  }
  return out;
}

}  // namespace report
