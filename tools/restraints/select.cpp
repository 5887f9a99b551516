// From prediction rows to restraints.
#include "restraints/select.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <utility>

#include "common/log.h"
#include "predictions/names.h"

namespace restraints {

namespace {

/// Centre and half width to the 0.1 degree that every format carries.
double roundTenth(double degrees) {
  const double rounded = std::round(degrees * 10.0) / 10.0;
  return rounded == 0 ? 0 : rounded;  // no negative zero in the output
}

std::string formatted(const char* format, double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

/// Collects restraints and the reasons against others.
class Selection {
 public:
  Selection(const TorsionTable& from, Labels labels, const Options& settings)
      : torsions(from), options(settings) {
    list.labels = std::move(labels);
    list.sequence = from.sequence;
    for (const TorsionRow& row : from.rows) list.sequence.try_emplace(row.resid, row.code);
  }

  void addBackbone(const TorsionRow& row);
  void addSideChain(const Chi1Row& row, const TorsionRow* backbone);
  RestraintList finish();

 private:
  char codeAt(int resid) const {
    const auto it = list.sequence.find(resid);
    return it == list.sequence.end() ? 'X' : it->second;
  }
  bool inSequence(int resid) const { return list.sequence.contains(resid); }
  Restraint blank(Angle angle, int resid, char code) const;
  void add(Restraint restraint, double centre, double deviation, double floor);
  void skip(const std::string& reason, int resid) { skipped[reason].push_back(resid); }
  std::string ranges(const std::vector<int>& residues) const {
    return predictions::residueRanges(residues, [&](int resid) { return list.labels.number(resid); });
  }
  std::string classOf(const TorsionRow& row) const;
  bool isUsable(const TorsionRow& row) const;
  bool isNamed(const Restraint& restraint) const;
  void addAngle(Angle angle, const TorsionRow& row);
  void reportReference();
  std::string counts() const;

  const TorsionTable& torsions;
  const Options& options;
  RestraintList list;
  std::map<std::string, std::vector<int>> skipped;
  std::map<std::string, int> usedPerClass;
  std::vector<int> valines, bad;
  int widened = 0, limited = 0;
};

/// Fourth atom of chi1.
const char* gammaAtom(char code) {
  switch (code) {
    case 'V':
    case 'I':
      return "CG1";
    case 'T':
      return "OG1";
    case 'S':
      return "OG";
    case 'C':
    case 'c':
      return "SG";
    default:
      return "CG";
  }
}

bool hasChi1(char code) {
  return code != 'G' && code != 'A' && !predictions::isUnknownType(code);
}

/// The class that decides: a reference structure has no say in it unless that was asked for.
std::string Selection::classOf(const TorsionRow& row) const {
  return options.dropBad || options.classes.contains("Bad") ? row.className : row.ownClass();
}

bool Selection::isUsable(const TorsionRow& row) const {
  if (!options.classes.contains(classOf(row))) return false;
  return options.unknownTypes || !predictions::isUnknownType(row.code);
}

/// Whether every residue that the format spells out has a name.
bool Selection::isNamed(const Restraint& restraint) const {
  const auto named = [&](int resid, char code) { return !list.labels.name(resid, code).empty(); };
  if (options.format == Format::Cyana) return named(restraint.resid, restraint.code);
  if (options.format != Format::Nef && options.format != Format::Star) return true;
  return std::all_of(restraint.atoms.begin(), restraint.atoms.end(),
                     [&](const RestraintAtom& atom) { return named(atom.resid, atom.code); });
}

Restraint Selection::blank(Angle angle, int resid, char code) const {
  Restraint r;
  r.angle = angle;
  r.resid = resid;
  r.code = code;
  const auto atom = [&](int shift, const char* name) {
    return RestraintAtom{resid + shift, shift == 0 ? code : codeAt(resid + shift), name};
  };
  if (angle == Angle::Phi) {
    r.atoms = {atom(-1, "C"), atom(0, "N"), atom(0, "CA"), atom(0, "C")};
  } else if (angle == Angle::Psi) {
    r.atoms = {atom(0, "N"), atom(0, "CA"), atom(0, "C"), atom(1, "N")};
  } else {
    r.atoms = {atom(0, "N"), atom(0, "CA"), atom(0, "CB"), atom(0, gammaAtom(code))};
  }
  return r;
}

void Selection::add(Restraint restraint, double centre, double deviation, double floor) {
  if (!isNamed(restraint)) {
    return skip(std::string(restraint.angleName()) + ": a residue without a name", restraint.resid);
  }
  double width = options.factor * deviation;
  if (width >= 180) {
    return skip(std::string(restraint.angleName()) + ": the width is a full circle", restraint.resid);
  }
  if (width < floor) ++widened;
  width = std::max(width, floor);
  if (width > options.cap) ++limited;
  restraint.halfWidth = roundTenth(std::min(width, options.cap));
  restraint.centre = predictions::wrapAngle(roundTenth(predictions::wrapAngle(centre)));
  restraint.deviation = deviation;
  list.restraints.push_back(std::move(restraint));
}

void Selection::addAngle(Angle angle, const TorsionRow& row) {
  const bool phi = angle == Angle::Phi;
  const int neighbour = phi ? row.resid - 1 : row.resid + 1;
  const double value = phi ? row.phi : row.psi;
  Restraint restraint = blank(angle, row.resid, row.code);
  if (!inSequence(neighbour)) {
    return skip(phi ? "PHI of the first residue" : "PSI of the last residue", row.resid);
  }
  if (value >= predictions::kMissing)
    return skip(std::string(restraint.angleName()) + ": no angle", row.resid);
  restraint.note = "class " + classOf(row);
  add(std::move(restraint), value, phi ? row.dphi : row.dpsi, options.floor);
}

void Selection::addBackbone(const TorsionRow& row) {
  if (row.className == "Bad") bad.push_back(row.resid);
  if (!options.classes.contains(classOf(row))) return skip("class " + classOf(row), row.resid);
  if (!isUsable(row)) return skip("unknown residue type (see --unknown-types)", row.resid);
  const std::size_t before = list.restraints.size();
  addAngle(Angle::Phi, row);
  addAngle(Angle::Psi, row);
  if (list.restraints.size() > before) ++usedPerClass[classOf(row)];
}

void Selection::addSideChain(const Chi1Row& row, const TorsionRow* backbone) {
  if (!hasChi1(row.code)) return;
  if (!row.hasAngle()) return skip("CHI1: no rotamer predicted", row.resid);
  if (backbone == nullptr) return skip("CHI1: no row in the torsion table", row.resid);
  if (!isUsable(*backbone)) return skip("CHI1: backbone class " + classOf(*backbone), row.resid);
  if (row.probability() < options.chi1Probability) {
    return skip("CHI1: rotamer probability below " + formatted("%g", options.chi1Probability), row.resid);
  }
  Restraint restraint = blank(Angle::Chi1, row.resid, row.code);
  restraint.note = "rotamer " + row.className + formatted(", probability %.3f", row.probability());
  restraint.note += std::string(", N-CA-CB-") + gammaAtom(row.code);
  if (row.code == 'V') {
    restraint.note += formatted("; table value %.1f", row.chi1) + " + 120 degrees (valine convention)";
  }
  const std::size_t before = list.restraints.size();
  add(std::move(restraint), row.torsion(), row.dchi1, options.chi1Floor);
  if (list.restraints.size() > before && row.code == 'V') valines.push_back(row.resid);
}

std::string Selection::counts() const {
  int number[3] = {0, 0, 0};
  for (const Restraint& r : list.restraints) ++number[static_cast<int>(r.angle)];
  std::string line = std::to_string(list.restraints.size()) + " restraints: " + std::to_string(number[0]) +
                     " phi, " + std::to_string(number[1]) + " psi, " + std::to_string(number[2]) + " chi1";
  std::string separator = " (residues: ";
  for (const auto& [name, residues] : usedPerClass) {
    line += separator + std::to_string(residues) + " " + name;
    separator = ", ";
  }
  return usedPerClass.empty() ? line : line + ")";
}

void Selection::reportReference() {
  if (bad.empty()) return;
  const char* consequence = options.dropBad ? "left out, as asked for"
                            : options.classes.contains("Bad")
                                ? "used as a class of their own, as asked for"
                                : "the class without it decides (see --drop-bad)";
  list.report.push_back("class Bad, far from the reference structure: " + std::to_string(bad.size()) +
                        " (residues " + ranges(bad) + "); " + consequence);
}

RestraintList Selection::finish() {
  std::stable_sort(list.restraints.begin(), list.restraints.end(),
                   [](const Restraint& a, const Restraint& b) { return a.resid < b.resid; });
  std::vector<std::string>& report = list.report;
  if (!torsions.title.empty()) report.push_back("prediction for " + tools::printable(torsions.title));
  report.push_back(list.labels.numbers.empty() ? "residue numbers are those of the prediction table"
                                               : "residue numbers are those of " + list.labels.source);
  report.push_back(counts());
  reportReference();
  report.push_back("half width " + formatted("%g", options.factor) + " x SD, phi and psi at least " +
                   formatted("%g", options.floor) + ", chi1 at least " + formatted("%g", options.chi1Floor) +
                   ", at most " + formatted("%g", options.cap) + " degrees; " + std::to_string(widened) +
                   " raised to the floor, " + std::to_string(limited) + " lowered to the cap");
  if (!valines.empty()) {
    report.push_back("valine chi1: 120 degrees added back to the table's value for N-CA-CB-CG1: residues " +
                     ranges(valines));
  }
  for (const auto& [reason, residues] : skipped) {
    report.push_back("skipped, " + reason + ": " + std::to_string(residues.size()) + " (residues " +
                     ranges(residues) + ")");
  }
  for (const char* doubtful : {"Warn", "Dyn", "Bad"}) {
    if (options.classes.contains(doubtful)) {
      report.push_back(std::string("class ") + doubtful + " was asked for: these angles are not reliable");
    }
  }
  return std::move(list);
}

}  // namespace

RestraintList selectRestraints(const TorsionTable& torsions, const std::vector<Chi1Row>& chi1,
                               const Options& options, const Labels& labels) {
  Selection selection(torsions, labels, options);
  std::map<int, const TorsionRow*> byResid;
  for (const TorsionRow& row : torsions.rows) {
    selection.addBackbone(row);
    byResid[row.resid] = &row;
  }
  for (const Chi1Row& row : chi1) {
    const auto backbone = byResid.find(row.resid);
    selection.addSideChain(row, backbone == byResid.end() ? nullptr : backbone->second);
  }
  return selection.finish();
}

}  // namespace restraints
