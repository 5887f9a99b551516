// Reads the seven output tables of a run.
#include "predictions/model.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <utility>

#include "predictions/table_file.h"
#include "tables/text.h"

namespace predictions {

namespace {

class Loader {
 public:
  Loader(const Tables& from, Model& target, std::string& fault) : tables(from), data(target), error(fault) {}

  bool run() {
    return loadTorsions() && loadSs() && loadS2() && loadChi1() && loadBoxes() && loadShifts() &&
           loadMatches();
  }
  void finish();

 private:
  std::string path(const std::string& ending) const { return tables.path(ending); }
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

  const Tables& tables;
  Model& data;
  std::string& error;
  std::map<int, Residue> residues;
};

Residue& Loader::residue(int resid, char code) {
  const auto [it, isNew] = residues.try_emplace(resid);
  it->second.resid = resid;
  if (isNew || it->second.code == '?') it->second.code = code;
  return it->second;
}

/// True when the optional table is wanted and exists; one that does not exist is noted as missing.
bool Loader::isThere(const std::string& ending) {
  if (!tables.endings.contains(ending)) return false;
  std::error_code status;
  if (std::filesystem::exists(path(ending), status)) return true;
  data.missing.push_back(tables.stem + ending + ".tab");
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
  if (ending == "AdjCS") data.shiftRemarks = source->table.remarks;
  return true;
}

bool Loader::loadTorsions() {
  const auto table = predictions::loadTorsions(path(""), error);
  if (!table) return false;
  data.title = table->title;
  data.version = std::string(text::trim(table->version));
  data.referenceTitle = table->referenceTitle;
  for (const auto& [resid, code] : table->sequence) residue(resid, code);
  for (const TorsionRow& row : table->rows) residue(row.resid, row.code).torsion = row;
  return true;
}

bool Loader::loadSs() {
  return readRows("SS", {"RESID", "RESNAME", "Q_H", "Q_E", "Q_L", "CONFIDENCE", "SS_CLASS"}, data.hasSs,
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
  return readRows("S2", {"RESID", "RESNAME", "S2"}, data.hasS2, [&](RowReader& row) {
    const double s2 = row.number("S2");
    Residue& r = residue(row.integer("RESID"), row.code("RESNAME"));
    if (s2 < kMissing) r.s2 = s2;
  });
}

bool Loader::loadChi1() {
  data.hasChi1 = isThere("Chi1");
  if (!data.hasChi1) return true;
  const auto rows = predictions::loadChi1(path("Chi1"), error);
  if (!rows) return false;
  for (const Chi1Row& row : *rows) {
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
  return readRows("ABP", columns, data.hasBoxes, [&](RowReader& row) {
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
  const std::vector<std::string> columns = {"RESID", "RESNAME", "ATOMNAME", "SHIFT", "CS_OBS"};
  return readRows("AdjCS", columns, data.hasShifts, [&](RowReader& row) {
    const std::string name = row.text("ATOMNAME") == "H" ? "HN" : row.text("ATOMNAME");
    const auto atom = std::find(kAtoms.begin(), kAtoms.end(), name);
    const double shift = row.number("SHIFT"), observed = row.number("CS_OBS");
    const int resid = row.integer("RESID");
    const std::string type = row.text("RESNAME");
    if (atom == kAtoms.end() || shift >= kMissing) return;
    Residue& r = residue(resid, type.size() == 1 ? type[0] : '?');
    const auto index = static_cast<std::size_t>(atom - kAtoms.begin());
    r.secondaryShifts[index] = shift;
    if (observed < kMissing) r.observedShifts[index] = observed;
  });
}

bool Loader::loadMatches() {
  const std::vector<std::string> columns = {"RESID_Q_CENTER", "DIST", "W",   "RESNAMES_DB",
                                            "RESID",          "PHI",  "PSI", "SOURCE"};
  return readRows("All", columns, data.hasMatches, [&](RowReader& row) {
    Match match{row.number("PHI"),    row.number("PSI"),       row.number("DIST"), row.number("W") > 0,
                row.integer("RESID"), row.text("RESNAMES_DB"), row.text("SOURCE")};
    const auto found = residues.find(row.integer("RESID_Q_CENTER"));
    if (found == residues.end()) return row.fail("a residue that the summary table does not have");
    if (match.phi < kMissing && match.psi < kMissing) found->second.matches.push_back(std::move(match));
  });
}

void Loader::finish() {
  for (auto& [resid, r] : residues) data.residues.push_back(std::move(r));
}

}  // namespace

std::string Tables::path(const std::string& ending) const {
  return (std::filesystem::path(directory) / (stem + ending + ".tab")).string();
}

bool loadModel(const Tables& tables, Model& model, std::string& error) {
  Loader loader(tables, model, error);
  if (!loader.run()) return false;
  loader.finish();
  return true;
}

}  // namespace predictions
