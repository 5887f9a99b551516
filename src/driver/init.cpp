// First stage of a run: input table, reference tables, look-up maps, chi1 networks.
#include <iostream>

#include "ann/CHI1ANN.h"
#include "ann/residue_vectors.h"
#include "base/missing.h"
#include "base/residues.h"
#include "driver/ORBEL.h"
#include "tables/tableList.h"
#include "tables/text.h"

namespace {

void readReferenceTable(const ORBEL& run, const char* what, const std::string& file, GDB& table) {
  if (!run.hidePaths) std::cout << what << file << std::endl;
  table.loadGDB(file);
}

/// `column` of the first row named `name`, `missing` when there is no such row.
double lookUp(const GDB& table, const std::string& name, const std::string& column, double missing) {
  const GDB::Row* row = table.findRow("RESNAME", name);
  return row == nullptr ? missing : text::toDouble(GDB::cell(*row, column));
}

void fillIsotopeShifts(ORBEL& run) {
  run.isotopeTable.loadGDB(run.isotopeFile);
  for (const auto& [number, row] : run.isotopeTable.entries) {
    auto& shifts = run.isotopeShift[GDB::cell(row, "RESNAME")];
    shifts["CA"] = text::toDouble(GDB::cell(row, "CA"));
    shifts["CB"] = text::toDouble(GDB::cell(row, "CB"));
  }
}

void fillTripletWeights(ORBEL& run) {
  for (std::size_t i = 1; i <= 3; ++i) {
    const std::string row = "R" + std::to_string(i);
    for (const auto& [position, atom] : run.atomNames) {
      run.ringWeights[i][static_cast<std::size_t>(position)] = run.getWeight(row, atom);
    }
  }
  for (const auto& [position, atom] : run.atomNames) {
    run.atomWeights[static_cast<std::size_t>(position)] =
        run.getWeight("AVG", atom) * run.getWeight("AVG", "W");
  }
  for (std::size_t i = 1; i <= 3; ++i) run.ringScale[i] = run.getWeight("R" + std::to_string(i), "W");
}

void fillHomology(ORBEL& run) {
  for (const auto& [number, row] : run.homologyTable.entries) {
    auto& values = run.homologyByName[GDB::cell(row, "RESNAME")];
    for (const auto& [column, cell] : row) {
      if (column != "RESNAME") values[column] = text::toDouble(cell);
    }
  }
}

/// BLOSUM62 (Henikoff & Henikoff, PNAS 1992): one row per residue type.
void fillBlosum(ORBEL& run) {
  const GDB table(run.tabDir + run.pathSeparator + "BLOSUM62.tab");
  for (const auto& [number, row] : table.entries) {
    const std::string& name = GDB::cell(row, "RESNAME");
    for (const auto& [column, cell] : row) {
      if (column.size() != 1 || kAminoAcids.find(column[0]) == std::string_view::npos) continue;
      const float value = static_cast<float>(text::toDouble(cell));
      run.blosumScaled[name].push_back(value / static_cast<float>(kTypeScale));
      if (!name.empty()) run.blosumMatrix[name[0]][column[0]] = value;
    }
    for (const char letter : kScoreOrder) {
      run.blosumProfile[name].push_back(text::toDouble(GDB::cell(row, std::string(1, letter))));
    }
  }
  for (const char* unspecified : {"x", "X", "?"}) {
    auto& profile = run.blosumProfile[unspecified];
    profile.insert(profile.end(), kScoreOrder.size(), 0.0);
  }
}

}  // namespace

double ORBEL::getRC(const std::string& code, const std::string& atom) const {
  return lookUp(randomCoilTable, code, atom, kMissingValue);
}
double ORBEL::getRCadj(const std::string& code, const std::string& atom) const {
  return lookUp(rcAdjTable, code, atom, 0.0);
}
double ORBEL::getPrevRCadj(const std::string& code, const std::string& atom) const {
  return lookUp(rcPrevTable, code, atom, 0.0);
}
double ORBEL::getNextRCadj(const std::string& code, const std::string& atom) const {
  return lookUp(rcNextTable, code, atom, 0.0);
}
double ORBEL::getWeight(const std::string& row, const std::string& column) const {
  return lookUp(weightTable, row, column, kMissingValue);
}

void ORBEL::warnOfDamagedTables() const {
  std::vector<std::string> elsewhere;
  const std::pair<const char*, const std::string*> named[] = {
      {"orbel.tab", &databaseFile},      {"weight.tab", &weightFile},  {"homology.tab", &homologyFile},
      {"randcoil.tab", &randomCoilFile}, {"rcadj.tab", &rcAdjFile},    {"rcprev.tab", &rcPrevFile},
      {"rcnext.tab", &rcNextFile},       {"sslimit.tab", &ssLimitFile}};
  for (const auto& [name, file] : named) {
    if (*file != tabDir + pathSeparator + name) elsewhere.emplace_back(name);
  }
  for (const std::string& fault : tableSizeFaults(tabDir, elsewhere)) {
    std::cerr << "Warning:: " << fault << std::endl;
  }
}

/// Reads every table; one that cannot be opened ends the process.
void ORBEL::init() {
  inputTable.loadGDB(inputFile);
  if (!exclusionList.empty()) std::cout << "Excluding Sources in Database: " << exclusionList << std::endl;
  readReferenceTable(*this, "Reading Random Coil Shifts from ", randomCoilFile, randomCoilTable);
  readReferenceTable(*this, "Reading RC Adjustments from ", rcAdjFile, rcAdjTable);
  readReferenceTable(*this, "Reading Previous Residue RC Adjustments from ", rcPrevFile, rcPrevTable);
  readReferenceTable(*this, "Reading Next Residue RC Adjustments from ", rcNextFile, rcNextTable);
  if (isotopeOn) fillIsotopeShifts(*this);
  readReferenceTable(*this, "Reading Secondary Shift Limits from ", ssLimitFile, ssLimitTable);
  readReferenceTable(*this, "Reading Homology Values from ", homologyFile, homologyTable);
  readReferenceTable(*this, "ORBEL Weight Factors from ", weightFile, weightTable);
  fillTripletWeights(*this);
  fillHomology(*this);
  fillBlosum(*this);
  for (auto& [code, network] : chi1Networks) {
    network = std::make_unique<CHI1ANN>(kChi1Entries, 15, 1, tabDir, std::string("chi1_") + code);
  }
}
