// The tables of a run, the check's findings and the reference structure as the report's data.
#include "report/load.h"

#include <cmath>
#include <filesystem>
#include <fstream>

#include "predictions/input_notes.h"
#include "report/check_log.h"
#include "tables/PDB.h"

namespace report {

namespace {

void readShiftRemarks(ReportData& data) {
  for (const std::string& remark : data.shiftRemarks) {
    readAppliedOffset(remark, data.check);
    if (remark.find("Deuterium Isotope Shifts Correction Applied") != std::string::npos) {
      data.deuterated = true;
    }
  }
}

/// A structure that cannot be read costs the comparison, not the report.
void loadReference(const std::string& file, ReportData& data) {
  std::error_code status;
  if (!std::filesystem::is_regular_file(file, status) || !std::ifstream(file)) {
    data.referenceProblem = file + ": cannot be opened";
    return;
  }
  const PDB structure(file);
  std::size_t common = 0;
  for (Residue& r : data.residues) {
    const auto angle = [](float value) {
      return value < 999.0F && std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
    };
    r.referencePhi = angle(structure.getPhi(1, r.resid));
    r.referencePsi = angle(structure.getPsi(1, r.resid));
    r.referenceChi1 = angle(structure.getChi1(1, r.resid));
    common += r.referencePhi && r.referencePsi ? 1 : 0;
  }
  if (common == 0) {
    data.referenceProblem = file + ": no residue of the prediction has phi and psi there";
    return;
  }
  data.hasReference = true;
  if (data.referenceTitle.empty()) data.referenceTitle = std::filesystem::path(file).filename().string();
}

}  // namespace

std::optional<ReportData> loadReport(const Options& options, std::string& error) {
  ReportData data;
  if (!loadModel({options.directory, options.stem}, data, error)) return std::nullopt;
  readShiftRemarks(data);
  if (!options.logFile.empty() && !readCheckLog(options.logFile, data.check, error)) return std::nullopt;
  if (!options.referenceFile.empty()) loadReference(options.referenceFile, data);
  const std::string entry = predictions::readInputNotes(data.shiftRemarks).entry;
  if (!entry.empty()) data.title = entry;
  if (!options.title.empty()) data.title = options.title;
  if (data.title.empty()) data.title = options.stem;
  return data;
}

}  // namespace report
