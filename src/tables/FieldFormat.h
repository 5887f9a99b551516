// One printf-style column format, parsed once and applied to text cells.
#pragma once

#include <string>
#include <string_view>

/// A field format as stored with a column: flags '-' and '0', width, precision, conversion s, d or f, and the
/// literal white space around it. Any other order of these characters formats the converted value plainly.
class FieldFormat {
 public:
  explicit FieldFormat(std::string_view stored);

  /// Appends the formatted cell: the text itself, its `strtol` value or its `strtod` value. A format without
  /// a conversion appends nothing.
  void append(std::string& out, std::string_view cell) const;

 private:
  static constexpr int kMaxWidth = 4096, kMaxPrecision = 99;

  bool parseSpecification(std::string_view specification);
  void appendNumber(std::string& out, double value) const;
  void appendPrinted(std::string& out, std::string_view cell) const;
  void appendText(std::string& out, std::string_view cell) const;
  void appendPadded(std::string& out, std::string_view text) const;

  char conversion = '\0';
  bool zeroPadded = false;
  int width = 0;       ///< negative = left-aligned, as printf's '*' takes it
  int precision = -1;  ///< negative = none
  std::string before, after;
};
