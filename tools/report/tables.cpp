// The tables of the page as markup.
#include "report/tables.h"

#include <string_view>

#include "report/strip_layout.h"
#include "report/summary.h"
#include "report/svg.h"

namespace report {

namespace {

class HtmlTable {
 public:
  /// Column titles; those that begin with '<' are left-aligned.
  explicit HtmlTable(const std::vector<std::string>& titles) {
    out = "<table>\n<thead><tr>";
    for (const std::string& title : titles) {
      const bool left = title[0] == '<';
      out += left ? "<th class=\"l\" scope=\"col\">" : "<th scope=\"col\">";
      out.append(escapeHtml(title.substr(left ? 1 : 0))).append("</th>");
    }
    out += "</tr></thead>\n<tbody>\n";
  }
  void beginRow(std::string_view cssClass = {}) {
    out += "<tr";
    if (!cssClass.empty()) out.append(" class=\"").append(cssClass).append("\"");
    out += ">";
  }
  void cell(std::string_view content) { out.append("<td>").append(escapeHtml(content)).append("</td>"); }
  void left(std::string_view content) {
    out.append("<td class=\"l\">").append(escapeHtml(content)).append("</td>");
  }
  void tagged(std::string_view content, std::string_view style) {
    out.append("<td class=\"l\"><span class=\"tag ").append(style).append("\">");
    out.append(escapeHtml(content)).append("</span></td>");
  }
  void endRow() { out += "</tr>\n"; }
  std::string finish() { return out + "</tbody>\n</table>\n"; }

 private:
  std::string out;
};

std::string optionalNumber(const std::optional<double>& value, int decimals) {
  return value ? fixed(*value, decimals) : "–";
}

std::string withDeviation(double value, double deviation, int decimals) {
  return fixed(value, decimals) + " ± " + fixed(deviation, decimals);
}

void addTorsionCells(HtmlTable& table, const Residue& r) {
  if (!r.hasPrediction()) {
    for (int k = 0; k < 3; ++k) table.cell("–");
    return;
  }
  table.cell(withDeviation(r.torsion->phi, r.torsion->dphi, 1));
  table.cell(withDeviation(r.torsion->psi, r.torsion->dpsi, 1));
  table.cell(std::to_string(r.torsion->count));
}

void addChi1Cells(HtmlTable& table, const Residue& r) {
  if (!r.chi1) {
    for (int k = 0; k < 3; ++k) table.cell("–");
    return;
  }
  table.cell(r.chi1->className);
  table.cell(r.chi1->className == "na" ? "–" : fixed(r.chi1->probability(), 2));
  table.cell(r.chi1->hasAngle() ? withDeviation(r.chi1->torsion(), r.chi1->dchi1, 1) : "–");
}

}  // namespace

std::string outlierTable(const ReportData& data) {
  const bool checked = data.check.fromLog;
  const std::vector<Outlier> outliers = checked ? data.check.outliers : unusualShifts(data);
  std::string out =
      checked
          ? "<p>Shifts outside the limits of their residue type, as the check reported them; far outliers "
            "are bold. Δδ, the secondary shift: observed minus expected random coil shift.</p>\n"
          : "<p>Secondary shifts more than four robust standard deviations away from the median of their "
            "nucleus in this protein (Δδ). The limits per residue type are known only with the output of the "
            "check (--log).</p>\n";
  if (outliers.empty()) return out + "<p>None.</p>\n";
  HtmlTable table({"Residue", "<Type", "<Nucleus", "Δδ / ppm", "Limit / ppm", "Beyond / ppm", "<Remark"});
  for (const Outlier& o : outliers) {
    table.beginRow(o.extreme ? "extreme" : "");
    table.cell(std::to_string(o.resid));
    table.left(o.code);
    table.left(o.atom);
    table.cell(fixed(o.shift, 3));
    table.cell(fixed(o.limit, 3));
    table.cell(fixed(o.shift - o.limit, 3));
    table.left(o.extreme ? "far outside" : "");
    table.endRow();
  }
  return out + table.finish();
}

std::string residueTable(const ReportData& data) {
  std::vector<std::string> titles = {"Residue", "<Type", "<Class", "φ / °", "ψ / °", "Matches"};
  if (data.hasS2) titles.push_back("S²");
  if (data.hasSs) titles.insert(titles.end(), {"<SS", "Conf."});
  if (data.hasChi1) titles.insert(titles.end(), {"Rotamer", "Prob.", "χ1 / °"});
  if (data.hasReference) titles.insert(titles.end(), {"φ ref. / °", "ψ ref. / °"});
  HtmlTable table(titles);
  for (const Residue& r : data.residues) {
    table.beginRow();
    table.cell(std::to_string(r.resid));
    table.left(std::string(1, r.code));
    table.tagged(r.torsion ? r.torsion->className : "None", classStyle(r));
    addTorsionCells(table, r);
    if (data.hasS2) table.cell(optionalNumber(r.s2, 3));
    if (data.hasSs) {
      table.left(r.ss ? std::string(1, r.ss->className) : "–");
      table.cell(r.ss ? fixed(r.ss->confidence, 2) : "–");
    }
    if (data.hasChi1) addChi1Cells(table, r);
    if (data.hasReference) {
      table.cell(optionalNumber(r.referencePhi, 1));
      table.cell(optionalNumber(r.referencePsi, 1));
    }
    table.endRow();
  }
  return table.finish();
}

}  // namespace report
