// The chains and shift lists of a file that can be converted.
#include "convert/list_choices.h"

#include <algorithm>
#include <array>
#include <map>

#include "convert/choose.h"
#include "convert/conversion.h"
#include "convert/names.h"
#include "tables/text.h"

namespace convert {

namespace {

constexpr std::size_t kLongestName = 60;

/// One line of printable characters; what is cut off ends in three dots.
std::string shortened(const std::string& text) {
  std::string line = text::simplifyWhiteSpace(text);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; },
      ' ');
  if (line.size() <= kLongestName) return line;
  std::size_t end = kLongestName - 3;
  while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) --end;  // no half UTF-8 character
  return line.substr(0, end) + "...";
}

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) {
    if (!part.empty()) text += (text.empty() ? "" : ", ") + part;
  }
  return shortened(text);
}

std::string nameOf(const Chain& chain) {
  std::vector<std::string> parts = chain.aliases;
  if (std::find(parts.begin(), parts.end(), chain.description) == parts.end())
    parts.push_back(chain.description);
  return joined(parts);
}

/// Whether the settings leave this pair, asked of the one place that knows what names a chain and a list.
bool wanted(const Entry& entry, const Settings& settings, const Option& option) {
  if (settings.chain.empty() && settings.list.empty()) return true;
  Settings pair;
  pair.chain = settings.chain.empty() ? option.chain : settings.chain;
  pair.list = settings.list.empty() ? option.list : settings.list;
  Log unheard;
  const Choice choice = choose(entry, pair, unheard);
  return choice.ok && choice.chain == option.chain && choice.list == option.list;
}

using Row = std::array<std::string, 6>;

std::vector<Row> rowsOf(const std::vector<Option>& found) {
  std::vector<Row> rows = {{"chain", "list", "residues", "shifts", "chain_name", "list_name"}};
  for (const Option& option : found) {
    rows.push_back({option.chain, option.list, std::to_string(option.residues), std::to_string(option.shifts),
                    option.chainName, option.listName});
  }
  return rows;
}

}  // namespace

std::vector<Option> options(const Entry& entry, const Settings& settings) {
  std::map<std::pair<std::string, std::string>, std::size_t> counts;
  for (const Shift& shift : entry.shifts) {
    if (shift.missing || backboneAtom(residueCode(shift.name), shift.atom).empty()) continue;
    ++counts[{shift.chain, shift.list}];
  }
  std::vector<Option> found;
  for (const Chain& chain : entry.chains) {
    for (const ShiftList& list : entry.lists) {
      const auto count = counts.find({chain.id, list.id});
      if (!chain.protein || count == counts.end()) continue;
      Option option{
          chain.id,     list.id, nameOf(chain), joined({list.name, list.details}), chain.residues.size(),
          count->second};
      if (wanted(entry, settings, option)) found.push_back(std::move(option));
    }
  }
  return found;
}

bool listOptions(const std::string& file, std::string_view text, const Settings& settings,
                 std::vector<Option>& found, Log& log) {
  Settings used = settings;
  Entry entry;
  std::vector<Chain> sequence;
  if (!readEntry(file, text, used, entry, sequence, log)) return false;
  found = options(entry, used);
  if (!found.empty()) return true;
  choose(entry, used, log);  // says what is missing
  return log.failed() ? false : log.error(0, "no protein chain has any backbone shift");
}

std::string optionsTsv(const std::vector<Option>& found) {
  std::string out;
  for (const Row& row : rowsOf(found)) {
    for (std::size_t k = 0; k < row.size(); ++k) out += (k > 0 ? "\t" : "") + row[k];
    out += "\n";
  }
  return out;
}

std::string optionsTable(const std::vector<Option>& found, const std::string& indent) {
  const std::vector<Row> rows = rowsOf(found);
  std::array<std::size_t, 6> width{};
  for (const Row& row : rows) {
    for (std::size_t k = 0; k < row.size(); ++k) width[k] = std::max(width[k], row[k].size());
  }
  std::string out;
  for (const Row& row : rows) {
    std::string line = indent;
    for (std::size_t k = 0; k < row.size(); ++k) {
      line += row[k] + std::string(width[k] - row[k].size() + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out += line + "\n";
  }
  return out;
}

}  // namespace convert
