// Order parameter S2 from the random coil index.
#include <iostream>

#include "base/atoms.h"
#include "base/maps.h"
#include "base/missing.h"
#include "base/order_parameter.h"
#include "driver/ORBEL.h"
#include "rci/RCI.h"
#include "tables/OutputFile.h"
#include "tables/output_text.h"

void ORBEL::runS2_Prediction() {
  std::cout << "RCI prediction ..." << std::endl;
  RCI rci;
  rci.runRCI(annResidueInputs, shiftAdjustment, sequence);
  rciValue = rci.s2List;

  const std::string path = predPrefix + "S2.tab";
  OutputFile file(path);
  if (!file.isOpen()) {
    std::cerr << "\tCan't open file " << path << " !!!" << std::endl;
    return;
  }
  std::string text =
      "REMARK  Predicted order parameter (S2) from backbone chemical shifts for " + inputTitle + "\n";
  text += "REMARK  Random coil index: Berjanskii & Wishart, J. Am. Chem. Soc. 127, 14970-14971 (2005)\n\n";
  text += "VARS RESID RESNAME CS_CNT CS_CNT_R2 S2 \nFORMAT %4d %1s %2d %2d %8.3f \n\n";
  for (const auto& [resid, value] : rciValue) {
    // Residues without a count are entered with none missing.
    for (const int neighbour : {resid - 1, resid, resid + 1}) missingCount.try_emplace(neighbour, 0);
    output_text::append(text, " %4d %1s %2d %2d %8.3f\n", resid,
                        output_text::singleCode(valueOr(sequenceCopy, resid)).c_str(),
                        presentShifts(missingCount, resid, resid),
                        presentShifts(missingCount, resid - 1, resid + 1),
                        isBeyondLimit(value) ? kMissingValue : kLargestS2 - value);
  }
  saveText(file, path, text);
}
