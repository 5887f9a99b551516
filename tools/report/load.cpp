// Reads the output tables of a run into the report's records.
#include "report/load.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <utility>

#include "report/check_log.h"
#include "restraints/table_file.h"
#include "tables/PDB.h"
#include "tables/text.h"

namespace report {

namespace {

using restraints::kMissing;
using restraints::RowReader;
using restraints::TableFile;

class Loader {
 public:
  Loader(const Options& settings, std::string& fault) : options(settings), error(fault) {}

  bool run() {
    return loadTorsions() && loadSs() && loadS2() && loadChi1() && loadBoxes() && loadShifts() &&
           loadMatches() && loadLog() && loadReference();
  }
  ReportData take();

 private:
  std::string path(const std::string& ending) const {
    return (std::filesystem::path(options.directory) / (options.stem + ending)).string();
  }
  Residue& residue(int resid, char code);
  bool isThere(const std::string& ending);
  bool readRows(const std::string& ending, const std::vector<std::string>& columns, bool& found,
                const std::function<void(RowReader&)>& read);
  bool loadTorsions();
  bool loadSs();
  bool loadS2();
  bool loadChi1();
  bool loadBoxes();
  bool loadShifts();
  bool loadMatches();
  bool loadLog();
  bool loadReference();

  const Options& options;
  std::string& error;
  ReportData data;
  std::map<int, Residue> residues;
  std::vector<std::string> remarks;  ///< of the table read last
};

Residue& Loader::residue(int resid, char code) {
  const auto [it, isNew] = residues.try_emplace(resid);
  it->second.resid = resid;
  if (isNew || it->second.code == '?') it->second.code = code;
  return it->second;
}

/// True when the optional table exists; else it is noted as missing.
bool Loader::isThere(const std::string& ending) {
  std::error_code status;
  if (std::filesystem::exists(path(ending), status)) return true;
  data.missing.push_back(options.stem + ending);
  return false;
}

/// Calls `read` for every row of an optional table; true when the table is absent or sound.
bool Loader::readRows(const std::string& ending, const std::vector<std::string>& columns, bool& found,
                      const std::function<void(RowReader&)>& read) {
  found = isThere(ending);
  if (!found) return true;
  const auto source = TableFile::load(path(ending), columns, error);
  if (!source) return false;
  for (const auto& [number, cells] : source->table.entries) {
    RowReader reader(*source, number, cells, error);
    read(reader);
    if (!error.empty()) return false;
  }
  remarks.assign(source->table.remarks.begin(), source->table.remarks.end());
  return true;
}

bool Loader::loadTorsions() {
  const auto table = restraints::loadTorsions(path(".tab"), error);
  if (!table) return false;
  data.title = options.title.empty() ? table->title : options.title;
  data.version = std::string(text::trim(table->version));
  data.referenceTitle = table->referenceTitle;
  for (const auto& [resid, code] : table->sequence) residue(resid, code);
  for (const restraints::TorsionRow& row : table->rows) residue(row.resid, row.code).torsion = row;
  return true;
}

bool Loader::loadSs() {
  return readRows("SS.tab", {"RESID", "RESNAME", "Q_H", "Q_E", "Q_L", "CONFIDENCE", "SS_CLASS"}, data.hasSs,
                  [&](RowReader& row) {
                    SecondaryStructure ss;
                    ss.helix = row.number("Q_H");
                    ss.strand = row.number("Q_E");
                    ss.coil = row.number("Q_L");
                    ss.confidence = std::clamp(row.number("CONFIDENCE"), 0.0, 1.0);
                    ss.className = row.code("SS_CLASS");
                    if (std::string_view("HELhecx").find(ss.className) == std::string_view::npos) {
                      row.fail("SS_CLASS is '" + std::string(1, ss.className) + "', not a known class");
                    }
                    residue(row.integer("RESID"), row.code("RESNAME")).ss = ss;
                  });
}

bool Loader::loadS2() {
  return readRows("S2.tab", {"RESID", "RESNAME", "S2"}, data.hasS2, [&](RowReader& row) {
    const double s2 = row.number("S2");
    Residue& r = residue(row.integer("RESID"), row.code("RESNAME"));
    if (s2 < kMissing) r.s2 = s2;
  });
}

bool Loader::loadChi1() {
  data.hasChi1 = isThere("Chi1.tab");
  if (!data.hasChi1) return true;
  const auto rows = restraints::loadChi1(path("Chi1.tab"), error);
  if (!rows) return false;
  for (const restraints::Chi1Row& row : *rows) {
    Residue& r = residue(row.resid, row.code);
    r.chi1 = row;
    r.referenceChi1 = row.observed;
  }
  return true;
}

bool Loader::loadBoxes() {
  std::vector<std::string> columns = {"RESID", "RESNAME", "CLUST_N", "CLUST_1_PER"};
  std::vector<std::string> boxes;
  for (std::size_t k = 0; k < kBoxes; ++k) boxes.push_back("Q_" + std::to_string(k));
  columns.insert(columns.end(), boxes.begin(), boxes.end());
  return readRows("ABP.tab", columns, data.hasBoxes, [&](RowReader& row) {
    BoxMap map;
    map.clusters = row.integer("CLUST_N");
    map.topShare = row.number("CLUST_1_PER");
    double total = 0;
    for (std::size_t k = 0; k < kBoxes; ++k) {
      map.share[k] = std::max(0.0, row.number(boxes[k]));
      total += map.share[k];
    }
    for (double& share : map.share) share = total > 0 ? share / total : 0;
    residue(row.integer("RESID"), row.code("RESNAME")).boxes = map;
  });
}

bool Loader::loadShifts() {
  const bool read =
      readRows("AdjCS.tab", {"RESID", "RESNAME", "ATOMNAME", "SHIFT"}, data.hasShifts, [&](RowReader& row) {
        const std::string name = row.text("ATOMNAME") == "H" ? "HN" : row.text("ATOMNAME");
        const auto atom = std::find(kAtoms.begin(), kAtoms.end(), name);
        const double shift = row.number("SHIFT");
        const int resid = row.integer("RESID");
        const std::string type = row.text("RESNAME");
        if (atom == kAtoms.end() || shift >= kMissing) return;
        const char code = type.size() == 1 ? type[0] : '?';
        residue(resid, code).shifts[static_cast<std::size_t>(atom - kAtoms.begin())] = shift;
      });
  if (!read || !data.hasShifts) return read;
  for (const std::string& remark : remarks) {
    readAppliedOffset(remark, data.check);
    if (remark.find("Deuterium Isotope Shifts Correction Applied") != std::string::npos) {
      data.deuterated = true;
    }
  }
  return true;
}

bool Loader::loadMatches() {
  return readRows("All.tab", {"RESID_Q_CENTER", "W", "PHI", "PSI"}, data.hasMatches, [&](RowReader& row) {
    const Match match{row.number("PHI"), row.number("PSI"), row.number("W") > 0};
    const auto found = residues.find(row.integer("RESID_Q_CENTER"));
    if (found == residues.end()) return row.fail("a residue that the summary table does not have");
    if (match.phi < kMissing && match.psi < kMissing) found->second.matches.push_back(match);
  });
}

bool Loader::loadLog() {
  return options.logFile.empty() || readCheckLog(options.logFile, data.check, error);
}

bool Loader::loadReference() {
  if (options.referenceFile.empty()) return true;
  std::error_code status;
  if (!std::filesystem::is_regular_file(options.referenceFile, status)) {
    error = options.referenceFile + ": cannot be opened";
    return false;
  }
  const PDB structure(options.referenceFile);
  std::size_t common = 0;
  for (auto& [resid, r] : residues) {
    const auto angle = [](float value) {
      return value < 999.0F && std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
    };
    r.referencePhi = angle(structure.getPhi(1, resid));
    r.referencePsi = angle(structure.getPsi(1, resid));
    r.referenceChi1 = angle(structure.getChi1(1, resid));
    common += r.referencePhi && r.referencePsi ? 1 : 0;
  }
  if (common == 0) {
    error = options.referenceFile + ": no residue of the prediction has phi and psi there";
    return false;
  }
  data.hasReference = true;
  if (data.referenceTitle.empty()) {
    data.referenceTitle = std::filesystem::path(options.referenceFile).filename().string();
  }
  return true;
}

ReportData Loader::take() {
  for (auto& [resid, r] : residues) data.residues.push_back(std::move(r));
  if (data.title.empty()) data.title = options.stem;
  return std::move(data);
}

}  // namespace

std::optional<ReportData> loadReport(const Options& options, std::string& error) {
  Loader loader(options, error);
  if (!loader.run()) return std::nullopt;
  return loader.take();
}

}  // namespace report
