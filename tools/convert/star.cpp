// The STAR syntax shared by NMR-STAR and NEF: save frames, tags and loops, every value with its line.
#include "convert/star.h"

#include <cctype>
#include <map>

#include "convert/star_tokens.h"

namespace convert::star {

namespace {

std::string category(const std::string& tag) {
  return tag.substr(0, tag.find('.'));
}

/// Most loops are written one row a line: the first line of another length is where to look.
std::string oddLine(const Loop& loop) {
  std::map<int, std::size_t> perLine;
  for (const Value& value : loop.values) ++perLine[value.line];
  for (const auto& [line, count] : perLine) {
    if (count % loop.tags.size() != 0) {
      return "; line " + std::to_string(line) + " has " + std::to_string(count);
    }
  }
  return "";
}

int oddLineNumber(const Loop& loop) {
  std::map<int, std::size_t> perLine;
  for (const Value& value : loop.values) ++perLine[value.line];
  for (const auto& [line, count] : perLine) {
    if (count % loop.tags.size() != 0) return line;
  }
  return loop.line;
}

class Parser {
 public:
  Parser(std::string_view text, Document& document, tools::Log& log)
      : tokens_(text, log), document_(document), log_(log) {}

  bool run() {
    document_.frames.emplace_back();
    advance();
    while (token_.kind != TokenKind::End) {
      if (!element()) return false;
    }
    if (!insideFrame_) return true;
    return log_.error(tokens_.line(), "the file ends inside the save frame '" + frame().name +
                                          "' that begins at line " + std::to_string(frame().line) +
                                          "; is it cut off?");
  }

 private:
  void advance() { token_ = tokens_.next(); }
  Frame& frame() { return insideFrame_ ? document_.frames.back() : document_.frames.front(); }

  bool element() {
    switch (token_.kind) {
      case TokenKind::Data:
        if (document_.block.empty()) document_.block = token_.text;
        advance();
        return true;
      case TokenKind::SaveBegin:
        return beginFrame();
      case TokenKind::SaveEnd:
        insideFrame_ = false;
        advance();
        return true;
      case TokenKind::Loop:
        return loop();
      case TokenKind::Stop:
        advance();
        return true;
      case TokenKind::Tag:
        return item();
      case TokenKind::Value:
        return log_.error(token_.line, "the value '" + token_.text + "' follows no tag");
      default:
        return false;
    }
  }

  bool beginFrame() {
    if (insideFrame_) {
      return log_.error(token_.line, "save_" + token_.text + " begins before the save frame '" +
                                         frame().name + "' (line " + std::to_string(frame().line) +
                                         ") has ended");
    }
    insideFrame_ = true;
    document_.frames.push_back({token_.text, token_.line, {}, {}});
    advance();
    return true;
  }

  bool item() {
    Item item{token_.text, {}};
    const int line = token_.line;
    advance();
    if (token_.kind == TokenKind::Broken) return false;
    if (token_.kind != TokenKind::Value) return log_.error(line, "the tag " + item.tag + " has no value");
    item.value = {std::move(token_.text), token_.line, token_.quoted};
    frame().items.push_back(std::move(item));
    advance();
    return true;
  }

  bool loop() {
    Loop loop;
    loop.line = token_.line;
    for (advance(); token_.kind == TokenKind::Tag; advance()) loop.tags.push_back(std::move(token_.text));
    for (; token_.kind == TokenKind::Value; advance()) {
      loop.values.push_back({std::move(token_.text), token_.line, token_.quoted});
    }
    if (token_.kind == TokenKind::Broken) return false;
    if (loop.tags.empty()) return log_.error(loop.line, "a loop without any tag");
    if (loop.values.size() % loop.tags.size() != 0) {
      return log_.error(oddLineNumber(loop), "the loop " + category(loop.tags[0]) + " (line " +
                                                 std::to_string(loop.line) + ") has " +
                                                 std::to_string(loop.tags.size()) + " columns, but its " +
                                                 std::to_string(loop.values.size()) +
                                                 " values are no whole number of rows" + oddLine(loop));
    }
    if (token_.kind == TokenKind::Stop) advance();
    frame().loops.push_back(std::move(loop));
    return true;
  }

  Tokenizer tokens_;
  Document& document_;
  tools::Log& log_;
  Token token_;
  bool insideFrame_ = false;
};

}  // namespace

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

int Loop::column(std::string_view tag) const {
  for (std::size_t i = 0; i < tags.size(); ++i) {
    if (equalsIgnoringCase(tags[i], tag)) return static_cast<int>(i);
  }
  return -1;
}

const Value* Loop::at(std::size_t row, int column) const {
  if (column < 0) return nullptr;
  return &values[row * tags.size() + static_cast<std::size_t>(column)];
}

std::string Loop::text(std::size_t row, int column) const {
  const Value* value = at(row, column);
  return value == nullptr ? std::string() : value->orEmpty();
}

std::string Frame::text(std::string_view tag) const {
  for (const Item& item : items) {
    if (equalsIgnoringCase(item.tag, tag)) return item.value.orEmpty();
  }
  return "";
}

bool Frame::has(std::string_view tag) const {
  for (const Item& item : items) {
    if (equalsIgnoringCase(item.tag, tag)) return true;
  }
  return false;
}

const Loop* Frame::loopWith(std::string_view tag) const {
  for (const Loop& loop : loops) {
    if (loop.column(tag) >= 0) return &loop;
  }
  return nullptr;
}

bool parse(std::string_view text, Document& document, tools::Log& log) {
  return Parser(text, document, log).run();
}

}  // namespace convert::star
