// The whole way from the text of a file to table rows.
#include <algorithm>
#include <filesystem>

#include "common/files.h"
#include "common/residue_variants.h"
#include "common/text_encoding.h"
#include "convert/choose.h"
#include "convert/conversion.h"
#include "convert/names.h"
#include "convert/number_residues.h"
#include "convert/readers.h"
#include "convert/sense.h"
#include "tables/text.h"

namespace convert {

namespace {

/// A sequence without shifts is input as well: the secondary structure can be predicted from it alone. The
/// program wants a row in its table, so one says that a shift is missing.
bool readSequenceAlone(std::string_view text, Entry& entry, Log& log) {
  if (!readSequence(text, entry.chains, log)) return false;
  entry.format = "sequence without shifts";
  entry.lists.push_back({"1", "", ""});
  log.warn(0,
           "the file holds a sequence and no shifts: the table tells orbeln the sequence alone; shifts with "
           "it are "
           "--sequence");
  return true;
}

bool readFormat(Format format, std::string_view text, const std::vector<Chain>& sequence,
                const Settings& settings, Entry& entry, Log& log) {
  switch (format) {
    case Format::NmrStar3:
    case Format::NmrStar2:
    case Format::Nef:
    case Format::Star:
      return readStar(format, text, entry, log);
    case Format::Xeasy:
      return readXeasy(text, sequence, entry, log);
    case Format::Sparky:
      return readSparky(text, entry, log);
    case Format::Lacs:
      return readLacs(text, entry, log);
    case Format::Pipp:
      return readPipp(text, entry, log);
    case Format::PeakList:
      return log.error(
          0,
          "this is a peak list; export the shifts of the assigned resonances instead (a resonance list "
          "in Sparky or POKY, the ppm table in NMRView, a .prot file in CYANA)");
    case Format::Shifty:
      return readShifty(text, settings.columns, entry, log);
    case Format::Delimited:
      return readDelimited(text, settings.columns, entry, log);
    case Format::Table:
      return readTable(text, entry, log);
    case Format::Fasta:
    case Format::XeasySequence:
      return readSequenceAlone(text, entry, log);
    case Format::Unknown:
      break;
  }
  return log.error(0, "the format is not recognised; --format names it if it is a known one");
}

constexpr std::size_t kLongestList = std::size_t{32} << 20;  // bytes; no protein has so many shifts

bool isText(std::string_view text, Log& log) {
  if (const std::string complaint = tools::binaryComplaint(text); !complaint.empty())
    return log.error(0, complaint);
  if (text.find('\0') != std::string_view::npos) return log.error(0, "this is no text file");
  if (std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); })) {
    return log.error(0, "the file is empty");
  }
  return true;
}

/// The sequence that comes with the file: the one given, else the .seq beside an XEASY .prot.
bool readCompanion(const std::string& file, Format format, Settings& settings, std::vector<Chain>& sequence,
                   Log& log) {
  if (settings.sequenceFile.empty() && format == Format::Xeasy && file != "-") {
    const std::string beside = std::filesystem::path(file).replace_extension(".seq").string();
    std::error_code ignored;
    if (beside != file && std::filesystem::is_regular_file(beside, ignored)) settings.sequenceFile = beside;
  }
  if (settings.sequenceFile.empty()) return true;
  const tools::FileText text = tools::readTextFile(settings.sequenceFile);
  const std::string previous = log.enter(settings.sequenceFile);
  const bool read = text.ok ? readSequence(text.text, sequence, log) : log.error(0, text.error);
  log.enter(previous);
  return read;
}

/// What the remarks say of chains that are not converted and residues that are X.
void describeSource(const std::string& file, const Entry& entry, const Chain& chain, const std::string& list,
                    Conversion& conversion) {
  const std::string name = file == "-" ? "standard input" : std::filesystem::path(file).filename().string();
  conversion.remarks.push_back("Converted from " + name + " (" + entry.format + ")");
  for (const std::string& fact : entry.facts) conversion.remarks.push_back(fact);
  std::string source = "Chain " + describeChain(chain);
  for (const ShiftList& known : entry.lists) {
    if (known.id == list && (entry.lists.size() > 1 || !known.name.empty()))
      source += ", shift list " + describeList(known);
  }
  conversion.remarks.push_back(source);
  const BackboneCounts counts(entry);
  for (const Chain& other : entry.chains) {
    if (other.id == chain.id) continue;
    const std::size_t shifts = counts.of(other.id);
    conversion.remarks.push_back("Chain " + describeChain(other) + " is not converted: " +
                                 (!other.protein ? "no protein"
                                  : shifts == 0  ? "it has no shifts"
                                                 : "not chosen"));
  }
}

void describeResidues(const Chain& chain, const Settings& settings, Conversion& conversion, Log& log) {
  std::string unknown, oxidized, modified;
  int gaps = 0, line = 0;
  for (const Residue& residue : chain.residues) {
    const char code = codeOf(residue, settings);
    if (code == 'c') oxidized += ", " + std::to_string(residue.number);
    const tools::ResidueVariant* variant = tools::findResidueVariant(residue.name);
    const bool known = variant != nullptr && variant->kind == tools::VariantKind::Modified;
    const std::string shown = std::to_string(residue.number) + " " + residue.name;
    if (code != 'X') {
      if (known) modified += ", " + shown + " as " + std::string(tools::plainResidueName(code));
    } else if (residue.name.empty()) {
      ++gaps;
    } else if (residue.name != "X" || chain.sequenceGiven) {
      unknown += ", " + shown + (known ? " (" + std::string(variant->what) + ")" : "");
      if (line == 0) line = residue.line;
    }
  }
  if (!modified.empty()) conversion.remarks.push_back("Modified residues taken: " + modified.substr(2));
  if (!unknown.empty()) {
    conversion.remarks.push_back("Residues that are none of the 20 amino acids are X: " + unknown.substr(2));
    log.note(line, conversion.remarks.back());
  }
  if (!oxidized.empty())
    conversion.remarks.push_back("Disulfide-bonded cysteines (c): " + oxidized.substr(2));
  if (chain.sequenceGiven) return;
  std::string remark = "The file has no sequence: it is put together from the residues of the shifts";
  if (gaps > 0)
    remark += ", with X for " + std::to_string(gaps) + " residues without any; --sequence gives the true one";
  conversion.remarks.push_back(remark);
  if (gaps > 0) log.warn(0, remark);
}

/// What other programs need to name a residue as the file does (see Conversion::marks).
void markResidues(const Chain& chain, const Settings& settings, Conversion& conversion) {
  for (const Residue& residue : chain.residues) {
    const std::string number = std::to_string(residue.number);
    if (tools::namesMoreThan(residue.name, codeOf(residue, settings))) {
      conversion.marks.push_back("NAME " + number + " " + residue.name);
    }
    if (!residue.author.empty() && residue.author != number) {
      conversion.marks.push_back("NUMBER " + number + " " + residue.author);
    }
  }
}

/// Title, chain and list, for the headings of what is made from the table.
void markSource(const Entry& entry, const Chain& chain, const std::string& list, Conversion& conversion) {
  if (!entry.title.empty()) conversion.marks.push_back("ENTRY " + text::simplifyWhiteSpace(entry.title));
  if (chain.idGiven) conversion.marks.push_back("CHAIN " + chain.id);
  for (const ShiftList& known : entry.lists) {
    if (known.id != list || (known.name.empty() && entry.lists.size() < 2)) continue;
    conversion.marks.push_back("LIST " + (known.name.empty() ? known.id : known.name));
  }
}

bool prepareChain(const Entry& entry, Chain& chain, const std::vector<Chain>& sequence,
                  const Settings& settings, Conversion& conversion, Log& log) {
  const bool used = entry.format == "XEASY" && chain.sequenceGiven;  // its .seq came with it
  const bool applied = !sequence.empty() && !used;
  if (!numberResidues(entry, chain, settings, applied, conversion.remarks, log)) return false;
  if (applied) {
    if (!applySequence(entry, chain, sequence, settings, conversion.remarks, log)) return false;
    chain.sequenceGiven = true;
  }
  describeResidues(chain, settings, conversion, log);
  markResidues(chain, settings, conversion);
  return true;
}

/// A STAR or NEF file of restraints or of the molecules only.
bool hasSequenceAlone(const Entry& entry) {
  return entry.lists.empty() && entry.shifts.empty() &&
         std::any_of(entry.chains.begin(), entry.chains.end(),
                     [](const Chain& chain) { return chain.protein && !chain.residues.empty(); });
}

/// The table of a sequence alone: one row that says that its shift is missing.
bool convertSequenceAlone(const std::string& file, Entry& entry, const Settings& settings,
                          Conversion& conversion, bool& ambiguous, Log& log) {
  const auto wanted = [&](const Chain& chain) {
    const bool named =
        settings.chain.empty() || chain.id == settings.chain ||
        std::find(chain.aliases.begin(), chain.aliases.end(), settings.chain) != chain.aliases.end();
    return named && chain.protein && !chain.residues.empty();
  };
  const auto matching =
      static_cast<std::size_t>(std::count_if(entry.chains.begin(), entry.chains.end(), wanted));
  if (matching != 1) {
    std::string names;
    for (const Chain& chain : entry.chains) names += (names.empty() ? "" : "; ") + describeChain(chain);
    ambiguous = matching > 1;
    return log.error(0, ambiguous ? "several sequences, choose one with --chain: " + names
                                  : "there is no chain '" + settings.chain + "'; the file has " + names);
  }
  Chain& chain = *std::find_if(entry.chains.begin(), entry.chains.end(), wanted);
  describeSource(file, entry, chain, "1", conversion);
  markSource(entry, chain, "", conversion);
  if (!prepareChain(entry, chain, {}, settings, conversion, log)) return false;
  entry.unassigned = 0;
  setSequence(chain, settings, conversion);
  const std::size_t known = conversion.sequence.find_first_not_of('X');
  if (known == std::string::npos) return log.error(0, "the sequence has none of the 20 amino acids");
  const int resid = conversion.firstResid + static_cast<int>(known);
  conversion.rows.push_back({resid, conversion.sequence[known], "CA", 9999.0, "9999.000", 0});
  return true;
}

/// A warning ends the conversion of those who want no guess.
bool acceptWarnings(const Settings& settings, Log& log) {
  if (!settings.strict || log.count(tools::Severity::Warning) == 0) return true;
  const auto first = std::find_if(log.messages().begin(), log.messages().end(), [](const tools::Message& m) {
    return m.severity == tools::Severity::Warning;
  });
  return log.error(first->line, first->text + " (--strict)");
}

/// --columns makes every text a table of columns.
Format formatOf(std::string_view text, const Settings& settings) {
  if (!settings.format.empty()) return formatNamed(settings.format);
  return settings.columns.empty() ? recognise(text) : Format::Delimited;
}

}  // namespace

bool readEntry(const std::string& file, std::string_view text, Settings& settings, Entry& entry,
               std::vector<Chain>& sequence, Log& log) {
  if (!isText(text, log)) return false;
  const Format format = formatOf(text, settings);
  const bool star = format == Format::NmrStar3 || format == Format::NmrStar2 || format == Format::Nef;
  if (!star && text.size() > kLongestList) {
    return log.error(0,
                     "the file has " + std::to_string(text.size() >> 20) + " MB, which no shift list needs");
  }
  if (!readCompanion(file, format, settings, sequence, log)) return false;
  if (!readFormat(format, text, sequence, settings, entry, log)) return false;
  if (entry.needsSequence && sequence.empty()) {
    return log.error(
        0, "the file (" + entry.format +
               ") does not tell the types of its residues; give the sequence with --sequence (FASTA or "
               ".seq)");
  }
  if (hasSequenceAlone(entry)) {
    log.warn(0, "the file holds a sequence and no shifts: the table tells orbeln the sequence alone");
  }
  entry.sequenceAlone = format == Format::Fasta || format == Format::XeasySequence || hasSequenceAlone(entry);
  return true;
}

bool convertText(const std::string& file, std::string_view text, const Settings& given,
                 Conversion& conversion, bool& ambiguous, Log& log) {
  Settings settings = given;
  ambiguous = false;
  std::vector<Chain> sequence;
  Entry entry;
  if (!readEntry(file, text, settings, entry, sequence, log)) return false;
  if (entry.sequenceAlone) {
    return convertSequenceAlone(file, entry, settings, conversion, ambiguous, log) &&
           acceptWarnings(settings, log);
  }
  const Choice choice = choose(entry, settings, log);
  ambiguous = choice.ambiguous;
  if (!choice.ok) return false;
  Chain& chain = *entry.findChain(choice.chain);
  describeSource(file, entry, chain, choice.list, conversion);
  markSource(entry, chain, choice.list, conversion);
  if (!prepareChain(entry, chain, sequence, settings, conversion, log)) return false;
  if (settings.listOffset != 0) {
    if (!moveList(entry, chain, settings.listOffset, log)) return false;
    conversion.remarks.push_back("The shifts are moved by " + std::to_string(settings.listOffset) +
                                 " residues against the sequence, as asked for");
  }
  if (!checkSense(entry, chain, choice.list, log)) return false;
  if (!convertRows(entry, chain, choice.list, settings, conversion, log)) return false;
  addHints(entry, chain, conversion);
  return acceptWarnings(settings, log);
}

}  // namespace convert
