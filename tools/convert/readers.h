// One reader per exchange format; all of them fill the same Entry.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "convert/entry.h"
#include "convert/star.h"

namespace convert {

enum class Format {
  Unknown,
  NmrStar3,
  NmrStar2,
  Nef,
  Xeasy,
  Sparky,
  Pipp,
  Lacs,
  PeakList,
  Shifty,
  Delimited,
  Table,
  Fasta,
  XeasySequence,
  Star  ///< built like STAR; starDialect() tells which kind it is
};

/// The format that the content looks like.
Format recognise(std::string_view text);
/// What a STAR document holds: NmrStar3, NmrStar2 or Nef; Unknown for another kind of STAR.
Format starDialect(const star::Document& document);
/// The format of that name on the command line; Unknown when there is none.
Format formatNamed(std::string_view name);
/// The names that formatNamed() knows, in the order of the help text.
const std::vector<std::string>& formatNames();

// Each reader returns false with one error in `log` for a file that cannot be used. Shifts are kept as they
// are, numbers included; what they are worth is decided later, in one place for all formats.
/// Any kind of STAR; `format` is the one the user named, or Star.
bool readStar(Format format, std::string_view text, Entry& entry, Log& log);
bool readNmrStar3(const star::Document& document, Entry& entry, Log& log);
bool readNmrStar2(const star::Document& document, Entry& entry, Log& log);
bool readNef(const star::Document& document, Entry& entry, Log& log);
/// `sequence`: residues of a .seq or FASTA file, empty when there is none.
bool readXeasy(std::string_view text, const std::vector<Chain>& sequence, Entry& entry, Log& log);
bool readSparky(std::string_view text, Entry& entry, Log& log);
bool readLacs(std::string_view text, Entry& entry, Log& log);
/// Nine numbers, the second one the place of a residue type in the alphabet.
bool isLacsRow(const std::vector<std::string_view>& words);
bool readPipp(std::string_view text, Entry& entry, Log& log);
/// `given`: the columns as --columns names them, empty to find them by headings and content.
bool readShifty(std::string_view text, const std::string& given, Entry& entry, Log& log);
bool readDelimited(std::string_view text, const std::string& given, Entry& entry, Log& log);
bool readTable(std::string_view text, Entry& entry, Log& log);

/// Chains of a FASTA or XEASY .seq text; one per FASTA record, split at linker residues for .seq.
bool readSequence(std::string_view text, std::vector<Chain>& chains, Log& log);

/// Calls visit(line number, line without line end) for every line; stops when it returns false.
template <class Visit>
bool forEachLine(std::string_view text, Visit visit) {
  int number = 0;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!visit(++number, line)) return false;
  }
  return true;
}

/// The residues of one-letter codes with X or (MSE) for others, white space ignored; keys 1, 2, ...
std::vector<Residue> residuesFromLetters(std::string_view letters, int line);

/// Puts the sequence of every chain that has none together from the residue numbers of its shifts; gaps
/// become unknown residues. False when the numbers are no sensible residue numbers.
bool sequenceFromShifts(Entry& entry, Log& log);

}  // namespace convert
