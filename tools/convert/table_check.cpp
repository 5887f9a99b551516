// What in a table would be read otherwise than its author meant, or not at all.
#include "convert/table_check.h"

#include <algorithm>

#include "convert/names.h"

namespace convert {

namespace {

constexpr std::size_t kNamedLetters = 8;

}  // namespace

void TableCheck::wrongLength(int line, std::size_t columns) {
  if (wrong_++ > 0) return;
  wrongLine_ = line;
  wrongColumns_ = columns;
}

void TableCheck::decimalComma(int line, const std::string& cell) {
  if (commas_++ > 0) return;
  commaLine_ = line;
  comma_ = cell;
}

void TableCheck::repeatedFirstResid(int line, std::string_view ignored) {
  if (firstResidLine_ > 0) return;
  firstResidLine_ = line;
  firstResid_ = ignored;
}

void TableCheck::foreignLetter(int line, int residue, char letter, char taken) {
  if (letterLine_ == 0) letterLine_ = line;
  if (letterCount_++ >= kNamedLetters) return;
  letters_ += (letters_.empty() ? "" : ", ") + std::string(1, letter) + " " + std::to_string(residue) +
              " as " + taken;
}

bool TableCheck::report(std::size_t columns, Log& log) const {
  if (commas_ > 0) {
    return log.error(commaLine_, "decimal comma in " + std::to_string(commas_) + " shifts, the first '" +
                                     comma_ + "': the prediction would read '" +
                                     comma_.substr(0, comma_.find(',')) + "'; write decimal points");
  }
  const std::string found = "expected " + std::to_string(columns) + " columns as in the VARS line, found " +
                            std::to_string(wrongColumns_);
  if (wrong_ > 0 && wrong_ >= rows_) return log.error(wrongLine_, found);
  if (wrong_ > 0) {
    log.warn(wrongLine_, std::to_string(wrong_) + (wrong_ == 1 ? " line is" : " lines are") +
                             " no row of the table and left out; the first one: " + found);
  }
  if (firstResidLine_ > 0) {
    log.warn(firstResidLine_, "a second FIRST_RESID (" + firstResid_ + ") is ignored: the first one counts");
  }
  if (letterLine_ > 0) {
    const std::size_t more = letterCount_ > kNamedLetters ? letterCount_ - kNamedLetters : 0;
    log.warn(letterLine_, "letters of the sequence that are none of the 20 residue types: " + letters_ +
                              (more > 0 ? " and " + std::to_string(more) + " more" : ""));
  }
  return true;
}

bool hasDecimalComma(std::string_view cell) {
  const std::size_t comma = cell.find(',');
  if (comma == std::string_view::npos) return false;
  std::string pointed(cell);
  pointed[comma] = '.';
  return wholeNumber(pointed).has_value();
}

}  // namespace convert
