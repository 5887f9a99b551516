// The STAR syntax shared by NMR-STAR and NEF: save frames, tags and loops, every value with its line.
#include "convert/star.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "convert/star_tokens.h"

namespace convert::star {

namespace {

std::string category(const std::string& tag) {
  return tag.substr(0, tag.find('.'));
}

/// Loops whose rows some reader asks for. All others, such as restraints and peaks by the ten thousand, are
/// checked and counted only. Tags without a category are those of version 2.1.
bool isRead(const std::string& tag) {
  constexpr std::string_view kCategories[] = {
      "_Entity",          "_Entity_poly_seq",    "_Entity_comp_index",
      "_Entity_assembly", "_Atom_chem_shift",    "_Assigned_peak_chem_shift",
      "_Chem_shift_ref",  "_Sample_component",   "_Sample_condition_variable",
      "_nef_sequence",    "_nef_chemical_shift", "_nef_covalent_links"};
  if (tag.find('.') == std::string::npos) return true;
  const std::string name = category(tag);
  return std::any_of(std::begin(kCategories), std::end(kCategories),
                     [&](std::string_view known) { return equalsIgnoringCase(known, name); });
}

/// Counts the values of a loop. Most loops are written one row a line: the first line whose number of values
/// is no whole number of rows is where to look for a slip.
class RowCounter {
 public:
  explicit RowCounter(std::size_t columns) : columns_(columns) {}

  void add(int line) {
    if (line != line_) endLine();
    line_ = line;
    ++onLine_;
    ++values_;
  }

  /// The fault of a loop with a number of values that is no whole number of rows.
  Fault fault(const Loop& loop) {
    endLine();
    if (values_ % columns_ == 0) return {};
    Fault fault{loop.line, "the loop " + category(loop.tags[0]) + " (line " + std::to_string(loop.line) +
                               ") has " + std::to_string(columns_) + " columns, but its " +
                               std::to_string(values_) + " values are no whole number of rows"};
    if (oddLine_ == 0) return fault;
    fault.line = oddLine_;
    fault.text += "; line " + std::to_string(oddLine_) + " has " + std::to_string(oddCount_);
    return fault;
  }

 private:
  void endLine() {
    if (oddLine_ == 0 && onLine_ % columns_ != 0) {
      oddLine_ = line_;
      oddCount_ = onLine_;
    }
    onLine_ = 0;
  }

  std::size_t columns_, values_ = 0, onLine_ = 0, oddCount_ = 0;
  int line_ = 0, oddLine_ = 0;
};

class Parser {
 public:
  Parser(std::string_view text, Document& document, tools::Log& log)
      : tokens_(text, log), document_(document), log_(log) {}

  bool run() {
    document_.blocks.emplace_back();
    document_.frames.emplace_back();
    advance();
    while (token_.kind != TokenKind::End) {
      if (!element()) return false;
    }
    return ended();
  }

 private:
  void advance() { token_ = tokens_.next(); }
  Frame& frame() { return document_.frames[insideFrame_ ? document_.frames.size() - 1 : outside_]; }
  void slip(int line, std::string text) { document_.slips.push_back({line, std::move(text)}); }

  bool element() {
    switch (token_.kind) {
      case TokenKind::Data:
        beginBlock();
        return true;
      case TokenKind::SaveBegin:
        beginFrame();
        return true;
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
        strayValues();
        return true;
      default:
        return false;
    }
  }

  void beginBlock() {
    if (insideFrame_) unfinishedFrame("data_" + token_.text);
    insideFrame_ = false;
    // What stands before the first data_ line belongs to its block.
    if (!blockNamed_) {
      document_.blocks.back() = token_.text;
    } else {
      document_.blocks.push_back(token_.text);
      document_.frames.push_back({"", token_.line, document_.blocks.size() - 1, {}, {}});
      outside_ = document_.frames.size() - 1;
    }
    blockNamed_ = true;
    advance();
  }

  void unfinishedFrame(const std::string& next) {
    slip(token_.line, next + " begins before the save frame '" + frame().name + "' (line " +
                          std::to_string(frame().line) + ") has ended; taken as its end");
  }

  void beginFrame() {
    if (insideFrame_) unfinishedFrame("save_" + token_.text);
    insideFrame_ = true;
    document_.frames.push_back({token_.text, token_.line, document_.blocks.size() - 1, {}, {}});
    advance();
  }

  bool item() {
    Item item{std::move(token_.text), {}};
    const int line = token_.line;
    advance();
    if (token_.kind == TokenKind::Broken) return false;
    if (token_.kind != TokenKind::Value) {
      slip(line, "the tag " + item.tag + " has no value");
      return true;
    }
    if (token_.unclosed) slip(token_.line, unclosedQuote());
    item.value = {std::move(token_.text), token_.line, token_.quoted};
    frame().items.push_back(std::move(item));
    advance();
    return true;
  }

  std::string unclosedQuote() const { return std::string("no closing ") + token_.text[0] + " on this line"; }

  bool loop() {
    Loop loop;
    loop.line = token_.line;
    for (advance(); token_.kind == TokenKind::Tag; advance()) loop.tags.push_back(std::move(token_.text));
    if (loop.tags.empty()) {
      slip(loop.line, "a loop without any tag");
      return token_.kind != TokenKind::Broken;
    }
    const bool kept = isRead(loop.tags[0]);
    RowCounter counter(loop.tags.size());
    for (; token_.kind == TokenKind::Value; advance()) {
      if (token_.unclosed && loop.fault.text.empty()) loop.fault = {token_.line, unclosedQuote()};
      counter.add(token_.line);
      if (kept) loop.values.push_back({std::move(token_.text), token_.line, token_.quoted});
    }
    if (token_.kind == TokenKind::Broken) return false;
    if (loop.fault.text.empty()) loop.fault = counter.fault(loop);
    stopped_ = token_.kind == TokenKind::Stop;
    if (stopped_) advance();
    frame().loops.push_back(std::move(loop));
    return true;
  }

  void strayValues() {
    const int line = token_.line;
    const std::string first = token_.text;
    std::size_t count = 0;
    for (; token_.kind == TokenKind::Value; advance()) ++count;
    slip(line, "the value '" + tools::shortened(first) + "' follows no tag" +
                   (count > 1 ? ", as do " + std::to_string(count - 1) + " values behind it" : "") +
                   "; not read");
  }

  /// A frame may lack its last save_; one that ends among the rows of a loop has lost what came behind them.
  bool ended() {
    if (!insideFrame_) return true;
    const std::string where = "the file ends inside the save frame '" + frame().name +
                              "' that begins at line " + std::to_string(frame().line);
    const Loop* last = frame().loops.empty() ? nullptr : &frame().loops.back();
    if (last != nullptr && !stopped_) {
      return !last->fault.text.empty() ? log_.error(last->fault.line, last->fault.text + "; is it cut off?")
                                       : log_.error(tokens_.line(), where + "; is it cut off?");
    }
    slip(tokens_.line(), where + "; its end is taken as complete");
    return true;
  }

  Tokenizer tokens_;
  Document& document_;
  tools::Log& log_;
  Token token_;
  std::size_t outside_ = 0;  ///< index of the frame for what stands outside save frames
  bool insideFrame_ = false, blockNamed_ = false;
  bool stopped_ = true;  ///< the last loop had its stop_
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

int Loop::column(std::string_view category, std::initializer_list<std::string_view> names) const {
  for (const std::string_view name : names) {
    const int found = column(std::string(category) + std::string(name));
    if (found >= 0) return found;
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

const Loop* Document::loopWith(std::string_view tag) const {
  for (const Frame& frame : frames) {
    if (const Loop* loop = frame.loopWith(tag)) return loop;
  }
  return nullptr;
}

bool parse(std::string_view text, Document& document, tools::Log& log) {
  return Parser(text, document, log).run();
}

void reportSlips(const Document& document, tools::Log& log) {
  constexpr std::size_t kNamed = 5;
  std::vector<Fault> all = document.slips;
  for (const Frame& frame : document.frames) {
    for (const Loop& loop : frame.loops) {
      if (!loop.fault.text.empty())
        all.push_back({loop.fault.line, loop.fault.text + "; this loop is not needed"});
    }
  }
  for (std::size_t i = 0; i < all.size() && i < kNamed; ++i) log.warn(all[i].line, all[i].text);
  if (all.size() > kNamed) {
    log.warn(all[kNamed].line, "and " + std::to_string(all.size() - kNamed) + " more slips like these");
  }
}

}  // namespace convert::star
