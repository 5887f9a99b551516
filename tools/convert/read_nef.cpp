// NEF 1.1: molecular system, disulfide links, chemical-shift lists.
#include <algorithm>
#include <unordered_set>

#include "convert/names.h"
#include "convert/readers.h"

namespace convert {

namespace {

using star::Document;
using star::Frame;
using star::Loop;

/// The residues that stand for what is missing where a chain is broken and its numbers leave room.
void fillBreak(Chain& chain, const std::string& next, Log& log, int line) {
  if (chain.residues.empty()) return;
  const auto from = wholeInteger(chain.residues.back().author), to = wholeInteger(next);
  if (!from || !to || *to <= *from + 1 || *to - *from > 1000) {
    log.warn(line, "chain " + chain.id + " is broken before residue " + next +
                       ", but the numbers go on: the two residues are taken as neighbours");
    return;
  }
  for (int number = *from + 1; number < *to; ++number) {
    Residue unknown;
    unknown.key = unknown.author = std::to_string(number);
    unknown.line = line;
    chain.residues.push_back(unknown);
  }
  log.warn(line, "chain " + chain.id + " is broken: residues " + std::to_string(*from + 1) + " to " +
                     std::to_string(*to - 1) + " are unknown (X)");
}

bool readSequenceLoop(const Loop& loop, Entry& entry, Log& log) {
  const int chainColumn = loop.column("_nef_sequence.chain_code");
  const int code = loop.column("_nef_sequence.sequence_code"),
            name = loop.column("_nef_sequence.residue_name");
  const int linking = loop.column("_nef_sequence.linking");
  if (chainColumn < 0 || code < 0 || name < 0) {
    return log.error(
        loop.line,
        "the loop _nef_sequence lacks one of the columns chain_code, sequence_code and residue_name");
  }
  std::unordered_set<std::string> broken;  // chains whose last residue has a gap after it
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    const std::string link = loop.text(row, linking), id = loop.text(row, chainColumn);
    if (link == "dummy" || link == "single") continue;
    Chain* chain = entry.findChain(id);
    if (chain == nullptr) {
      entry.chains.push_back({id, {}, "", {}, true, true, ""});
      chain = &entry.chains.back();
    }
    Residue residue;
    residue.key = residue.author = loop.text(row, code);
    residue.name = loop.text(row, name);
    residue.code = residueCode(residue.name);
    residue.line = loop.at(row, name)->line;
    if (broken.erase(id) > 0) fillBreak(*chain, residue.key, log, residue.line);
    if (link == "break") broken.insert(id);
    chain->residues.push_back(std::move(residue));
  }
  return true;
}

/// SG to SG is a disulfide: both cysteines are oxidized.
void readLinks(const Loop& loop, Entry& entry) {
  const std::string category = "_nef_covalent_links.";
  const int atoms[] = {loop.column(category + "atom_name_1"), loop.column(category + "atom_name_2")};
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    if (loop.text(row, atoms[0]) != "SG" || loop.text(row, atoms[1]) != "SG") continue;
    for (const std::string side : {"1", "2"}) {
      const std::string id = loop.text(row, loop.column(category + "chain_code_" + side));
      const std::string key = loop.text(row, loop.column(category + "sequence_code_" + side));
      Chain* chain = entry.findChain(id);
      if (chain == nullptr) continue;
      for (Residue& residue : chain->residues) {
        if (residue.key == key && residue.code == 'C') residue.code = 'c';
      }
    }
  }
}

bool readShiftLoop(const Frame& frame, const Loop& loop, Entry& entry, Log& log) {
  const std::string category = "_nef_chemical_shift.";
  const int chainColumn = loop.column(category + "chain_code"),
            code = loop.column(category + "sequence_code");
  const int name = loop.column(category + "residue_name"), atom = loop.column(category + "atom_name");
  const int value = loop.column(category + "value");
  if (chainColumn < 0 || code < 0 || name < 0 || atom < 0 || value < 0) {
    return log.error(loop.line,
                     "the loop _nef_chemical_shift lacks one of the columns chain_code, "
                     "sequence_code, residue_name, atom_name and value");
  }
  ShiftList list{std::to_string(entry.lists.size() + 1), frame.name, ""};
  constexpr std::string_view kFrameCategory = "nef_chemical_shift_list_";
  if (list.name.starts_with(kFrameCategory)) list.name.erase(0, kFrameCategory.size());
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    Shift shift;
    shift.chain = loop.text(row, chainColumn);
    shift.residue = loop.text(row, code);
    const Chain* chain = entry.findChain(shift.chain);
    if (chain == nullptr || entry.findResidue(*chain, shift.residue) == nullptr) {
      ++entry.unassigned;
      continue;
    }
    const star::Value& number = *loop.at(row, value);
    shift.line = number.line;
    shift.text = number.text;
    shift.missing = number.missing();
    shift.list = list.id;
    shift.name = loop.text(row, name);
    shift.atom = loop.text(row, atom);
    entry.shifts.push_back(std::move(shift));
  }
  entry.lists.push_back(std::move(list));
  return true;
}

/// A chain without any amino acid is another kind of molecule.
void markProteins(Entry& entry) {
  for (Chain& chain : entry.chains) {
    chain.protein = std::any_of(chain.residues.begin(), chain.residues.end(),
                                [](const Residue& r) { return r.name.size() > 2 && isStandard(r.code); });
  }
}

}  // namespace

bool readNef(const Document& document, Entry& entry, Log& log) {
  entry.format = "NEF";
  for (const Frame& frame : document.frames) {
    const std::string version = frame.text("_nef_nmr_meta_data.format_version");
    if (!version.empty()) entry.format = "NEF " + version;
    const std::string program = frame.text("_nef_nmr_meta_data.program_name");
    if (!program.empty()) entry.facts.push_back("Written by " + program);
    const Loop* sequence = frame.loopWith("_nef_sequence.residue_name");
    if (sequence != nullptr && !readSequenceLoop(*sequence, entry, log)) return false;
  }
  if (entry.chains.empty()) return log.error(0, "the file holds no _nef_sequence loop with residues");
  markProteins(entry);
  for (const Frame& frame : document.frames) {
    const Loop* links = frame.loopWith("_nef_covalent_links.atom_name_1");
    if (links != nullptr) readLinks(*links, entry);
  }
  for (const Frame& frame : document.frames) {
    const Loop* shifts = frame.loopWith("_nef_chemical_shift.atom_name");
    if (shifts != nullptr && !readShiftLoop(frame, *shifts, entry, log)) return false;
  }
  if (entry.lists.empty()) return log.error(0, "the file holds no _nef_chemical_shift loop");
  return true;
}

}  // namespace convert
