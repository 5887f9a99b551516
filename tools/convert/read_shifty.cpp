// SHIFTY: one row per residue under the header #NUM AA HA CA CB CO N HN; 0 stands for a missing shift.
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

struct Header {
  int number = -1, type = -1;
  std::vector<std::string> names;
};

bool readHeader(int line, const std::vector<std::string_view>& words, Header& header, Log& log) {
  for (const std::string_view word : words) {
    std::string name = text::upper(word);
    if (name == "#") continue;
    if (name.starts_with('#')) name.erase(0, 1);
    if (name == "NUM") header.number = static_cast<int>(header.names.size());
    if (name == "AA") header.type = static_cast<int>(header.names.size());
    header.names.push_back(name);
  }
  if (header.number >= 0 && header.type >= 0) return true;
  return log.error(line, "the header lacks #NUM or AA");
}

bool readRow(int line, const std::vector<std::string_view>& words, const Header& header, Entry& entry,
             Log& log) {
  if (words.size() != header.names.size()) {
    return log.error(line, "expected " + std::to_string(header.names.size()) +
                               " columns as in the header, found " + std::to_string(words.size()));
  }
  const auto number = wholeInteger(words[static_cast<std::size_t>(header.number)]);
  if (!number) return log.error(line, "the residue number is no integer");
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (static_cast<int>(i) == header.number || static_cast<int>(i) == header.type) continue;
    Shift shift;
    shift.line = line;
    shift.chain = "A";
    shift.list = "1";
    shift.residue = std::to_string(*number);
    shift.name = words[static_cast<std::size_t>(header.type)];
    shift.atom = header.names[i];
    shift.text = words[i];
    entry.shifts.push_back(std::move(shift));
  }
  return true;
}

}  // namespace

bool readShifty(std::string_view text, Entry& entry, Log& log) {
  entry.format = "SHIFTY";
  entry.zeroIsMissing = true;
  entry.chains.push_back({"A", {}, "", {}, true, false, ""});
  entry.lists.push_back({"1", "", ""});
  Header header;
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty()) return true;
    if (header.names.empty()) return readHeader(number, words, header, log);
    if (words[0][0] == '#') return true;
    return readRow(number, words, header, entry, log);
  });
  if (!read) return false;
  if (entry.shifts.empty()) return log.error(0, "the file holds no rows");
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
