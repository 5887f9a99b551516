// Text of the phi/psi box distribution table.
#pragma once

#include <string>
#include <vector>

/// What one row tells about a residue.
struct BoxDistributionRow {
  int resid = 0;
  std::string resName;
  int windowShifts = 0;   ///< observed shifts of the five residues around it
  int residueShifts = 0;  ///< observed shifts of the residue
  int clusterCount = 0;
  double topClusterShare = 0.0;
};

/// Remarks with the box index matrix, column names and formats.
std::string boxDistributionHeader(const std::string& title);
/// Appends the row of one residue with its weighted box values.
void appendBoxDistributionRow(std::string& text, const BoxDistributionRow& row,
                              const std::vector<double>& values);
