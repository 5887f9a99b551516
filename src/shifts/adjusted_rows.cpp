// Rows of the adjusted-shift table: observed shift, subtracted reference value, secondary shift.
#include "base/atoms.h"
#include "base/maps.h"
#include "base/missing.h"
#include "base/residue_range.h"
#include "driver/ORBEL.h"
#include "shifts/input_shift.h"
#include "shifts/row_index.h"
#include "tables/output_text.h"

namespace {

/// A residue and the codes that decide its reference values; an absent neighbour has an empty code.
struct Residue {
  int resid = 0;
  std::string code, previous, next;
};

Residue describe(const ORBEL& run, int resid) {
  Residue residue;
  residue.resid = resid;
  residue.code = valueOr(run.sequence, resid);
  if (resid > run.sequenceStart) residue.previous = valueOr(run.sequence, resid - 1);
  if (resid < run.sequence.rbegin()->first) residue.next = valueOr(run.sequence, resid + 1);
  return residue;
}

/// Random-coil shift with own-residue and neighbour adjustments and, when asked for, the deuterium term, ppm.
double referenceShift(const ORBEL& run, const Residue& residue, const std::string& atom) {
  double adjustment = run.getRC(residue.code, atom) + run.getRCadj(residue.code, atom) +
                      run.getPrevRCadj(residue.previous, atom) + run.getNextRCadj(residue.next, atom);
  if (run.isotopeOn && (atom == "CA" || atom == "CB")) {
    if (const auto* shifts = findValue(run.isotopeShift, residue.code)) adjustment += valueOr(*shifts, atom);
  }
  return adjustment;
}

/// One atom of one residue on its way into the table.
struct AtomRow {
  GDB::Row row;
  double secondary = kMissingValue;
  int missing = 0;
};

/// 9999 without a row.
double shiftOf(const GDB::Row* row) {
  return row == nullptr ? kMissingValue : inputShift(*row).value_or(kMissingValue);
}

/// Row of an atom that the input lists.
AtomRow observedRow(const ORBEL& run, const GDB::Row& input, const std::string& atom, double adjustment) {
  AtomRow result;
  result.row = input;
  const double observed = shiftOf(&input);
  if (isPresent(adjustment)) {
    result.secondary = observed - adjustment;
    result.row["SHIFT"] = cellText(result.secondary);
  } else {
    result.row["SHIFT"] = cellText(kMissingValue);
  }
  result.row["CS_OBS"] = cellText(observed);
  result.row["CS_ADJ"] = cellText(adjustment);
  if (run.noProton && isProton(atom)) ++result.missing;
  return result;
}

/// Row of an atom without a shift. Glycine's HA is settled by its HA2 and HA3 rows.
AtomRow absentRow(const Residue& residue, const std::string& atom) {
  AtomRow result;
  result.row = {{"RESID", cellText(residue.resid)},
                {"RESNAME", residue.code},
                {"ATOMNAME", atom},
                {"SHIFT", cellText(kMissingValue)}};
  if (!(residue.code == "G" && atom == "HA")) ++result.missing;
  return result;
}

/// Glycine HA: HA2, HA3 or their mean; a row named HA is not used, and HA counts once.
void setGlycineHA(const ORBEL& run, const RowIndex& input, const Residue& residue, double adjustment,
                  AtomRow& result) {
  const GDB::Row* ha2 = input.find(residue.resid, "HA2");
  const GDB::Row* ha3 = input.find(residue.resid, "HA3");
  double value = shiftOf(ha2 != nullptr ? ha2 : ha3);
  if (ha2 != nullptr && ha3 != nullptr) value = (shiftOf(ha2) + shiftOf(ha3)) * 0.5;
  result.missing = run.noProton || value >= kMissingLimit ? 1 : 0;
  if (ha2 != nullptr) {
    result.row = *ha2;
  } else if (ha3 != nullptr) {
    result.row = *ha3;
  }
  result.row["ATOMNAME"] = "HA";
  result.row["SHIFT"] = cellText(value);
  result.row["CS_OBS"] = cellText(value);
  result.row["CS_ADJ"] = cellText(adjustment);
  result.secondary = kMissingValue;
  if (isPresent(adjustment)) {
    result.secondary = value - adjustment;
    result.row["SHIFT"] = cellText(result.secondary);
  }
}

AtomRow makeRow(const ORBEL& run, const RowIndex& input, const Residue& residue, const std::string& atom,
                double adjustment) {
  const GDB::Row* found = input.find(residue.resid, atom);
  if (found == nullptr && atom == "HN") found = input.find(residue.resid, "H");
  AtomRow result = found == nullptr ? absentRow(residue, atom) : observedRow(run, *found, atom, adjustment);
  if (residue.code == "G" && atom == "HA") setGlycineHA(run, input, residue, adjustment, result);
  return result;
}

void copyHeader(const GDB& from, GDB& to) {
  to = from;
  to.entries.clear();
  to.addVAR("CS_OBS", " %9.3f");
  to.addVAR("CS_ADJ", " %9.3f");
}

}  // namespace

void ORBEL::fillAdjustedShifts() {
  copyHeader(inputTable, adjustedShiftTable);
  const RowIndex input(inputTable);
  secondaryShift.clear();
  std::int32_t number = 0;
  for (const int resid : residueRange(firstResidOption, lastResidOption)) {
    const Residue residue = describe(*this, resid);
    residueCode[resid] = residue.code.empty() ? '\0' : residue.code[0];
    auto& secondary = secondaryShift.emplace_back();
    int missing = 0;
    for (const auto& [position, atom] : atomNames) {
      const double adjustment = referenceShift(*this, residue, atom);
      AtomRow row = makeRow(*this, input, residue, atom, adjustment);
      missing += row.missing;
      secondary[static_cast<std::size_t>(position - 1)] = row.secondary;
      adjustedShiftTable.entries[++number] = std::move(row.row);
      shiftAdjustment[resid][atom] = adjustment;
    }
    missingCount[resid] = missing;
  }
}
