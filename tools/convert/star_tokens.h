// Cuts STAR text into tokens with their line numbers.
#pragma once

#include <string>
#include <string_view>

#include "common/log.h"

namespace convert::star {

enum class TokenKind { End, Broken, Data, SaveBegin, SaveEnd, Loop, Stop, Tag, Value };

struct Token {
  TokenKind kind = TokenKind::End;
  std::string text;  ///< of a keyword: the name after its prefix
  int line = 0;
  bool quoted = false;
  bool unclosed = false;  ///< begins with a quote that no quote on the line closes
};

class Tokenizer {
 public:
  Tokenizer(std::string_view text, tools::Log& log) : text_(text), log_(log) {}

  /// The next token; Broken with an error in the log when the text cannot be read on.
  Token next();
  int line() const { return line_; }

 private:
  void skipBlanksAndComments();
  Token textBlock();
  Token quoted(char quote);
  Token word();

  std::string_view text_;
  tools::Log& log_;
  std::size_t at_ = 0;
  int line_ = 1;
};

}  // namespace convert::star
