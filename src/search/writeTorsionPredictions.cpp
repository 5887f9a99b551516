// The summary table: predicted phi and psi with errors and reliability class, one row per residue.
#include <iostream>
#include <optional>

#include "base/atoms.h"
#include "base/maps.h"
#include "base/residue_range.h"
#include "driver/ORBEL.h"
#include "search/class_rule.h"
#include "search/table_output.h"
#include "tables/output_text.h"

namespace {

void addColumnRemarks(GDB& table) {
  addRemarks(
      table,
      {"", " PHI is the predicted torsion angle C(i-1) N(i)  CA(i) C(i)   (degrees).",
       " PSI is the predicted torsion angle N(i)   CA(i) C(i)  N(i+1) (degrees).", "",
       " DPHI and DPSI are the estimated standard deviations of the",
       " prediction errors in PHI and PSI (degrees).", "", " DIST is the ORBEL-N database matching score.",
       "", " S2 is the order parameter of the random coil index (RCI) method,",
       " M. V. Berjanskii and D. S. Wishart, J. Am. Chem. Soc. 127, 14970 (2005).", "",
       " COUNT is the number of database triplets used to form", " the torsion angle predictions.", ""});
}

void addClassRemarks(GDB& table, bool compared) {
  addRemarks(table, {" CLASS is the classification of the prediction result:",
                     "   None: no torsion prediction was made.", "",
                     "   Strong/Generous: majority consensus in database matches;",
                     "   prediction is likely to be good.", "",
                     "   Warn: no consensus in database matches, do not use prediction.", "",
                     "   Dyn:  RCI-S2 value indicates that residue has dynamic conformation.", ""});
  if (compared) {
    addRemarks(table, {"   Bad:  predictions with large deviation to reference PDB.", ""});
  }
}

void addHeader(GDB& table, const ORBEL& run, bool compared) {
  addRemarks(table, {"ORBEL-N Protein Backbone Torsion Angle Prediction Table",
                     " Prediction Summary for Chemical Shift Input " + run.inputTitle});
  if (compared) table.addRemark(" Predictions Compared to PDB Input " + run.referenceTitle);
  addColumnRemarks(table);
  addClassRemarks(table, compared);
  addReferenceRemarks(table);
  addRemarks(table, {"", ORBEL::versionBanner()});
  addSequenceData(table, run.inputTable);
}

void addRow(GDB& table, const ORBEL& run, int resid, const TorsionPrediction& prediction) {
  table.setEntry(resid, "RESID", cellText(resid));
  table.setEntry(resid, "RESNAME", residueName(run.sequenceCopy, resid));
  table.setEntry(resid, "PHI", finiteCell(prediction.phi));
  table.setEntry(resid, "PSI", finiteCell(prediction.psi));
  table.setEntry(resid, "DPHI", finiteCell(prediction.dphi));
  table.setEntry(resid, "DPSI", finiteCell(prediction.dpsi));
  table.setEntry(resid, "DIST", finiteCell(prediction.distance));
  table.setEntry(resid, "S2", finiteCell(prediction.s2));
  table.setEntry(resid, "COUNT", cellText(prediction.count));
  table.setEntry(resid, "CS_COUNT", cellText(presentShifts(run.missingCount, resid - 1, resid + 1)));
  table.setEntry(resid, "CLASS", prediction.className);
}

}  // namespace

ClassInput ORBEL::classInput(int resid) const {
  return {.resid = resid,
          .span = span(),
          .phi = valueOr(matchPhi, resid),
          .psi = valueOr(matchPsi, resid),
          .distance = valueOr(matchDistance, resid),
          .count = valueOr(predCount, resid),
          .flexibility = valueOr(rciValue, resid),
          .topCount = topCount,
          .s2Cutoff = s2Cutoff};
}

/// Writes `predFile`; residues without a prediction get angles of 9999 and class None.
void ORBEL::writeTorsionPredictions() {
  const bool compared = hasReference();
  GDB table;
  addHeader(table, *this, compared);
  table.VARS_str_parser("RESID RESNAME PHI PSI DPHI DPSI DIST S2 COUNT CS_COUNT CLASS");
  table.FORMAT_str_parser(" %4d %s %8.3f %8.3f %8.3f %8.3f %8.3f %5.3f %2d %2d %s");
  std::cout << "Summarizing Phi/Psi Predictions ..." << std::endl;
  for (const int resid : residueRange(firstResidOption, lastResidOption)) {
    std::optional<ReferenceTorsions> reference;
    if (compared && resid > shiftFirstResid && resid < shiftLastResid) {
      reference = referenceTorsions(*referenceStructure, resid);
    }
    addRow(table, *this, resid, classifyResidue(classInput(resid), reference));
  }
  saveTable(table, predFile);
}
