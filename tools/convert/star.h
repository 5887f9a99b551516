// The STAR syntax shared by NMR-STAR and NEF: save frames, tags and loops, every value with its line.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "common/log.h"

namespace convert::star {

struct Value {
  std::string text;
  int line = 0;
  bool quoted = false;

  /// Unquoted "." or "?", or the "@" of the first deposition forms: no value.
  bool missing() const { return !quoted && (text == "." || text == "?" || text == "@"); }
  /// The text, empty for a missing value.
  std::string orEmpty() const { return missing() ? std::string() : text; }
};

struct Item {
  std::string tag;
  Value value;
};

/// What is wrong with a loop; a loop that is not read may stay broken.
struct Fault {
  int line = 0;
  std::string text;  ///< empty: nothing
};

/// A table: values row by row, a whole number of rows unless `fault` says otherwise. Of categories that no
/// reader asks for the values are not kept.
struct Loop {
  std::vector<std::string> tags;
  std::vector<Value> values;
  int line = 0;
  Fault fault;

  std::size_t rows() const { return tags.empty() ? 0 : values.size() / tags.size(); }
  /// Index of a column by its full tag, letter case ignored; -1 when there is none.
  int column(std::string_view tag) const;
  /// The first of several tags that is a column: versions of a format name the same thing differently.
  int column(std::string_view category, std::initializer_list<std::string_view> tags) const;
  /// True when the rows can be read; otherwise the fault is an error in `log`.
  bool usable(tools::Log& log) const { return fault.text.empty() || log.error(fault.line, fault.text); }
  /// Value of a column in a row; nullptr for column -1.
  const Value* at(std::size_t row, int column) const;
  /// As at(), as text; empty for a missing value or column.
  std::string text(std::size_t row, int column) const;
};

struct Frame {
  std::string name;  ///< empty for what stands outside every save frame
  int line = 0;
  std::size_t block = 0;  ///< data block it stands in, from 0
  std::vector<Item> items;
  std::vector<Loop> loops;

  /// Value of a tag, letter case ignored; empty when absent or missing.
  std::string text(std::string_view tag) const;
  bool has(std::string_view tag) const;
  /// First loop with that column.
  const Loop* loopWith(std::string_view tag) const;
};

struct Document {
  std::vector<std::string> blocks;  ///< names of the data blocks, at least one (empty: rows without a block)
  std::vector<Frame> frames;        ///< of each block first what stands outside its save frames
  std::vector<Fault> slips;         ///< what was read over, in order

  /// First loop of any frame with that column; nullptr when there is none.
  const Loop* loopWith(std::string_view tag) const;
};

/// Parses `text`. Slips of writing that lose nothing are passed over and kept in Document::slips; a loop
/// with an incomplete row keeps its fault. False with one error in `log` for a file that is cut off: a text
/// block, or a loop of a save frame, that never ends.
bool parse(std::string_view text, Document& document, tools::Log& log);

/// Warns of slips in the document and of loops with a fault whose category is none of those that are read.
void reportSlips(const Document& document, tools::Log& log);

/// True for text that is built like STAR: a data block, a save frame, a loop or a tag comes first, or a loop
/// with tags comes later. Text blocks and comments do not count.
bool looksLikeStar(std::string_view text);

bool equalsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace convert::star
