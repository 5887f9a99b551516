// Order parameters and chi1 probabilities along the sequence.
#include <string>

#include "report/figures.h"
#include "report/strip_layout.h"

namespace report {

namespace {

constexpr double kNumberY = 12, kLetterY = 26;
constexpr Panel kOrder{36, 90, 0, 1};
constexpr double kDynamicLimit = 0.6;  // default of -s2Thresh
constexpr Panel kRotamers{36, 80, 0, 1};
constexpr double kClassY = 129;

void drawOrder(Svg& svg, const StripRow& row) {
  std::string d;
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    const Residue& r = row.residues[k];
    if (!r.s2) continue;
    const bool joined = k > 0 && row.residues[k - 1].s2;
    d += (joined ? "L" : "M") + coordinate(row.centre(k)) + " " + coordinate(kOrder.y(*r.s2));
  }
  svg.path(d, "s2-line");
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    const Residue& r = row.residues[k];
    if (!r.s2) continue;
    svg.circle(row.centre(k), kOrder.y(*r.s2), 2.6, *r.s2 < kDynamicLimit ? "s2-low" : "s2-dot",
               residueName(r) + ": S2 " + fixed(*r.s2, 3));
  }
}

void drawRotamers(Svg& svg, const StripRow& row) {
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    const Residue& r = row.residues[k];
    if (!r.chi1) continue;
    const std::string tip = residueName(r) + ": g- " + fixed(r.chi1->gm, 2) + ", g+ " + fixed(r.chi1->gp, 2) +
                            ", t " + fixed(r.chi1->t, 2) + "; class " + r.chi1->className;
    double level = 0;
    const auto part = [&](double probability, const char* style) {
      const double top = kRotamers.y(level + probability);
      svg.rect(row.left(k) + 1.5, top, kCell - 3, kRotamers.y(level) - top, style, tip);
      level += probability;
    };
    part(r.chi1->gm, "rot-gm");
    part(r.chi1->gp, "rot-gp");
    part(r.chi1->t, "rot-t");
    const std::string mark = r.chi1->className == "na" ? "·" : r.chi1->className;
    svg.text(row.centre(k), kClassY, mark, "rot", "middle");
  }
  svg.text(kLeftMargin - 7, kClassY, "rotamer", "tick", "end");
}

}  // namespace

std::string orderParameterPlots(const ReportData& data) {
  std::string out;
  for (const StripRow& row : stripRows(data.residues)) {
    Svg svg(kStripWidth, kOrder.top + kOrder.height + 8, "strip", "Order parameter S2, " + row.label());
    drawNumbers(svg, row, kNumberY);
    drawLetters(svg, row, kLetterY);
    kOrder.draw(svg, row, {0, 0.2, 0.4, 0.6, 0.8, 1}, 1, "S² (no unit)");
    svg.line(kLeftMargin, kOrder.y(kDynamicLimit), row.right(), kOrder.y(kDynamicLimit), "limit");
    drawOrder(svg, row);
    out += svg.finish();
  }
  return out;
}

std::string chi1Plots(const ReportData& data) {
  std::string out;
  for (const StripRow& row : stripRows(data.residues)) {
    Svg svg(kStripWidth, kClassY + 7, "strip", "Chi1 rotamer probabilities, " + row.label());
    drawNumbers(svg, row, kNumberY);
    drawLetters(svg, row, kLetterY);
    kRotamers.draw(svg, row, {0, 0.5, 1}, 1, "probability");
    drawRotamers(svg, row);
    out += svg.finish();
  }
  return out;
}

}  // namespace report
