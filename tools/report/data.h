// Everything a report shows, one record per residue.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "restraints/prediction.h"

namespace report {

inline constexpr std::size_t kBoxesPerAxis = 18;  ///< of 20 degrees each, from -180
inline constexpr std::size_t kBoxes = kBoxesPerAxis * kBoxesPerAxis;
inline constexpr std::array<const char*, 6> kAtoms = {"N", "HA", "C", "CA", "CB", "HN"};

struct SecondaryStructure {
  double helix = 0, strand = 0, coil = 0, confidence = 0;
  char className = 'x';  ///< H E L from shifts, h e c from sequence, x none
};

struct BoxMap {
  int clusters = 0;
  double topShare = 0;               ///< share of the first cluster
  std::array<double, kBoxes> share;  ///< of the residue's total, 18 x phi index + psi index; sums to 1 or 0
};

struct Match {
  double phi = 0, psi = 0;  ///< degrees
  bool inCluster = false;   ///< used for the prediction
};

struct Residue {
  int resid = 0;
  char code = '?';
  std::optional<restraints::TorsionRow> torsion;
  std::optional<SecondaryStructure> ss;
  std::optional<double> s2;
  std::optional<restraints::Chi1Row> chi1;
  std::optional<BoxMap> boxes;
  std::vector<Match> matches;
  std::array<std::optional<double>, 6> shifts;  ///< secondary shifts in ppm, order of kAtoms
  std::optional<double> referencePhi, referencePsi, referenceChi1;

  bool hasPrediction() const { return torsion && torsion->hasAngles(); }
  bool isReliable() const {
    return hasPrediction() && (torsion->className == "Strong" || torsion->className == "Generous");
  }
};

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

struct ReportData {
  std::string title, version, referenceTitle;
  std::vector<Residue> residues;  ///< ascending residue number
  CheckResult check;
  bool deuterated = false;  ///< deuterium correction applied
  bool hasSs = false, hasS2 = false, hasChi1 = false, hasBoxes = false, hasMatches = false, hasShifts = false;
  bool hasReference = false;         ///< reference phi and psi are there
  std::vector<std::string> missing;  ///< tables that were not found, by file name
};

}  // namespace report
