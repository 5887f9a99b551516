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

constexpr std::array<NamedFormat, 10> kFormats = {{{"nmrstar", Format::NmrStar3},
                                                   {"nmrstar2", Format::NmrStar2},
                                                   {"nef", Format::Nef},
                                                   {"xeasy", Format::Xeasy},
                                                   {"sparky", Format::Sparky},
                                                   {"shifty", Format::Shifty},
                                                   {"pipp", Format::Pipp},
                                                   {"lacs", Format::Lacs},
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

/// One-letter codes alone, in words of any length: a sequence without the header of FASTA.
bool isLetterRow(const std::vector<std::string_view>& words) {
  std::size_t letters = 0;
  for (const std::string_view word : words) {
    if (word.find_first_not_of("ACDEFGHIKLMNPQRSTVWYXacdefghiklmnpqrstvwyx*") != std::string_view::npos)
      return false;
    letters += word.size();
  }
  return letters >= 10 && (words.size() == 1 || words[0].size() >= 5);
}

/// "T7 CA 13C 61.9 ...": nucleus in the third column.
bool isSparkyRow(const std::vector<std::string_view>& words) {
  if (words.size() < 4 || !wholeNumber(words[3])) return false;
  return words[2] == "1H" || words[2] == "13C" || words[2] == "15N" || words[2] == "2H" || words[2] == "31P";
}

Format fromFirstLine(std::string_view line, const std::vector<std::string_view>& words) {
  const std::string first = text::upper(words[0]);
  if (first == "REMARK" || first == "DATA" || first == "VARS") return Format::Table;
  if (first == "#NUM" || (first == "#" && words.size() > 1 && text::upper(words[1]) == "NUM")) {
    return Format::Shifty;
  }
  if (line.starts_with('>')) return Format::Fasta;
  if (first == "GROUP" && words.size() >= 4 && text::upper(words[1]) == "ATOM") return Format::Sparky;
  if (first == "SHIFT_FL_FRMT" || first == "RES_ID") return Format::Pipp;
  // Sparky's peak lists begin with Assignment w1 w2, NMRView's with the names of their columns.
  const bool frequencies =
      words.size() >= 3 && text::upper(words[1]) == "W1" && text::upper(words[2]) == "W2";
  const bool view = first == "LABEL" && words.size() >= 3 && text::upper(words[1]) == "DATASET";
  if ((first == "ASSIGNMENT" && frequencies) || view || line.starts_with("# Number of dimensions"))
    return Format::PeakList;
  return Format::Unknown;
}

Format fromDataLine(const std::vector<std::string_view>& words) {
  if (isXeasyRow(words)) return Format::Xeasy;
  if (isSparkyRow(words)) return Format::Sparky;
  if (isXeasySequenceRow(words)) return Format::XeasySequence;
  if (isLacsRow(words)) return Format::Lacs;
  if (isLetterRow(words)) return Format::Fasta;
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
