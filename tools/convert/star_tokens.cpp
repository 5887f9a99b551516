// Cuts STAR text into tokens with their line numbers.
#include "convert/star_tokens.h"

#include "convert/star.h"
#include "tables/text.h"

namespace convert::star {

namespace {

bool hasPrefix(std::string_view word, std::string_view prefix) {
  return word.size() >= prefix.size() && equalsIgnoringCase(word.substr(0, prefix.size()), prefix);
}

}  // namespace

void Tokenizer::skipBlanksAndComments() {
  while (at_ < text_.size()) {
    const char c = text_[at_];
    if (c == '#') {
      while (at_ < text_.size() && text_[at_] != '\n') ++at_;
    } else if (text::isSpace(c)) {
      if (c == '\n') ++line_;
      ++at_;
    } else {
      return;
    }
  }
}

Token Tokenizer::next() {
  skipBlanksAndComments();
  if (at_ >= text_.size()) return {TokenKind::End, "", line_, false};
  const char c = text_[at_];
  const bool lineStart = at_ == 0 || text_[at_ - 1] == '\n';
  if (c == ';' && lineStart) return textBlock();
  if (c == '\'' || c == '"') return quoted(c);
  return word();
}

/// A value between a line that begins with ';' and the next such line; without its last line end.
Token Tokenizer::textBlock() {
  Token token{TokenKind::Value, "", line_, true};
  const std::size_t start = at_ + 1;
  const std::size_t end = text_.find("\n;", start);
  if (end == std::string_view::npos) {
    log_.error(line_, "the text block that begins here never ends; is the file cut off?");
    token.kind = TokenKind::Broken;
    return token;
  }
  for (std::size_t i = start; i <= end; ++i) line_ += text_[i] == '\n' ? 1 : 0;
  token.text = text_.substr(start, end - start);
  if (token.text.ends_with('\r')) token.text.pop_back();
  at_ = end + 2;
  return token;
}

/// A closing quote counts only before white space, so 'C5'-end' is one value.
Token Tokenizer::quoted(char quote) {
  Token token{TokenKind::Value, "", line_, true};
  for (std::size_t i = at_ + 1; i < text_.size() && text_[i] != '\n'; ++i) {
    const bool atEnd = i + 1 == text_.size() || text::isSpace(text_[i + 1]);
    if (text_[i] == quote && atEnd) {
      token.text = text_.substr(at_ + 1, i - at_ - 1);
      at_ = i + 1;
      return token;
    }
  }
  // A quote that nothing closes is read as a letter; whoever needs the value finds it marked.
  token = word();
  token.unclosed = true;
  return token;
}

Token Tokenizer::word() {
  const std::size_t start = at_;
  while (at_ < text_.size() && !text::isSpace(text_[at_])) ++at_;
  const std::string_view word = text_.substr(start, at_ - start);
  if (word[0] == '_') return {TokenKind::Tag, std::string(word), line_, false};
  if (equalsIgnoringCase(word, "loop_")) return {TokenKind::Loop, "", line_, false};
  if (equalsIgnoringCase(word, "stop_")) return {TokenKind::Stop, "", line_, false};
  if (equalsIgnoringCase(word, "save_")) return {TokenKind::SaveEnd, "", line_, false};
  if (hasPrefix(word, "save_")) return {TokenKind::SaveBegin, std::string(word.substr(5)), line_, false};
  if (equalsIgnoringCase(word, "global_")) return {TokenKind::Data, "global", line_, false};
  if (hasPrefix(word, "data_")) return {TokenKind::Data, std::string(word.substr(5)), line_, false};
  return {TokenKind::Value, std::string(word), line_, false};
}

}  // namespace convert::star
