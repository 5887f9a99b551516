// One small Ramachandran map per residue: box probabilities, matches, prediction, reference.
#include <array>
#include <cmath>
#include <string>

#include "report/figures.h"
#include "report/strip_layout.h"
#include "report/svg.h"

namespace report {

namespace {

constexpr double kLeft = 36, kTop = 18, kBox = 6;  // plot corner and size of a 20 degree box
constexpr double kSide = kBox * static_cast<double>(kBoxesPerAxis);
constexpr double kWidth = kLeft + kSide + 8, kHeight = kTop + kSide + 30;

/// Lower bounds of the shading levels, as share of the residue's total.
constexpr std::array<double, 6> kLevels = {0.005, 0.01, 0.02, 0.05, 0.10, 0.20};

double xOf(double phi) {
  return kLeft + kSide * (phi + 180) / 360;
}
double yOf(double psi) {
  return kTop + kSide * (180 - psi) / 360;
}

int levelOf(double share) {
  int level = 0;
  for (const double bound : kLevels) level += share >= bound ? 1 : 0;
  return level;
}

std::string digits(std::size_t value) {
  return std::to_string(value);
}

/// Frame, grid and labels, drawn once and referred to by every map.
std::string sharedAxes() {
  Svg svg(0, 0, "defs", "");
  svg.raw("<defs><g id=\"rama-axes\">\n");
  for (const int tick : {-180, -90, 0, 90, 180}) {
    svg.line(xOf(tick), kTop, xOf(tick), kTop + kSide, "grid");
    svg.line(kLeft, yOf(tick), kLeft + kSide, yOf(tick), "grid");
  }
  for (const int tick : {-180, 0, 180}) {
    const char* anchor = tick < 0 ? "start" : tick == 0 ? "middle" : "end";
    svg.text(xOf(tick), kTop + kSide + 11, std::to_string(tick), "small", anchor);
    svg.text(kLeft - 3, yOf(tick) + 3, std::to_string(tick), "small", "end");
  }
  svg.text(kLeft + kSide / 2, kTop + kSide + 22, "φ / degrees", "small", "middle");
  svg.verticalText(9, kTop + kSide / 2, "ψ / degrees", "small");
  svg.raw("</g></defs>\n");
  return svg.finish();
}

/// Boxes of one shading level as one path; runs along psi become one rectangle.
std::string levelPath(const BoxMap& map, int level) {
  std::string d;
  for (std::size_t i = 0; i < kBoxesPerAxis; ++i) {
    const auto at = [&](std::size_t j) { return levelOf(map.share[i * kBoxesPerAxis + j]); };
    for (std::size_t j = 0; j < kBoxesPerAxis;) {
      std::size_t end = j + 1;
      if (at(j) == level) {
        while (end < kBoxesPerAxis && at(end) == level) ++end;
        d.append("M").append(digits(i)).append(" ").append(digits(kBoxesPerAxis - end)).append("h1v");
        d.append(digits(end - j)).append("h-1z");
      }
      j = end;
    }
  }
  return d;
}

void drawBoxes(Svg& svg, const BoxMap& map) {
  svg.raw("<g transform=\"translate(" + coordinate(kLeft) + " " + coordinate(kTop) + ") scale(" +
          coordinate(kBox) + ")\">\n");
  for (int level = 1; level <= static_cast<int>(kLevels.size()); ++level) {
    svg.path(levelPath(map, level), "q" + std::to_string(level));
  }
  svg.raw("</g>\n");
}

/// Matches of one kind as round caps of zero-length strokes.
std::string matchPath(const Residue& r, bool inCluster) {
  std::string d;
  for (const Match& match : r.matches) {
    if (match.inCluster != inCluster) continue;
    d.append("M").append(fixed(xOf(match.phi), 1)).append(" ").append(fixed(yOf(match.psi), 1)).append("h0");
  }
  return d;
}

void drawPrediction(Svg& svg, const Residue& r) {
  const predictions::TorsionRow& t = *r.torsion;
  std::string bars;
  for (const AngleSpan& span : angleSpans(t.phi, t.dphi)) {
    bars += "M" + coordinate(xOf(span.from)) + " " + coordinate(yOf(t.psi)) + "H" + coordinate(xOf(span.to));
  }
  for (const AngleSpan& span : angleSpans(t.psi, t.dpsi)) {
    bars += "M" + coordinate(xOf(t.phi)) + " " + coordinate(yOf(span.from)) + "V" + coordinate(yOf(span.to));
  }
  svg.path(bars, "pred");
  svg.circle(xOf(t.phi), yOf(t.psi), 3.2, "pred");
}

void drawReference(Svg& svg, double x, double y) {
  svg.path("M" + coordinate(x) + " " + coordinate(y - 4) + "l4 4l-4 4l-4 -4z", "ref");
}

std::string tooltip(const Residue& r) {
  std::string tip = residueName(r);
  if (r.hasPrediction()) {
    const predictions::TorsionRow& t = *r.torsion;
    tip += ": phi " + fixed(t.phi, 1) + " ± " + fixed(t.dphi, 1) + "°, psi " + fixed(t.psi, 1) + " ± " +
           fixed(t.dpsi, 1) + "°";
  }
  if (r.boxes) {
    tip += "; " + std::to_string(r.boxes->clusters) + " clusters";
    if (r.boxes->clusters > 0) tip += ", first " + fixed(100 * r.boxes->topShare, 0) + " %";
  }
  return tip;
}

std::string drawMap(const Residue& r) {
  Svg svg(kWidth, kHeight, "rama", tooltip(r));
  svg.rect(kLeft, kTop, kSide, kSide, "frame", tooltip(r));
  if (r.boxes) drawBoxes(svg, *r.boxes);
  svg.raw("<use href=\"#rama-axes\"/>\n");
  svg.path(matchPath(r, false), "match-out");
  svg.path(matchPath(r, true), "match-in");
  if (r.referencePhi && r.referencePsi) drawReference(svg, xOf(*r.referencePhi), yOf(*r.referencePsi));
  if (r.hasPrediction()) drawPrediction(svg, r);
  svg.text(kLeft, 12, residueName(r), "map-name", "start");
  const std::string name = r.torsion ? r.torsion->className : "None";
  svg.text(kLeft + kSide, 12, name, "map-class t" + classStyle(r).substr(1), "end");
  return svg.finish();
}

bool hasMap(const Residue& r) {
  bool probable = false;
  if (r.boxes) {
    for (const double share : r.boxes->share) probable = probable || share > 0;
  }
  return probable || !r.matches.empty() || r.hasPrediction();
}

std::string key(const std::string& style, const std::string& label) {
  std::string text = "<span class=\"item\"><span class=\"key ";
  text.append(style).append("\"></span> ").append(label).append("</span> ");
  return text;
}

std::string legend(const ReportData& data) {
  std::string out = "<p class=\"legend\">";
  if (data.hasBoxes) {
    out += "Box probability at least ";
    for (std::size_t k = 0; k < kLevels.size(); ++k) {
      out += key("sq" + std::to_string(k + 1), fixed(100 * kLevels[k], kLevels[k] < 0.01 ? 1 : 0) + " %");
    }
    out += "<br>";
  }
  if (data.hasMatches) out += key("dot-in", "match used for the prediction") + key("dot-out", "other match");
  out += key("ring", "prediction with standard deviations");
  if (data.hasReference) out += key("diamond", "reference structure");
  return out + "</p>\n";
}

}  // namespace

std::string ramachandranMaps(const ReportData& data) {
  std::string out = legend(data) + sharedAxes() + "<div class=\"maps\">\n";
  std::string without;
  for (const Residue& r : data.residues) {
    if (hasMap(r)) {
      out += drawMap(r);
    } else {
      without += (without.empty() ? "" : ", ") + residueName(r);
    }
  }
  out += "</div>\n";
  if (!without.empty()) out += "<p>No map: residues " + escapeHtml(without) + ".</p>\n";
  return out;
}

}  // namespace report
