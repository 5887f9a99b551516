// The seven output tables of a run as one model, one record per residue.
#pragma once

#include <array>
#include <list>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "predictions/rows.h"

namespace predictions {

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

/// A database fragment behind a prediction.
struct Match {
  double phi = 0, psi = 0;  ///< degrees
  double dist = 0;          ///< matching score
  bool inCluster = false;   ///< used for the prediction
  int resid = 0;            ///< of the fragment's centre in its protein
  std::string residues, source;
};

struct Residue {
  int resid = 0;
  char code = '?';
  std::optional<TorsionRow> torsion;
  std::optional<SecondaryStructure> ss;
  std::optional<double> s2;
  std::optional<Chi1Row> chi1;
  std::optional<BoxMap> boxes;
  std::vector<Match> matches;
  std::array<std::optional<double>, 6> secondaryShifts, observedShifts;  ///< ppm, order of kAtoms
  std::optional<double> referencePhi, referencePsi, referenceChi1;

  bool hasPrediction() const { return torsion && torsion->hasAngles(); }
  /// By the matches alone: a reference structure has no say.
  bool isReliable() const {
    return hasPrediction() && (torsion->ownClass() == "Strong" || torsion->ownClass() == "Generous");
  }
};

struct Model {
  std::string title, version, referenceTitle;
  std::vector<Residue> residues;        ///< ascending residue number
  std::list<std::string> shiftRemarks;  ///< of the adjusted-shift table, those of the input among them
  bool hasSs = false, hasS2 = false, hasChi1 = false, hasBoxes = false, hasMatches = false, hasShifts = false;
  std::vector<std::string> missing;  ///< tables that were not found, by file name
};

/// Where the tables of a run are: DIR/STEM.tab, DIR/STEMSS.tab and so on.
struct Tables {
  std::string directory, stem;
  std::set<std::string> endings = {"SS", "S2", "Chi1", "ABP", "AdjCS", "All"};  ///< to be read where there

  std::string path(const std::string& ending) const;
};

/// Reads all tables that are there into `model`. False with `error` set ("file:line: what") when the summary
/// table is missing or a table is faulty.
bool loadModel(const Tables& tables, Model& model, std::string& error);

}  // namespace predictions
