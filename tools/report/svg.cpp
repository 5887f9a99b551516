// Building blocks of the page: escaped text, numbers, and SVG elements as text.
#include "report/svg.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace report {

namespace {

/// Length of the well-formed UTF-8 sequence at the start of `s`; 0 when there is none.
std::size_t utf8Length(std::string_view s) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(s[i]); };
  if (byte(0) < 0x80) return 1;
  const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
  if (byte(0) < 0xC2 || byte(0) > 0xF4 || s.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xF0 && byte(1) < 0x90);
  const bool forbidden = (byte(0) == 0xED && byte(1) > 0x9F) || (byte(0) == 0xF4 && byte(1) > 0x8F);
  return overlong || forbidden ? 0 : length;
}

std::string attribute(std::string_view name, std::string_view value) {
  std::string text(" ");
  text.append(name).append("=\"").append(value).append("\"");
  return text;
}

std::string attribute(std::string_view name, double value) {
  return attribute(name, coordinate(value));
}

}  // namespace

std::string validUtf8(std::string_view s) {
  std::string out;
  while (!s.empty()) {
    const std::size_t length = utf8Length(s);
    if (length == 0) {
      out += "\xEF\xBF\xBD";
      s.remove_prefix(1);
    } else {
      out.append(s.substr(0, length));
      s.remove_prefix(length);
    }
  }
  return out;
}

std::string escapeHtml(std::string_view s) {
  std::string out;
  for (const char c : validUtf8(s)) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        out += static_cast<std::uint8_t>(c) < 0x20 || c == 0x7F ? ' ' : c;
    }
  }
  return out;
}

std::string fixed(double value, int decimals) {
  if (!std::isfinite(value) || std::fabs(value) > 1e12) return "–";
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  const std::string text = buffer;
  const bool zero = text.find_first_not_of("-0.") == std::string::npos;
  return zero && text[0] == '-' ? text.substr(1) : text;
}

std::string coordinate(double value) {
  if (!std::isfinite(value)) return "0";
  std::string text = fixed(value, 2);
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text;
}

Svg::Svg(double width, double height, std::string_view cssClass, std::string_view label) {
  out.append("<svg").append(attribute("class", cssClass)).append(" role=\"img\"");
  out.append(attribute("viewBox", "0 0 " + coordinate(width) + " " + coordinate(height)));
  out.append(attribute("aria-label", escapeHtml(label))).append(">\n");
}

void Svg::close(std::string_view tag, std::string_view tip) {
  if (tip.empty()) {
    out += "/>\n";
    return;
  }
  out.append("><title>").append(escapeHtml(tip)).append("</title></").append(tag).append(">\n");
}

void Svg::rect(double x, double y, double width, double height, std::string_view cssClass,
               std::string_view tip) {
  out.append("<rect").append(attribute("x", x)).append(attribute("y", y));
  out.append(attribute("width", width)).append(attribute("height", height));
  out.append(attribute("class", cssClass));
  close("rect", tip);
}

void Svg::line(double x1, double y1, double x2, double y2, std::string_view cssClass) {
  out.append("<line").append(attribute("x1", x1)).append(attribute("y1", y1));
  out.append(attribute("x2", x2)).append(attribute("y2", y2)).append(attribute("class", cssClass));
  close("line", {});
}

void Svg::circle(double x, double y, double radius, std::string_view cssClass, std::string_view tip) {
  out.append("<circle").append(attribute("cx", x)).append(attribute("cy", y));
  out.append(attribute("r", radius)).append(attribute("class", cssClass));
  close("circle", tip);
}

void Svg::path(std::string_view d, std::string_view cssClass, std::string_view tip) {
  if (d.empty()) return;
  out.append("<path").append(attribute("d", d)).append(attribute("class", cssClass));
  close("path", tip);
}

void Svg::text(double x, double y, std::string_view content, std::string_view cssClass,
               std::string_view anchor) {
  out.append("<text").append(attribute("x", x)).append(attribute("y", y));
  out.append(attribute("class", cssClass)).append(attribute("text-anchor", anchor));
  out.append(">").append(escapeHtml(content)).append("</text>\n");
}

void Svg::verticalText(double x, double y, std::string_view content, std::string_view cssClass) {
  out.append("<text").append(attribute("class", cssClass)).append(" text-anchor=\"middle\"");
  out.append(attribute("transform", "translate(" + coordinate(x) + " " + coordinate(y) + ") rotate(-90)"));
  out.append(">").append(escapeHtml(content)).append("</text>\n");
}

std::string Svg::finish() {
  out += "</svg>\n";
  return std::move(out);
}

}  // namespace report
