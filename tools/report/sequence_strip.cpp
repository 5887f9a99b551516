// The sequence with secondary structure, its confidence and the reliability classes.
#include <cctype>
#include <string>

#include "report/figures.h"
#include "report/strip_layout.h"

namespace report {

namespace {

constexpr double kNumberY = 12, kLetterY = 27;
constexpr double kSsTop = 34, kSsHeight = 16;
constexpr double kConfidenceTop = 56, kConfidenceHeight = 24;
constexpr double kClassTop = 86, kClassHeight = 16;
constexpr double kHeight = 106;

char ssLetter(const Residue& r) {
  return r.ss ? static_cast<char>(std::toupper(static_cast<unsigned char>(r.ss->className))) : 'X';
}

/// Helix as a filled bar, strand as an arrow, coil as a line; paler when predicted from the sequence only.
void drawElement(Svg& svg, const StripRow& row, std::size_t from, std::size_t to) {
  const char kind = ssLetter(row.residues[from]);
  const double x1 = row.left(from), x2 = row.left(to), middle = kSsTop + kSsHeight / 2;
  const std::string range =
      std::to_string(row.residues[from].resid) + "-" + std::to_string(row.residues[to - 1].resid);
  if (kind == 'H') {
    svg.rect(x1 + 0.5, kSsTop + 1, x2 - x1 - 1, kSsHeight - 2, "ss-h", "helix " + range);
  } else if (kind == 'E') {
    const double head = std::max(x1, x2 - kCell * 0.9);
    const std::string y1 = coordinate(middle - 3.5), y2 = coordinate(middle + 3.5);
    svg.path("M" + coordinate(x1 + 0.5) + " " + y1 + "H" + coordinate(head) + "V" + coordinate(kSsTop) + "L" +
                 coordinate(x2 - 0.5) + " " + coordinate(middle) + "L" + coordinate(head) + " " +
                 coordinate(kSsTop + kSsHeight) + "V" + y2 + "H" + coordinate(x1 + 0.5) + "Z",
             "ss-e", "strand " + range);
  } else if (kind == 'L' || kind == 'C') {
    svg.line(x1, middle, x2, middle, "ss-l");
  }
}

/// Coil from shifts and from sequence look alike.
bool sameElement(const Residue& a, const Residue& b) {
  const auto kind = [](const Residue& r) { return ssLetter(r) == 'C' ? 'L' : ssLetter(r); };
  return kind(a) == kind(b);
}

void drawStructure(Svg& svg, const StripRow& row) {
  for (std::size_t from = 0; from < row.residues.size();) {
    std::size_t to = from + 1;
    while (to < row.residues.size() && sameElement(row.residues[from], row.residues[to])) ++to;
    drawElement(svg, row, from, to);
    from = to;
  }
  svg.text(kLeftMargin - 7, kSsTop + 12, "structure", "tick", "end");
  const Panel panel{kConfidenceTop, kConfidenceHeight, 0, 1};
  svg.line(kLeftMargin, kConfidenceTop + kConfidenceHeight, row.right(), kConfidenceTop + kConfidenceHeight,
           "grid");
  svg.text(kLeftMargin - 7, kConfidenceTop + 16, "conf. 0–1", "tick", "end");
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    const Residue& r = row.residues[k];
    if (!r.ss) continue;
    const double top = panel.y(r.ss->confidence);
    const bool fromSequence = std::islower(static_cast<unsigned char>(r.ss->className)) != 0;
    svg.rect(row.left(k) + 2, top, kCell - 4, kConfidenceTop + kConfidenceHeight - top,
             fromSequence ? "conf-seq" : "conf",
             residueName(r) + ": confidence " + fixed(r.ss->confidence, 2) +
                 (fromSequence ? ", from the sequence" : ""));
  }
}

void drawClasses(Svg& svg, const StripRow& row) {
  svg.text(kLeftMargin - 7, kClassTop + 12, "class", "tick", "end");
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    const Residue& r = row.residues[k];
    const std::string name = r.torsion ? r.torsion->className : "None";
    svg.rect(row.left(k) + 0.5, kClassTop, kCell - 1, kClassHeight, classStyle(r),
             residueName(r) + ": " + name);
    const std::string letter = name == "None" ? "–" : name.substr(0, 1);
    svg.text(row.centre(k), kClassTop + 11.5, letter, name == "Warn" ? "mark on-warn" : "mark", "middle");
  }
}

}  // namespace

std::string sequenceStrip(const ReportData& data) {
  std::string out;
  for (const StripRow& row : stripRows(data.residues)) {
    Svg svg(kStripWidth, kHeight, "strip", "Sequence, secondary structure and classes, " + row.label());
    drawNumbers(svg, row, kNumberY);
    drawLetters(svg, row, kLetterY);
    if (data.hasSs) drawStructure(svg, row);
    drawClasses(svg, row);
    out += svg.finish();
  }
  return out;
}

}  // namespace report
