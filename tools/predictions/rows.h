// The torsion and chi1 tables of a prediction as typed rows.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace predictions {

inline constexpr double kMissing = 999.0;  ///< table values from here on stand for "no value"

/// One row of the summary table; angles in degrees, 9999 = no prediction.
struct TorsionRow {
  int resid = 0;
  char code = '?';
  double phi = 9999, psi = 9999, dphi = 0, dpsi = 0, dist = 0, s2 = 0;
  int count = 0, csCount = 0;
  std::string className;  ///< Strong, Generous, Warn, Dyn, Bad or None

  bool hasAngles() const { return phi < kMissing && psi < kMissing; }
  /// The class without a reference structure. Only Strong and Generous residues can become Bad, and 25
  /// matches of 25 in one cluster make the difference between the two.
  std::string ownClass() const {
    return className != "Bad" ? className : count == 25 ? "Strong" : "Generous";
  }
};

/// One row of the chi1 table; angles in degrees. For valine the table's angles and class stand 120 degrees
/// below the torsion N-CA-CB-CG1.
struct Chi1Row {
  int resid = 0;
  char code = '?';
  int csCount = 0;
  std::optional<double> observed;  ///< of the reference structure; true torsion also for valine
  double gm = 0, gp = 0, t = 0;    ///< probabilities of g-, g+ and t
  std::string className;           ///< g-, g+, t or na
  double chi1 = 9999, dchi1 = 9999;

  bool hasAngle() const { return className != "na" && chi1 < kMissing; }
  /// Probability of the row's class; 0 for na.
  double probability() const;
  /// The torsion N-CA-CB-XG in (-180, 180], valine's 120 degrees added back; 9999 = none.
  double torsion() const;
};

struct TorsionTable {
  std::string file, title, referenceTitle, version;
  int firstResid = 1;
  std::map<int, char> sequence;  ///< DATA SEQUENCE by residue number
  std::vector<TorsionRow> rows;  ///< ascending residue number
};

/// Both return nothing and set `error` ("file:line: what") for a table that is not as expected.
std::optional<TorsionTable> loadTorsions(const std::string& path, std::string& error);
std::optional<std::vector<Chi1Row>> loadChi1(const std::string& path, std::string& error);

double wrapAngle(double degrees);  ///< into (-180, 180]

}  // namespace predictions
