// The STAR syntax shared by NMR-STAR and NEF: save frames, tags and loops, every value with its line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/log.h"

namespace convert::star {

struct Value {
  std::string text;
  int line = 0;
  bool quoted = false;

  /// Unquoted "." or "?": no value.
  bool missing() const { return !quoted && (text == "." || text == "?"); }
  /// The text, empty for a missing value.
  std::string orEmpty() const { return missing() ? std::string() : text; }
};

struct Item {
  std::string tag;
  Value value;
};

/// A table: values row by row, a whole number of rows.
struct Loop {
  std::vector<std::string> tags;
  std::vector<Value> values;
  int line = 0;

  std::size_t rows() const { return tags.empty() ? 0 : values.size() / tags.size(); }
  /// Index of a column by its full tag, letter case ignored; -1 when there is none.
  int column(std::string_view tag) const;
  /// Value of a column in a row; nullptr for column -1.
  const Value* at(std::size_t row, int column) const;
  /// As at(), as text; empty for a missing value or column.
  std::string text(std::size_t row, int column) const;
};

struct Frame {
  std::string name;  ///< empty for what stands outside every save frame
  int line = 0;
  std::vector<Item> items;
  std::vector<Loop> loops;

  /// Value of a tag, letter case ignored; empty when absent or missing.
  std::string text(std::string_view tag) const;
  bool has(std::string_view tag) const;
  /// First loop with that column.
  const Loop* loopWith(std::string_view tag) const;
};

struct Document {
  std::string block;
  std::vector<Frame> frames;  ///< the first one holds what stands outside every save frame
};

/// Parses `text`. False with one error in `log` for a broken file: text or frame that never ends, a loop
/// with an incomplete row, a tag without value, a value without tag.
bool parse(std::string_view text, Document& document, tools::Log& log);

bool equalsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace convert::star
