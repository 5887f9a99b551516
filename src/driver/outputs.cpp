// Writing of the output tables, with the record of what was lost.
#include <iostream>

#include "driver/ORBEL.h"
#include "tables/OutputFile.h"

void ORBEL::reportLoss(const std::string& file, const std::string& reason) {
  std::cerr << "\tCan't save file " << file << " completely: " << reason << std::endl;
  outputsWhole = false;
}

void ORBEL::saveTable(const GDB& table, const std::string& file) {
  if (!table.saveGDB(file)) outputsWhole = false;
}

void ORBEL::saveText(OutputFile& output, const std::string& file, const std::string& text) {
  if (const std::string reason = output.finish(text); !reason.empty()) reportLoss(file, reason);
}
