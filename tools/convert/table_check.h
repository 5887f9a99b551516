// What in a table would be read otherwise than its author meant, or not at all.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "convert/entry.h"

namespace convert {

/// Problems of one kind, told in one line with the number of the first.
class TableCheck {
 public:
  /// A line that is neither a keyword line nor a row of the declared columns; the prediction ignores it.
  void wrongLength(int line, std::size_t columns);
  void goodRow() { ++rows_; }
  /// A shift such as 4,230, of which the prediction would read the 4.
  void decimalComma(int line, const std::string& cell);
  /// A DATA FIRST_RESID line after the first one, which counts.
  void repeatedFirstResid(int line, std::string_view ignored);
  /// A letter of the sequence that is no residue type of the prediction, read as `taken`.
  void foreignLetter(int line, int residue, char letter, char taken);

  /// Says what was found. False, with an error, for what would change numbers.
  bool report(std::size_t columns, Log& log) const;

 private:
  std::size_t rows_ = 0, wrong_ = 0, wrongColumns_ = 0, commas_ = 0, letterCount_ = 0;
  int wrongLine_ = 0, commaLine_ = 0, firstResidLine_ = 0, letterLine_ = 0;
  std::string comma_, firstResid_, letters_;
};

/// True for digits with one comma between them where a point belongs.
bool hasDecimalComma(std::string_view cell);

}  // namespace convert
