// The report's data as one tab-separated row per residue.
#include <string>

#include "report/exports.h"
#include "report/svg.h"

namespace report {

namespace {

constexpr const char* kHeader =
    "resid\tresname\tclass\tphi\tpsi\tdphi\tdpsi\tdist\tcount\tcs_count\ts2\tss_class\tss_confidence\tss_h\t"
    "ss_e\tss_l\tchi1_class\tchi1\tdchi1\tchi1_torsion\tchi1_gm\tchi1_gp\tchi1_t\tclusters\tcluster1_share\t"
    "secondary_shift_N\tsecondary_shift_HA\tsecondary_shift_C\tsecondary_shift_CA\tsecondary_shift_"
    "CB\tsecondary_shift_HN\tref_phi\tref_psi\tref_chi1\n";

/// Cells of one row.
class Row {
 public:
  void text(const std::string& cell) {
    line += line.empty() ? "" : "\t";
    line += cell;
  }
  void number(double value, int decimals) {
    text(value < predictions::kMissing && value > -1e9 ? fixed(value, decimals) : "");
  }
  void number(const std::optional<double>& value, int decimals) {
    if (value) return number(*value, decimals);
    text("");
  }
  void skip(int cells) {
    for (int k = 0; k < cells; ++k) text("");
  }
  std::string finish() { return line + "\n"; }

 private:
  std::string line;
};

void addTorsions(Row& row, const Residue& r) {
  row.text(r.torsion ? r.torsion->className : "");
  if (r.hasPrediction()) {
    for (const double angle : {r.torsion->phi, r.torsion->psi, r.torsion->dphi, r.torsion->dpsi}) {
      row.number(angle, 3);
    }
    row.number(r.torsion->dist, 3);
  } else {
    row.skip(5);
  }
  row.text(r.torsion ? std::to_string(r.torsion->count) : "");
  row.text(r.torsion ? std::to_string(r.torsion->csCount) : "");
  const bool fromSummary = !r.s2 && r.torsion && r.torsion->className != "None";
  row.number(fromSummary ? std::optional<double>(r.torsion->s2) : r.s2, 3);
}

void addStructure(Row& row, const Residue& r) {
  if (!r.ss) return row.skip(5);
  row.text(std::string(1, r.ss->className));
  row.number(r.ss->confidence, 2);
  for (const double share : {r.ss->helix, r.ss->strand, r.ss->coil}) row.number(share, 3);
}

void addChi1(Row& row, const Residue& r) {
  if (!r.chi1) return row.skip(7);
  row.text(r.chi1->className);
  if (r.chi1->hasAngle()) {
    for (const double angle : {r.chi1->chi1, r.chi1->dchi1, r.chi1->torsion()}) row.number(angle, 1);
  } else {
    row.skip(3);
  }
  for (const double share : {r.chi1->gm, r.chi1->gp, r.chi1->t}) row.number(share, 3);
}

}  // namespace

std::string tsvExport(const ReportData& data) {
  std::string out = kHeader;
  for (const Residue& r : data.residues) {
    Row row;
    row.text(std::to_string(r.resid));
    row.text(std::string(1, r.code));
    addTorsions(row, r);
    addStructure(row, r);
    addChi1(row, r);
    row.text(r.boxes ? std::to_string(r.boxes->clusters) : "");
    row.number(r.boxes && r.boxes->clusters > 0 ? std::optional<double>(r.boxes->topShare) : std::nullopt, 3);
    for (const std::optional<double>& shift : r.secondaryShifts) row.number(shift, 3);
    row.number(r.referencePhi, 1);
    row.number(r.referencePsi, 1);
    row.number(r.referenceChi1, 1);
    out += row.finish();
  }
  return out;
}

}  // namespace report
