// Geometry that all plots along the sequence share.
#include "report/strip_layout.h"

#include <cctype>

namespace report {

std::string StripRow::label() const {
  if (residues.empty()) return "no residues";
  return "residues " + std::to_string(residues.front().resid) + " to " +
         std::to_string(residues.back().resid);
}

std::vector<StripRow> stripRows(const std::vector<Residue>& residues) {
  std::vector<StripRow> rows;
  const std::span<const Residue> all(residues);
  for (std::size_t first = 0; first < all.size(); first += kRowResidues) {
    rows.push_back({all.subspan(first, std::min(kRowResidues, all.size() - first))});
  }
  return rows;
}

void drawNumbers(Svg& svg, const StripRow& row, double y) {
  constexpr std::size_t kRoom = 3;  // cells that a number may need on either side
  svg.text(kLeftMargin - 14, y, "residue", "tick", "end");
  std::size_t firstTenth = row.residues.size();
  for (std::size_t k = row.residues.size(); k-- > 0;) {
    if (row.residues[k].resid % 10 == 0) firstTenth = k;
  }
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    const int resid = row.residues[k].resid;
    const bool shown = resid % 10 == 0 || (k == 0 && firstTenth >= kRoom);
    if (shown) svg.text(row.centre(k), y, std::to_string(resid), "num", "middle");
  }
}

void drawLetters(Svg& svg, const StripRow& row, double y) {
  std::string positions, letters;
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    if (k > 0) positions += ' ';
    positions += coordinate(row.centre(k));
    letters += row.residues[k].code;
  }
  std::string text =
      "<text x=\"" + positions + "\" y=\"" + coordinate(y) + "\" class=\"seq\" text-anchor=\"middle\">";
  text.append(escapeHtml(letters)).append("</text>\n");
  svg.raw(text);
}

void Panel::draw(Svg& svg, const StripRow& row, const std::vector<double>& ticks, int decimals,
                 std::string_view axisTitle) const {
  svg.rect(kLeftMargin, top, row.right() - kLeftMargin, height, "frame");
  for (const double tick : ticks) {
    svg.line(kLeftMargin - 4, y(tick), row.right(), y(tick), "grid");
    svg.text(kLeftMargin - 7, y(tick) + 3.5, fixed(tick, decimals), "tick", "end");
  }
  for (std::size_t k = 0; k < row.residues.size(); ++k) {
    if (row.residues[k].resid % 10 == 0) svg.line(row.centre(k), top, row.centre(k), top + height, "grid");
  }
  svg.verticalText(13, top + height / 2, axisTitle, "axis");
}

std::string residueName(const Residue& r) {
  return std::to_string(r.resid) + " " + std::string(1, r.code);
}

std::string classStyle(const Residue& r) {
  std::string name = r.torsion ? r.torsion->className : "None";
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return "k-" + name;
}

}  // namespace report
