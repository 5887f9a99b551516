// Phi and psi along the sequence with error bars that close at +-180 degrees.
#include <cmath>
#include <string>

#include "report/figures.h"
#include "report/strip_layout.h"

namespace report {

namespace {

constexpr double kNumberY = 12, kLetterY = 26;
constexpr Panel kPhi{36, 120, -180, 180};
constexpr Panel kPsi{170, 120, -180, 180};
constexpr double kHeight = 298;
constexpr double kReferenceSize = 3.6;  // half a diagonal of the reference's diamond

void drawReference(Svg& svg, double x, double y) {
  const std::string d = "M" + coordinate(x) + " " + coordinate(y - kReferenceSize) + "l" +
                        coordinate(kReferenceSize) + " " + coordinate(kReferenceSize) + "l" +
                        coordinate(-kReferenceSize) + " " + coordinate(kReferenceSize) + "l" +
                        coordinate(-kReferenceSize) + " " + coordinate(-kReferenceSize) + "z";
  svg.path(d, "ref");
}

void drawAngle(Svg& svg, const Panel& panel, double x, double angle, double deviation,
               const std::string& style, const std::string& tip) {
  std::string bars;
  for (const AngleSpan& span : angleSpans(angle, deviation)) {
    bars += "M" + coordinate(x) + " " + coordinate(panel.y(span.from)) + "V" + coordinate(panel.y(span.to));
  }
  svg.path(bars, "bar " + style);
  svg.circle(x, panel.y(angle), 2.4, "dot " + style, tip);
}

void drawResidue(Svg& svg, const Residue& r, double x) {
  if (r.hasPrediction()) {
    const predictions::TorsionRow& t = *r.torsion;
    const std::string name = residueName(r) + " " + t.className;
    drawAngle(svg, kPhi, x, t.phi, t.dphi, classStyle(r),
              name + ": phi " + fixed(t.phi, 1) + " ± " + fixed(t.dphi, 1) + "°");
    drawAngle(svg, kPsi, x, t.psi, t.dpsi, classStyle(r),
              name + ": psi " + fixed(t.psi, 1) + " ± " + fixed(t.dpsi, 1) + "°");
  }
  if (r.referencePhi) drawReference(svg, x, kPhi.y(*r.referencePhi));
  if (r.referencePsi) drawReference(svg, x, kPsi.y(*r.referencePsi));
}

}  // namespace

std::vector<AngleSpan> angleSpans(double centre, double halfWidth) {
  if (halfWidth >= 180) return {{-180, 180}};
  const double low = centre - halfWidth, high = centre + halfWidth;
  if (low < -180) return {{-180, high}, {low + 360, 180}};
  if (high > 180) return {{low, 180}, {-180, high - 360}};
  return {{low, high}};
}

std::string torsionPlots(const ReportData& data) {
  const std::vector<double> ticks = {-180, -90, 0, 90, 180};
  std::string out;
  for (const StripRow& row : stripRows(data.residues)) {
    Svg svg(kStripWidth, kHeight, "strip", "Phi and psi with standard deviations, " + row.label());
    drawNumbers(svg, row, kNumberY);
    drawLetters(svg, row, kLetterY);
    kPhi.draw(svg, row, ticks, 0, "φ / degrees");
    kPsi.draw(svg, row, ticks, 0, "ψ / degrees");
    for (std::size_t k = 0; k < row.residues.size(); ++k) drawResidue(svg, row.residues[k], row.centre(k));
    out += svg.finish();
  }
  return out;
}

}  // namespace report
