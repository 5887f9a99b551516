// Text of the phi/psi box distribution table.
#include "ann/abp_output.h"

#include "base/boxes.h"
#include "tables/output_text.h"

namespace {

void appendBoxMatrix(std::string& text) {
  text += "REMARK  Phi/Psi box index matrix\nREMARK    PHI:       ";
  for (int phi = 0; phi < kBoxesPerAxis; ++phi) output_text::append(text, "%4d ", lowerEdge(phi));
  text += "\nREMARK --------------------------------------------------------------------\n";
  for (int psi = kBoxesPerAxis - 1; psi >= 0; --psi) {
    output_text::append(text, "REMARK    PSI=%5d: ", lowerEdge(psi));
    for (int phi = 0; phi < kBoxesPerAxis; ++phi) output_text::append(text, "%4d ", boxAt(phi, psi));
    text += '\n';
  }
}

}  // namespace

std::string boxDistributionHeader(const std::string& title) {
  std::string text = "REMARK  Neural network predicted 2D Phi/Psi distribution map for " + title + "\n\n";
  text += "REMARK  Ramachandran map is grouped into 18x18 Phi/Psi boxes\n";
  text += "REMARK  Q_k: predicted likelihood of a residue residing in the k-th box\n\n";
  appendBoxMatrix(text);
  text += "\nVARS RESID RESNAME CS_CNT5 CS_CNT_R2 CLUST_N CLUST_1_PER ";
  for (int k = 0; k < kPhiPsiBoxes; ++k) output_text::append(text, "Q_%d ", k);
  text += "\nFORMAT %4d %1s %2d %2d  %2d  %5.2f   ";
  for (int k = 0; k < kPhiPsiBoxes; ++k) text += "%5.3f ";
  text += "\n\n";
  return text;
}

void appendBoxDistributionRow(std::string& text, const BoxDistributionRow& row,
                              const std::vector<double>& values) {
  output_text::append(text, " %4d %1s %2d %2d ", row.resid, row.resName.c_str(), row.windowShifts,
                      row.residueShifts);
  output_text::append(text, " %2d %5.3f   ", row.clusterCount, row.topClusterShare);
  for (const double value : values) output_text::append(text, "%5.3f ", value);
  text += '\n';
}
