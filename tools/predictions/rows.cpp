// The torsion and chi1 tables of a prediction as typed rows.
#include "predictions/rows.h"

#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "predictions/table_file.h"

namespace predictions {

namespace {

constexpr std::array<std::string_view, 6> kClasses = {"Strong", "Generous", "Warn", "Dyn", "Bad", "None"};
constexpr std::array<std::string_view, 4> kRotamers = {"g-", "g+", "t", "na"};

template <std::size_t N>
bool isOneOf(std::string_view word, const std::array<std::string_view, N>& known) {
  for (const std::string_view name : known) {
    if (name == word) return true;
  }
  return false;
}

TorsionRow readTorsionRow(RowReader& row) {
  TorsionRow r;
  r.resid = row.integer("RESID");
  r.code = row.code("RESNAME");
  r.phi = row.number("PHI");
  r.psi = row.number("PSI");
  r.dphi = row.number("DPHI");
  r.dpsi = row.number("DPSI");
  r.dist = row.number("DIST");
  r.s2 = row.number("S2");
  r.count = row.integer("COUNT");
  r.csCount = row.integer("CS_COUNT");
  r.className = row.text("CLASS");
  if (!isOneOf(r.className, kClasses)) row.fail("CLASS is '" + r.className + "', not a known class");
  for (const double angle : {r.phi, r.psi}) {
    if (angle < kMissing && std::fabs(angle) > 180.0005) row.fail("an angle beyond 180 degrees");
  }
  if (r.dphi < 0 || r.dpsi < 0) row.fail("a negative standard deviation");
  return r;
}

Chi1Row readChi1Row(RowReader& row, bool observed) {
  Chi1Row r;
  r.resid = row.integer("RESID");
  r.code = row.code("RESNAME");
  r.csCount = row.integer("CS_COUNT");
  if (observed) {
    const double angle = row.number("CHI1_OBS");
    if (angle < kMissing) r.observed = angle;
  }
  r.gm = row.number("Q_Gm");
  r.gp = row.number("Q_Gp");
  r.t = row.number("Q_T");
  r.className = row.text("CLASS");
  if (!isOneOf(r.className, kRotamers)) row.fail("CLASS is '" + r.className + "', not a rotamer");
  r.chi1 = row.number("CHI1");
  r.dchi1 = row.number("DCHI1");
  return r;
}

/// Residue numbers must rise from row to row.
template <class Row>
void checkOrder(const std::vector<Row>& rows, RowReader& reader) {
  if (rows.size() >= 2 && rows[rows.size() - 2].resid >= rows.back().resid) {
    reader.fail("residue " + std::to_string(rows.back().resid) + " does not follow residue " +
                std::to_string(rows[rows.size() - 2].resid));
  }
}

}  // namespace

double wrapAngle(double degrees) {
  if (!std::isfinite(degrees)) return degrees;
  double wrapped = std::fmod(degrees, 360.0);
  if (wrapped > 180.0) wrapped -= 360.0;
  if (wrapped <= -180.0) wrapped += 360.0;
  return wrapped;
}

double Chi1Row::probability() const {
  if (className == "g-") return gm;
  if (className == "g+") return gp;
  return className == "t" ? t : 0;
}

double Chi1Row::torsion() const {
  if (!hasAngle()) return 9999;
  return wrapAngle(code == 'V' ? chi1 + 120.0 : chi1);
}

std::optional<TorsionTable> loadTorsions(const std::string& path, std::string& error) {
  const auto source = TableFile::load(
      path, {"RESID", "RESNAME", "PHI", "PSI", "DPHI", "DPSI", "DIST", "S2", "COUNT", "CS_COUNT", "CLASS"},
      error);
  if (!source) return std::nullopt;
  TorsionTable result;
  result.file = path;
  result.title = source->remarkAfter("Prediction Summary for Chemical Shift Input");
  result.referenceTitle = source->remarkAfter("Predictions Compared to PDB Input");
  if (!source->table.remarks.empty()) result.version = source->table.remarks.back();
  result.firstResid = source->table.firstResid;
  for (const auto& [resid, code] : source->table.residList) result.sequence[resid] = code[0];
  for (const auto& [number, cells] : source->table.entries) {
    RowReader reader(*source, number, cells, error);
    result.rows.push_back(readTorsionRow(reader));
    checkOrder(result.rows, reader);
    if (!error.empty()) return std::nullopt;
  }
  if (result.rows.empty()) error = path + ": the table has no rows";
  if (result.sequence.empty()) error = path + ": no DATA SEQUENCE line";
  if (!error.empty()) return std::nullopt;
  return result;
}

std::optional<std::vector<Chi1Row>> loadChi1(const std::string& path, std::string& error) {
  const auto source = TableFile::load(
      path, {"RESID", "RESNAME", "CS_COUNT", "Q_Gm", "Q_Gp", "Q_T", "CLASS", "CHI1", "DCHI1"}, error);
  if (!source) return std::nullopt;
  std::vector<Chi1Row> rows;
  const bool observed = source->hasColumn("CHI1_OBS");
  for (const auto& [number, cells] : source->table.entries) {
    RowReader reader(*source, number, cells, error);
    rows.push_back(readChi1Row(reader, observed));
    checkOrder(rows, reader);
    if (!error.empty()) return std::nullopt;
  }
  return rows;
}

}  // namespace predictions
