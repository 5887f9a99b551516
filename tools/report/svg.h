// Building blocks of the page: escaped text, numbers, and SVG elements as text.
#pragma once

#include <string>
#include <string_view>

namespace report {

/// `s` safe between tags and in attributes; bytes that are no UTF-8 become U+FFFD, control characters blanks.
std::string escapeHtml(std::string_view s);
/// `s` with every byte that is no part of valid UTF-8 replaced by U+FFFD.
std::string validUtf8(std::string_view s);

/// `value` with `decimals` decimals, no "-0.0"; a dash when it is not finite.
std::string fixed(double value, int decimals);
/// A coordinate: at most two decimals, trailing zeros dropped.
std::string coordinate(double value);

/// One SVG figure. Coordinates are user units (CSS pixels at full size), y downward.
class Svg {
 public:
  /// `label` is read to those who cannot see the figure.
  Svg(double width, double height, std::string_view cssClass, std::string_view label);

  /// Elements take an optional tooltip (not escaped yet).
  void rect(double x, double y, double width, double height, std::string_view cssClass,
            std::string_view tip = {});
  void line(double x1, double y1, double x2, double y2, std::string_view cssClass);
  void circle(double x, double y, double radius, std::string_view cssClass, std::string_view tip = {});
  void path(std::string_view d, std::string_view cssClass, std::string_view tip = {});
  /// `anchor` is start, middle or end.
  void text(double x, double y, std::string_view content, std::string_view cssClass, std::string_view anchor);
  /// Text turned by 90 degrees counter-clockwise, centred at (x, y).
  void verticalText(double x, double y, std::string_view content, std::string_view cssClass);
  void raw(std::string_view markup) { out += markup; }
  std::string finish();  ///< the whole figure

 private:
  void close(std::string_view tag, std::string_view tip);
  std::string out;
};

}  // namespace report
