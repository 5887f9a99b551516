// Geometry that all plots along the sequence share: rows of 50 residues, one below the other.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "report/data.h"
#include "report/svg.h"

namespace report {

inline constexpr std::size_t kRowResidues = 50;
inline constexpr double kCell = 14;        ///< width of a residue
inline constexpr double kLeftMargin = 58;  ///< room for the axis
inline constexpr double kRightMargin = 6;
inline constexpr double kStripWidth = kLeftMargin + kCell * static_cast<double>(kRowResidues) + kRightMargin;

/// The residues of one row.
struct StripRow {
  std::span<const Residue> residues;

  double left(std::size_t k) const { return kLeftMargin + kCell * static_cast<double>(k); }
  double centre(std::size_t k) const { return left(k) + kCell / 2; }
  double right() const { return left(residues.size()); }
  std::string label() const;  ///< "residues 51 to 100"
};

std::vector<StripRow> stripRows(const std::vector<Residue>& residues);

/// Residue numbers: every tenth, and the first of the row where it has room. `y` is the baseline.
void drawNumbers(Svg& svg, const StripRow& row, double y);
/// One-letter codes; `y` is the baseline.
void drawLetters(Svg& svg, const StripRow& row, double y);

/// A horizontal panel with a labelled axis of `ticks` from `low` at the bottom to `high` at the top.
struct Panel {
  double top, height, low, high;

  double y(double value) const { return top + height * (high - std::clamp(value, low, high)) / (high - low); }
  void draw(Svg& svg, const StripRow& row, const std::vector<double>& ticks, int decimals,
            std::string_view axisTitle) const;
};

/// "7 T" for tooltips.
std::string residueName(const Residue& r);
/// Style class of a reliability class: "k-strong"; "k-none" without a row.
std::string classStyle(const Residue& r);

}  // namespace report
