// Input of referencing programs (LACS): number, residue type as the place of its letter in the alphabet, CA,
// CB, HA, C, HN, N, pH or another number; -100 stands for a missing shift, type 0 for a residue that is not
// known.
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

constexpr std::string_view kLetters = "ACDEFGHIKLMNPQRSTVWY";
constexpr double kMissing = -100.0;

}  // namespace

bool isLacsRow(const std::vector<std::string_view>& words) {
  if (words.size() != 9 || !wholeInteger(words[0])) return false;
  const auto type = wholeInteger(words[1]);
  if (!type || *type < 0 || *type > static_cast<int>(kLetters.size())) return false;
  for (std::size_t i = 2; i < words.size(); ++i) {
    if (!wholeNumber(words[i]) || wholeInteger(words[i])) return false;
  }
  return true;
}

bool readLacs(std::string_view text, Entry& entry, Log& log) {
  entry.format = "LACS input";
  entry.chains.push_back({"A", {}, "", {}, true, false, ""});
  entry.lists.push_back({"1", "", ""});
  int first = 0;
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty() || words[0][0] == '#') return true;
    if (!isLacsRow(words)) {
      return log.error(
          number, "expected residue number, type (0 to 20) and CA, CB, HA, C, HN, N with one number more");
    }
    if (first == 0) first = number;
    const auto type = static_cast<std::size_t>(*wholeInteger(words[1]));
    static constexpr const char* kAtoms[] = {"CA", "CB", "HA", "C", "HN", "N"};
    for (std::size_t i = 0; i < std::size(kAtoms); ++i) {
      Shift shift;
      shift.line = number;
      shift.chain = "A";
      shift.list = "1";
      shift.residue = std::to_string(*wholeInteger(words[0]));
      if (type > 0) shift.name = kLetters.substr(type - 1, 1);
      shift.atom = kAtoms[i];
      shift.text = words[i + 2];
      shift.missing = *wholeNumber(words[i + 2]) <= kMissing;
      entry.shifts.push_back(std::move(shift));
    }
    return true;
  });
  if (!read) return false;
  log.warn(first,
           "no header line names the columns; taken as residue number, type (the place of its letter in the "
           "alphabet), CA, CB, HA, C, HN and N, without the last column");
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
