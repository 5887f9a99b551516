// Small prediction tables and structure files that the tests of the companion programs read.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace tool_tables {

/// printf to a string.
template <class... Values>
std::string line(const char* format, Values... values) {
  char buffer[256];
  std::snprintf(buffer, sizeof buffer, format, values...);
  return buffer;
}

struct Torsion {
  int resid;
  char code;
  double phi, psi, dphi, dpsi;
  const char* className;
  double s2 = 0.85;
};

inline std::string torsionTable(const std::string& title, int firstResid, const std::string& sequence,
                                const std::vector<Torsion>& rows) {
  std::string text = "REMARK ORBEL-N Protein Backbone Torsion Angle Prediction Table\n";
  text += "REMARK  Prediction Summary for Chemical Shift Input " + title + "\n\n";
  text += "DATA FIRST_RESID " + std::to_string(firstResid) + "\nDATA SEQUENCE " + sequence + "\n\n";
  text += "VARS   RESID RESNAME PHI PSI DPHI DPSI DIST S2 COUNT CS_COUNT CLASS \n";
  text += "FORMAT  %4d %s %8.3f %8.3f %8.3f %8.3f %8.3f %5.3f %2d %2d %s\n\n";
  for (const Torsion& row : rows) {
    text += line(" %4d %c %8.3f %8.3f %8.3f %8.3f %8.3f %5.3f %2d %2d %s\n", row.resid, row.code, row.phi,
                 row.psi, row.dphi, row.dpsi, 12.5, row.s2, 25, 18, row.className);
  }
  return text;
}

struct Chi1 {
  int resid;
  char code;
  double gm, gp, t;
  const char* className;
  double chi1, dchi1;
};

inline std::string chi1Table(const std::vector<Chi1>& rows) {
  std::string text = "REMARK ORBEL-N Protein Chi1 Conformation Prediction Table\n\n\n";
  text += "VARS   RESID RESNAME CS_COUNT Q_Gm Q_Gp Q_T CLASS CHI1 DCHI1 \n";
  text += "FORMAT  %4d %s %2d %5.3f %5.3f %5.3f  %-2s %6.1f %6.1f\n\n";
  for (const Chi1& row : rows) {
    text += line(" %4d %c %2d %5.3f %5.3f %5.3f  %-2s %6.1f %6.1f\n", row.resid, row.code, 18, row.gm, row.gp,
                 row.t, row.className, row.chi1, row.dchi1);
  }
  return text;
}

}  // namespace tool_tables
