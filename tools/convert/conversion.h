// From an entry to the rows of the input table: what is taken, renamed, skipped, and why.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "convert/entry.h"

namespace convert {

struct TableRow {
  int resid = 0;
  char code = 'X';
  std::string atom;
  double value = 0.0;  ///< ppm
  std::string text;    ///< the value as in the file
  int line = 0;
};

/// Everything that is said about one conversion, beside its rows.
struct Conversion {
  std::string sequence;
  int firstResid = 1;
  std::vector<TableRow> rows;                                ///< by residue, then N HN HA HA2 HA3 C CA CB
  std::map<std::string, std::size_t> taken;                  ///< atom name of the table -> rows
  std::map<std::string, std::size_t> renamed;                ///< "H to HN" -> rows
  std::vector<std::pair<std::string, std::size_t>> skipped;  ///< reason -> rows
  std::vector<std::string> remarks;                          ///< where it comes from, numbering, context
  std::vector<std::string> marks;                            ///< REMARK lines that other programs read
  std::vector<std::string> hints;                            ///< options of the prediction worth a thought

  void skip(const std::string& reason, std::size_t rows = 1);
};

/// The code of a residue in the table: modified residues are X unless the settings take them.
char codeOf(const Residue& residue, const Settings& settings);

/// Sequence and first residue number of a chain whose residues are numbered.
void setSequence(const Chain& chain, const Settings& settings, Conversion& conversion);

/// Converts one chain and one list. The residues must be numbered. False with an error in `log` for shifts
/// that are no numbers, residues outside the sequence, contradicting duplicates and swapped columns.
bool convertRows(const Entry& entry, const Chain& chain, const std::string& list, const Settings& settings,
                 Conversion& conversion, Log& log);

/// Hints for deuterated samples and shift lists without protons.
void addHints(const Entry& entry, const Chain& chain, Conversion& conversion);

/// Recognises and reads the text of `file`. `sequence` receives the sequence that came with it, by the
/// settings or as a file beside it, whose name then stands in `settings`.
bool readEntry(const std::string& file, std::string_view text, Settings& settings, Entry& entry,
               std::vector<Chain>& sequence, Log& log);

/// Recognises, reads, chooses, numbers and converts the text of `file`. `ambiguous` tells that a choice of
/// chain or list is missing.
bool convertText(const std::string& file, std::string_view text, const Settings& settings,
                 Conversion& conversion, bool& ambiguous, Log& log);

/// Writes the table to `path` ("-": standard output), never half of it. Empty text, or what went wrong.
std::string writeTable(const Conversion& conversion, const Log& log, const std::string& path);

/// The report on one conversion, one statement a line.
std::vector<std::string> reportLines(const Conversion& conversion);

}  // namespace convert
