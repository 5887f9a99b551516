// Tells STAR from other text by how it is built.
#include "convert/readers.h"
#include "convert/star.h"
#include "tables/text.h"

namespace convert::star {

namespace {

/// A line that begins with a tag has the tag's value behind it: more tags, or tags joined by commas, are the
/// header of a table whose columns are called so.
bool isTagLine(std::string_view word, std::string_view rest) {
  return word.size() > 1 && word[0] == '_' && word.find_first_of(",;|\"") == std::string_view::npos &&
         !text::trim(rest).starts_with('_');
}

bool opensStar(std::string_view word, std::string_view rest) {
  const std::string raised = text::upper(word);
  return raised.starts_with("DATA_") || raised.starts_with("SAVE_") || raised == "LOOP_" ||
         raised == "GLOBAL_" || isTagLine(word, rest);
}

}  // namespace

bool looksLikeStar(std::string_view text) {
  bool first = true, found = false, loop = false, insideText = false;
  forEachLine(text, [&](int, std::string_view line) {
    if (line.starts_with(';')) insideText = !insideText;
    if (insideText || line.starts_with(';')) return true;
    const std::string_view trimmed = text::trim(line);
    if (trimmed.empty() || trimmed[0] == '#') return true;
    const std::string_view word = trimmed.substr(0, trimmed.find_first_of(" \t"));
    // Prose or rows in front: only a loop with tags below it makes STAR of them.
    const bool loopHere = equalsIgnoringCase(word, "loop_");
    const bool tagHere = loopHere && text::trim(trimmed.substr(word.size())).starts_with('_');
    found = first ? opensStar(word, trimmed.substr(word.size())) : tagHere || (loop && word[0] == '_');
    first = false;
    loop = loopHere;
    return !found;
  });
  return found;
}

}  // namespace convert::star
