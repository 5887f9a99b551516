// Recognises a format by its content.
#include <array>

#include "convert/assignment.h"
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

struct NamedFormat {
  const char* name;
  Format format;
};

constexpr std::array<NamedFormat, 8> kFormats = {{{"nmrstar", Format::NmrStar3},
                                                  {"nmrstar2", Format::NmrStar2},
                                                  {"nef", Format::Nef},
                                                  {"xeasy", Format::Xeasy},
                                                  {"sparky", Format::Sparky},
                                                  {"shifty", Format::Shifty},
                                                  {"csv", Format::Delimited},
                                                  {"table", Format::Table}}};

bool isXeasyRow(const std::vector<std::string_view>& words) {
  const bool noError = words.size() >= 5 && (words[2] == "." || words[2] == "-" || words[2] == "?");
  return words.size() >= 5 && wholeInteger(words[0]) && wholeNumber(words[1]) &&
         (noError || wholeNumber(words[2])) && looksLikeAtom(words[3]) && wholeInteger(words[4]);
}

bool isXeasySequenceRow(const std::vector<std::string_view>& words) {
  return (words.size() == 1 || (words.size() == 2 && wholeInteger(words[1]))) && words[0].size() >= 3 &&
         words[0].size() <= 5 && residueCode(words[0]) != 'X';
}

/// "T7 CA 13C 61.9 ...": nucleus in the third column.
bool isSparkyRow(const std::vector<std::string_view>& words) {
  if (words.size() < 4 || !wholeNumber(words[3])) return false;
  return words[2] == "1H" || words[2] == "13C" || words[2] == "15N";
}

Format fromFirstLine(std::string_view line, const std::vector<std::string_view>& words) {
  const std::string first = text::upper(words[0]);
  if (first == "REMARK" || first == "DATA" || first == "VARS") return Format::Table;
  if (first == "#NUM" || (first == "#" && words.size() > 1 && text::upper(words[1]) == "NUM")) {
    return Format::Shifty;
  }
  if (line.starts_with('>')) return Format::Fasta;
  if (first == "GROUP" && words.size() >= 4) return Format::Sparky;
  return Format::Unknown;
}

Format fromDataLine(const std::vector<std::string_view>& words) {
  if (isXeasyRow(words)) return Format::Xeasy;
  if (isSparkyRow(words)) return Format::Sparky;
  if (isXeasySequenceRow(words)) return Format::XeasySequence;
  return Format::Delimited;
}

}  // namespace

Format formatNamed(std::string_view name) {
  for (const NamedFormat& known : kFormats) {
    if (name == known.name) return known.format;
  }
  return name == "tsv" ? Format::Delimited : Format::Unknown;
}

const std::vector<std::string>& formatNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> list;
    for (const NamedFormat& known : kFormats) list.emplace_back(known.name);
    return list;
  }();
  return names;
}

Format recognise(std::string_view text) {
  if (star::looksLikeStar(text)) return Format::Star;
  Format found = Format::Unknown;
  forEachLine(text, [&](int, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty()) return true;
    found = fromFirstLine(line, words);
    if (found == Format::Unknown && words[0][0] != '#' && words[0][0] != '!') found = fromDataLine(words);
    return found == Format::Unknown;
  });
  return found;
}

}  // namespace convert
