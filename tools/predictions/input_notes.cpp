// What the conversion of a shift list noted about its source in the remarks of the input table.
#include "predictions/input_notes.h"

#include <algorithm>

#include "common/log.h"
#include "common/numbers.h"
#include "tables/text.h"

namespace predictions {

namespace {

/// A name or number that every output format can carry.
bool isPlainWord(std::string_view word) {
  constexpr std::size_t kLongest = 16;
  return word.size() <= kLongest &&
         std::all_of(word.begin(), word.end(), [](char c) { return c > ' ' && c <= '~'; });
}

}  // namespace

InputNotes readInputNotes(const std::list<std::string>& remarks) {
  InputNotes notes;
  for (const std::string& remark : remarks) {
    const auto words = text::split_WhiteSpace(remark);
    if (words.size() < 2) continue;
    const std::string_view kind = words[0], rest = text::trim(text::trim(remark).substr(kind.size()));
    int resid = 0;
    if (kind == "ENTRY") notes.entry = tools::printable(rest);
    if (kind == "CHAIN" && isPlainWord(rest)) notes.chain = rest;
    if (kind == "LIST") notes.list = tools::printable(rest);
    if (words.size() != 3 || !tools::parseInteger(words[1], resid) || !isPlainWord(words[2])) continue;
    if (kind == "NAME") notes.names[resid] = words[2];
    if (kind == "NUMBER") notes.numbers[resid] = words[2];
  }
  return notes;
}

}  // namespace predictions
