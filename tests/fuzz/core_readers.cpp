// The readers of the program itself: tables, weights, database, structure, checkpoint, shift intake, numbers.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "ann/ANN.h"
#include "driver/ORBEL.h"
#include "driver/command_line.h"
#include "fuzz/harness.h"
#include "shifts/shift_fixture.h"
#include "tables/DB.h"
#include "tables/GDB.h"
#include "tables/GDB2.h"
#include "tables/PDB.h"
#include "tables/text.h"

namespace fuzz {

namespace {

void readTable(const std::string&, std::string_view input) {
  const MemoryFile file(input);
  GDB table;
  table.loadGDB(file.path());
  for (const auto& [number, row] : table.entries) {
    require(row.size() <= table.varNames.size(), "a row has no cell beyond the columns");
  }
  const std::string copy = scratchFolder() + "/copy.tab";
  table.saveGDB(copy);
  const GDB again(copy);
}

void readWeights(const std::string&, std::string_view input) {
  const MemoryFile file(input);
  const GDB2 table(file.path());
  for (std::int32_t row = -1; row <= std::min(table.lineCount + 1, 50); ++row) {
    table.getFloatNodeVal(row, "b");
    table.getFloatNodeVal(row, 1);
  }
  require(static_cast<std::size_t>(table.lineCount) == table.lineEntries.size(), "every row is counted");
  ANN::Layer layer;
  ANN::loadWeightBias3(file.path(), layer, 2, 3);
}

void readDatabase(const std::string&, std::string_view input) {
  constexpr std::int32_t kMost = 200;
  const MemoryFile file(input);
  DB database;
  database.setMaxDBSize(kMost);
  database.loadDB(file.path());
  require(database.entryCount >= 0 && database.entryCount <= kMost, "no more records than there is room for");
  for (std::int32_t i = 0; i < database.entryCount; ++i) {
    require(!database.source(i).empty() || database.incompleteRecords > 0, "complete records have a source");
    for (int k = 0; k < DB::kShiftsPerEntry; ++k) {
      const float value = database.shifts(i)[k];
      require(value - value == 0.0F, "no record holds nan or inf");
    }
  }
}

void readStructure(const std::string&, std::string_view input) {
  const MemoryFile file(input);
  const PDB structure(file.path());
  for (const auto& [resid, name] : structure.resName1) {
    for (const float angle :
         {structure.getPhi(1, resid), structure.getPsi(1, resid), structure.getChi1(1, resid)}) {
      require(angle == PDB::kMissing || (angle >= -180.0F && angle <= 180.0F), "an angle is one or missing");
    }
    structure.isSSBonded(1, resid);
  }
}

void readCheckpoint(const std::string&, std::string_view input) {
  const MemoryFile file(input);
  ORBEL run;
  run.blastCheckFile = file.path();
  run.tabDir = scratchFolder() + "/none";  // without weights the run ends behind the reading
  run.predPrefix = scratchFolder() + "/pred";
  run.runSeqSS_Prediction();
}

/// A range of residues that the limits of the program allow, but that takes too long for a fuzzer.
bool tooLong(const GDB& table) {
  constexpr long long kMost = 2000;
  long long first = table.firstResid, last = first + static_cast<long long>(table.residList.size());
  for (const auto& [number, row] : table.entries) {
    const long long resid = text::toInt(GDB::cell(row, "RESID"));
    first = std::min(first, resid);
    last = std::max(last, resid);
  }
  return last - first > kMost;
}

void takeShifts(const std::string&, std::string_view input) {
  const MemoryFile file(input);
  const auto run = support::makeShiftRun("", 1, {});
  run->predPrefix = scratchFolder() + "/pred";
  run->inputTable = GDB(file.path());
  if (tooLong(run->inputTable)) return;
  run->getResInfo();
  run->runS2_Prediction();
}

void readTriplets(const std::string&, std::string_view input) {
  const MemoryFile file(input);
  const ORBEL run;
  TripletLibrary library = readTripletLibrary(file.path(), run.atomNames);
  excludeSources(library, "1ubqA,2abcB");
  for (const std::vector<double>& column : library.values) {
    require(column.size() == static_cast<std::size_t>(library.rows), "every column has every row");
  }
  for (const auto& ids : library.nameIds) {
    for (const int id : ids) {
      require(id >= 0 && static_cast<std::size_t>(id) < library.names.size(),
              "every name is one of the list");
    }
  }
}

/// `strtod` and `strtol` are the standard that the own parsers are held to.
void readNumbers(const std::string&, std::string_view input) {
  const std::string all(input.substr(0, 64));
  for (const std::string_view word : text::split_WhiteSpace(all)) {
    const std::string cell(word);
    const double own = text::toDouble(cell), standard = std::strtod(cell.c_str(), nullptr);
    require(std::bit_cast<std::uint64_t>(own) == std::bit_cast<std::uint64_t>(standard),
            "toDouble reads as strtod");
    require(text::toInt(cell) == static_cast<std::int32_t>(std::strtol(cell.c_str(), nullptr, 10)),
            "toInt reads as strtol");
  }
}

void readCommandLine(const std::string&, std::string_view input) {
  std::vector<std::string> words = text::split('\n', input);
  words.insert(words.begin(), "orbeln");
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const ORBEL run;
  parseCommandLine(static_cast<int>(words.size()), pointers.data(), run);
}

}  // namespace

std::vector<Harness> coreHarnesses() {
  return {{"table", readTable},       {"weights", readWeights},     {"database", readDatabase},
          {"triplets", readTriplets}, {"structure", readStructure}, {"checkpoint", readCheckpoint},
          {"shifts", takeShifts},     {"numbers", readNumbers},     {"command_line", readCommandLine}};
}

}  // namespace fuzz
