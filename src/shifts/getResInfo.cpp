// Input shift table -> sequence, residue range, secondary shifts, missing counts, adjusted-shift table.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <optional>

#include "base/atoms.h"
#include "base/limits.h"
#include "base/maps.h"
#include "base/missing.h"
#include "base/residue_range.h"
#include "base/residues.h"
#include "driver/ORBEL.h"
#include "shifts/input_shift.h"
#include "tables/output_text.h"
#include "tables/text.h"

namespace {

constexpr float kOxidisedCysteineCB =
    34.0F;                               ///< ppm; reduced cysteines lie below (Sharma & Rajarathnam 2000)
constexpr int kToleratedMismatches = 4;  // given

/// One-letter code of a RESNAME cell, which may hold a three-letter name.
std::string oneLetter(const std::string& name) {
  return name.size() == 3 ? std::string(1, oneLetterCode(name)) : name;
}

void readSequence(ORBEL& run) {
  run.sequenceStart = run.inputTable.firstResid;
  for (const auto& [resid, code] : run.inputTable.residList) run.sequence[resid] = code;
  run.sequenceCopy = run.sequence;
  run.sequenceLength = static_cast<int>(run.sequence.size());
}

void requireContent(const ORBEL& run) {
  if (run.sequenceLength < 1) {
    refuse(" A full amino acid sequence is required in the DATA SEQUENCE header, exit ...");
  }
  if (run.inputTable.varNames.empty()) refuse(" No entry found in the VARS header, exit ...");
  if (run.inputTable.entries.empty()) refuse(" No chemical shift data found in file " + run.inputFile);
  requireChainLength(run.sequence.size(), "file " + run.inputFile);
  requireResid(run.sequenceStart, run.inputFile);
}

/// Nothing is known yet of the residues of the sequence and of the two beside it.
void startCounts(ORBEL& run) {
  for (const int resid : residueRange(run.sequenceStart - 1, run.sequence.rbegin()->first + 1))
    run.missingCount[resid] = static_cast<int>(kAtoms);
}

/// The CB shift tells a disulfide-bonded cysteine ("c") from a reduced one ("C").
void markCysteines(ORBEL& run) {
  for (const auto& [number, row] : run.inputTable.entries) {
    if (!isCysteine(oneLetter(GDB::cell(row, "RESNAME"))) || GDB::cell(row, "ATOMNAME") != "CB") continue;
    const auto residue = run.sequence.find(text::toInt(GDB::cell(row, "RESID")));
    if (residue == run.sequence.end() || !isCysteine(residue->second)) continue;
    const std::optional<double> shift = inputShift(row);
    if (shift) residue->second = static_cast<float>(*shift) < kOxidisedCysteineCB ? "C" : "c";
  }
}

/// RESNAME as compared with the sequence: one letter, unrecognised first characters read as X.
std::string comparableName(const std::string& cell) {
  const std::string name = oneLetter(cell);
  const char first = name.empty() ? '\0' : name[0];
  const bool known =
      (first >= 'A' && first <= 'Y') || first == 'c' || first == 'h' || first == 'p' || first == '?';
  return known ? name : "X";
}

/// Compares every row with the sequence and finds the lowest and highest residue number of the rows, those
/// of missing shifts included.
void checkSequence(ORBEL& run) {
  run.shiftFirstResid = std::numeric_limits<int>::max();
  run.shiftLastResid = std::numeric_limits<int>::min();
  int mismatches = 0;
  for (const auto& [number, row] : run.inputTable.entries) {
    const int resid = text::toInt(GDB::cell(row, "RESID"));
    run.shiftFirstResid = std::min(run.shiftFirstResid, resid);
    run.shiftLastResid = std::max(run.shiftLastResid, resid);
    const std::string code = valueOr(run.sequence, resid);
    std::string name = comparableName(GDB::cell(row, "RESNAME"));
    if (!run.noOxiCysCheck && (isCysteine(code) || isCysteine(name))) name = code;
    if (name == code) continue;
    std::cerr << "WARNING: Residue Type Mismatch: Residue " << resid << " SEQUENCE: " << code
              << " Chemical Shift Table: " << GDB::cell(row, "RESNAME") << ".\n";
    ++mismatches;
  }
  if (mismatches > kToleratedMismatches) {
    std::cerr << "Format Errors: Too Many Sequence Mismatches: " << mismatches << ", "
              << kToleratedMismatches + 1 << " Max.\n";
  }
  if (run.shiftLastResid < run.sequenceStart + run.sequenceLength - 1) ++run.shiftLastResid;
}

/// firstResidOption and lastResidOption brought into the residues with shifts.
void narrowRange(ORBEL& run) {
  int& first = run.firstResidOption;
  int& last = run.lastResidOption;
  first = std::max(first, run.shiftFirstResid);
  last = std::max(last, run.shiftFirstResid);
  first = std::min(first, run.shiftLastResid);
  last = std::min(last, run.shiftLastResid);
  if (last < first) std::swap(first, last);
  // A mistyped residue number must not turn into hours of work on empty residues.
  if (static_cast<std::int64_t>(last) - first >= kLongestChain) {
    refuse(" Residue range " + cellText(first) + " to " + cellText(last) + " in file " + run.inputFile +
           " is too long, at most " + cellText(kLongestChain) +
           " residues are supported, check the RESID column, exit ...");
  }
  requireResid(first, run.inputFile);
  requireResid(last, run.inputFile);
}

void reportOffset(ORBEL& run, const std::string& atom, const char* nuclei) {
  const double offset = valueOr(run.referencingOffset, atom);
  if (offset == 0.0) return;
  std::string message;
  output_text::append(message, " %6.3f ppm referencing offset applied for %s chemical shifts", offset,
                      nuclei);
  run.adjustedShiftTable.addRemark(message);
  std::cerr << message << std::endl;
}

/// Subtracts the estimated referencing offsets from the table; `secondaryShift` keeps the measured values.
void subtractOffsets(ORBEL& run) {
  for (auto& [number, row] : run.adjustedShiftTable.entries) {
    std::string atom = GDB::cell(row, "ATOMNAME");
    if (atom == "HA1" || atom == "HA2" || atom == "HA3") atom = "HA";
    const double offset = valueOr(run.referencingOffset, atom);
    const double shift = text::toDouble(GDB::cell(row, "SHIFT"));
    if (offset != 0.0 && isPresent(shift)) row["SHIFT"] = cellText(shift - offset);
  }
  reportOffset(run, "CA", "13Ca and 13Cb");
  reportOffset(run, "HA", "1Ha");
  reportOffset(run, "C", "13C'");
}

void saveAdjustedTable(ORBEL& run) {
  GDB table = run.adjustedShiftTable;
  table.entries.clear();
  std::int32_t number = 0;
  for (const auto& [resid, row] : run.adjustedShiftTable.entries) {
    if (isPresent(text::toDouble(GDB::cell(row, "SHIFT")))) table.entries[++number] = row;
  }
  table.addRemark("ORBEL-N Protein Secondary Chemical Shift Table for " + run.inputTitle);
  for (const char* remark :
       {"", " SHIFT is secondary chemical shift", "", " CS_OBS is the original chemical shift", "",
        " CS_ADJ is the adjustment used to calculate SHIFT.", ""}) {
    table.addRemark(remark);
  }
  table.addRemark(ORBEL::versionBanner());
  run.saveTable(table, run.predPrefix + "AdjCS.tab");
}

}  // namespace

/// Fills the members of the intake; ends the process (exit status 255) when sequence, columns or rows are
/// missing, when chain or range are longer than a protein, and after a check-only run.
void ORBEL::getResInfo() {
  readSequence(*this);
  requireContent(*this);
  startCounts(*this);
  if (!noOxiCysCheck) markCysteines(*this);
  checkSequence(*this);
  narrowRange(*this);
  fillAdjustedShifts();
  if (isotopeOn) {
    adjustedShiftTable.addRemark(" Deuterium Isotope Shifts Correction Applied for 13Ca and 13Cb Nuclei");
  }
  checkCS();
  if (applyOffsets) subtractOffsets(*this);
  saveAdjustedTable(*this);
  if (checkOnly) std::exit(255);
}
