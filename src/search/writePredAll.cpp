// The comprehensive table: every database match behind each prediction.
#include <array>
#include <string>

#include "base/atoms.h"
#include "base/maps.h"
#include "base/residue_range.h"
#include "driver/ORBEL.h"
#include "search/fragment_reach.h"
#include "search/table_output.h"
#include "tables/output_text.h"

namespace {

/// Column endings of the residue before the match's centre, the centre and the residue after it.
constexpr std::array<const char*, 3> kPositions = {"_L1", "", "_R1"};

void defineColumns(GDB& table) {
  std::string names = "INDEX RESID_Q_CENTER RESNAMES_Q DIST W RESNAMES_DB";
  std::string formats = "%4d %4d %7s %6.3f %4.2f  %s";
  for (const std::string position : kPositions) {
    for (const char* name : {" RESID", " PHI", " PSI", " CHI1"}) names.append(name).append(position);
    formats += " %4d %6.1f %6.1f %4.0f";
    for (const Atom atom : kInputOrder) {
      names.append(1, ' ').append(atomName(atom)).append(position);
      formats += isProton(atom) ? " %5.2f" : " %5.1f";
    }
  }
  table.VARS_str_parser(names + " SOURCE");
  table.FORMAT_str_parser(formats + " %s");
}

void addHeader(GDB& table, const ORBEL& run) {
  addRemarks(table, {"ORBEL-N Protein Backbone Torsion Angle Prediction Table",
                     " Database Penta-peptide Matches for " + run.inputTitle,
                     "",
                     " RESID_Q_CENTER is the residue id of query penta-peptide sequence.",
                     "",
                     " RESNAMES_Q is the query penta-peptide sequence.",
                     "",
                     " DIST is the ORBEL-N database matching score.",
                     "",
                     " W is a weighting factor used to calculate the average predicted angles.",
                     "",
                     " RESNAMES_DB is the database penta-peptide sequence.",
                     "",
                     " *_L1 are the residue numbers, phi/psi/chi1 torsion angles (degrees) ",
                     " or the chemical shifts of the third residue of the database",
                     " penta-peptide.",
                     "",
                     " RESID is the residue number of center residue of database penta-peptide.",
                     "",
                     " HN N HA C CA CB are secondary chemical shifts of center residue ",
                     " of database penta-peptide.",
                     "",
                     " PHI/PSI/CHI1 is the phi/psi/chi1 torsion angles (degrees) of the ",
                     " center residue of the database penta-peptide.",
                     "",
                     " *_R1 are the residue numbers, phi/psi/chi1 torsion angles (degrees) ",
                     " or the chemical shifts of the fifth residue of the database",
                     " penta-peptide.",
                     "",
                     " SOURCE is protein name of the database triplet.",
                     "",
                     ORBEL::versionBanner(),
                     ""});
  addSequenceData(table, run.inputTable);
}

/// Number, angles and shift values of one database residue.
void addEntryCells(GDB& table, int row, const DB& db, int entry, const std::string& position) {
  const float* angles = db.angles(entry);
  const float* shifts = db.shifts(entry);
  const auto resid = static_cast<int>(db.dbResid[toIndex(entry)]);
  table.setEntry(row, "RESID" + position, cellText(resid));
  table.setEntry(row, "PHI" + position, finiteCell(static_cast<double>(angles[0])));
  table.setEntry(row, "PSI" + position, finiteCell(static_cast<double>(angles[1])));
  table.setEntry(row, "CHI1" + position, finiteCell(static_cast<double>(angles[2])));
  for (const Atom atom : kInputOrder) {
    table.setEntry(row, atomName(atom) + position, finiteCell(static_cast<double>(shifts[2 * column(atom)])));
  }
}

/// One match: `distance` and `weight` of its rank, `entry` the fragment's centre.
void addRow(GDB& table, const ORBEL& run, int row, int resid, int entry, double distance, double weight) {
  const DB& db = *run.fragmentDatabase;
  const int halfWidth = fragmentHalfWidth(run.alignLength);
  std::string query;
  std::string database;
  for (int k = -halfWidth; k <= halfWidth; ++k) {
    query += residueName(run.sequence, resid + k);
    database += printableCode(db.dbResName[toIndex(entry + k)]);
  }
  table.setEntry(row, "INDEX", cellText(row));
  table.setEntry(row, "RESID_Q_CENTER", cellText(resid));
  table.setEntry(row, "RESNAMES_Q", query);
  table.setEntry(row, "DIST", finiteCell(distance));
  table.setEntry(row, "W", cellText(weight));
  table.setEntry(row, "RESNAMES_DB", database);
  for (int d = -1; d <= 1; ++d) {
    addEntryCells(table, row, db, entry + d, kPositions[toIndex(d + 1)]);
  }
  table.setEntry(row, "SOURCE", db.source(entry));
}

}  // namespace

/// Writes `predAllFile`: one row per kept match of every predicted residue, best match first.
void ORBEL::writePredAll() {
  GDB table;
  defineColumns(table);
  addHeader(table, *this);
  int row = 0;
  for (const int resid : residueRange(firstResidOption, lastResidOption)) {
    if (!isSearchable(resid)) continue;
    const std::vector<double> distance = valueOr(matchDistance, resid);
    const std::vector<double> weight = valueOr(matchInCluster, resid);
    for (const auto& [rank, entry] : valueOr(matchIndex, resid)) {
      const auto k = toIndex(rank - 1);
      if (k >= distance.size() || k >= weight.size()) break;
      addRow(table, *this, ++row, resid, entry, distance[k], weight[k]);
    }
  }
  saveTable(table, predAllFile);
}
