// NEF 0.2 to 1.1: molecular system, disulfide links, chemical-shift lists.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "convert/names.h"
#include "convert/polymer.h"
#include "convert/readers.h"

namespace convert {

namespace {

using star::Document;
using star::Frame;
using star::Loop;

/// Residues of every chain by chain and sequence code.
class ResidueIndex {
 public:
  static std::string key(const std::string& chain, const std::string& code) { return chain + '\n' + code; }

  explicit ResidueIndex(Entry& entry) {
    for (Chain& chain : entry.chains) {
      for (Residue& residue : chain.residues) residues_.emplace(key(chain.id, residue.key), &residue);
    }
  }
  Residue* find(const std::string& chain, const std::string& code) const {
    const auto it = residues_.find(key(chain, code));
    return it == residues_.end() ? nullptr : it->second;
  }

 private:
  std::unordered_map<std::string, Residue*> residues_;
};

/// Chain breaks at which the numbers go on, so that nothing shows that residues are missing there.
struct HiddenBreaks {
  std::size_t count = 0;
  int line = 0;
  std::string example;

  void add(const Chain& chain, const Residue& next) {
    const auto from = wholeInteger(chain.residues.back().author), to = wholeInteger(next.author);
    if (from && to && *to > *from + 1) return;  // the gap in the numbers shows it
    if (count++ > 0) return;
    line = next.line;
    example = "chain " + chain.id + " is broken before residue " + next.author;
  }
};

class SequenceReader {
 public:
  SequenceReader(Entry& entry, Log& log) : entry_(entry), log_(log) {}

  bool read(const Loop& loop) {
    if (!loop.usable(log_)) return false;
    const std::string category = "_nef_sequence.";
    const int chainColumn = loop.column(category, {"chain_code"});
    const int code = loop.column(category, {"sequence_code"});
    const int name = loop.column(category, {"residue_name", "residue_type"});
    const int linking = loop.column(category, {"linking"});
    if (chainColumn < 0 || code < 0 || name < 0) {
      return log_.error(
          loop.line,
          "the loop _nef_sequence lacks one of the columns chain_code, sequence_code and residue_name");
    }
    for (std::size_t row = 0; row < loop.rows(); ++row) {
      Residue residue;
      residue.key = residue.author = loop.text(row, code);
      residue.name = loop.text(row, name);
      residue.code = residueCode(residue.name);
      residue.line = loop.at(row, name)->line;
      add(loop.text(row, chainColumn), std::move(residue), loop.text(row, linking));
    }
    return true;
  }

  /// Sequence codes of ligands, water and ions, by ResidueIndex::key().
  const std::unordered_map<std::string, std::string>& others() const { return others_; }

  void finish() {
    if (breaks_.count == 0) return;
    log_.warn(
        breaks_.line,
        breaks_.example + ", but the numbers go on" +
            (breaks_.count > 1 ? " (and at " + std::to_string(breaks_.count - 1) + " more places)" : "") +
            ": the two residues are taken as neighbours");
  }

 private:
  void add(const std::string& id, Residue residue, const std::string& linking) {
    const bool alone = linking == "dummy" || linking == "single" ||
                       (linking == "nonlinear" && !isAminoAcidName(residue.name));
    if (alone) {
      others_.emplace(ResidueIndex::key(id, residue.key), residue.name);
      return;
    }
    const auto [it, added] = chains_.emplace(id, entry_.chains.size());
    if (added) {
      Chain chain;
      chain.id = id.empty() ? "A" : id;
      chain.sequenceGiven = true;
      chain.idGiven = !id.empty();
      entry_.chains.push_back(std::move(chain));
    }
    Chain& chain = entry_.chains[it->second];
    if (broken_.erase(id) > 0 && !chain.residues.empty()) breaks_.add(chain, residue);
    if (linking == "break") broken_.insert(id);
    chain.residues.push_back(std::move(residue));
  }

  Entry& entry_;
  Log& log_;
  std::unordered_map<std::string, std::size_t> chains_;
  std::unordered_map<std::string, std::string> others_;
  std::unordered_set<std::string> broken_;  ///< chains whose last residue has a gap after it
  HiddenBreaks breaks_;
};

/// SG to SG is a disulfide: both cysteines are oxidized.
bool readLinks(const Loop& loop, const ResidueIndex& index, Log& log) {
  if (!loop.usable(log)) return false;
  const std::string category = "_nef_covalent_links.";
  const int atoms[] = {loop.column(category + "atom_name_1"), loop.column(category + "atom_name_2")};
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    if (loop.text(row, atoms[0]) != "SG" || loop.text(row, atoms[1]) != "SG") continue;
    for (const std::string side : {"1", "2"}) {
      Residue* residue = index.find(loop.text(row, loop.column(category + "chain_code_" + side)),
                                    loop.text(row, loop.column(category + "sequence_code_" + side)));
      if (residue != nullptr && residue->code == 'C') residue->code = 'c';
    }
  }
  return true;
}

/// A resonance that is not assigned to a residue: "@12", "#3", a residue only relative to another ("12-1").
bool isUnassigned(const std::string& chain, const std::string& code) {
  if (code.empty() || code[0] == '@' || code[0] == '#' || chain.starts_with('@') || chain.starts_with('#')) {
    return true;
  }
  const std::size_t sign = code.find_last_of("+-");
  return sign != std::string::npos && sign > 0;
}

struct ShiftSource {
  const ResidueIndex& index;
  const std::unordered_map<std::string, std::string>& others;
  bool sequenceGiven = true;
};

class ShiftReader {
 public:
  ShiftReader(const ShiftSource& source, Entry& entry, Log& log)
      : source_(source), entry_(entry), log_(log) {}

  bool read(const Frame& frame, const Loop& loop) {
    if (!loop.usable(log_)) return false;
    const std::string category = "_nef_chemical_shift.";
    const int chainColumn = loop.column(category, {"chain_code"}),
              code = loop.column(category, {"sequence_code"});
    const int name = loop.column(category, {"residue_name", "residue_type"});
    const int atom = loop.column(category, {"atom_name"}), value = loop.column(category, {"value"});
    if (code < 0 || name < 0 || atom < 0 || value < 0) {
      return log_.error(loop.line,
                        "the loop _nef_chemical_shift lacks one of the columns chain_code, "
                        "sequence_code, residue_name, atom_name and value");
    }
    ShiftList list{std::to_string(entry_.lists.size() + 1), frame.name, "", {}};
    constexpr std::string_view kFrameCategory = "nef_chemical_shift_list_";
    if (list.name.starts_with(kFrameCategory)) {
      list.aliases.push_back(list.name);
      list.name.erase(0, kFrameCategory.size());
    }
    for (std::size_t row = 0; row < loop.rows(); ++row) {
      const star::Value& number = *loop.at(row, value);
      Shift shift;
      shift.chain = loop.text(row, chainColumn);
      shift.residue = loop.text(row, code);
      shift.line = number.line;
      shift.text = number.text;
      shift.missing = number.missing();
      shift.list = list.id;
      shift.name = loop.text(row, name);
      shift.atom = loop.text(row, atom);
      add(std::move(shift));
    }
    entry_.lists.push_back(std::move(list));
    return true;
  }

  void finish() {
    if (lost_ == 0) return;
    log_.warn(lostLine_, std::to_string(lost_) + " shifts are of residues that the sequence lacks: " +
                             lostName_ + (lost_ > 1 ? " and others" : "") + "; they are skipped");
  }

 private:
  void add(Shift shift) {
    const bool unassigned = isUnassigned(shift.chain, shift.residue);
    if (shift.chain.empty()) shift.chain = "A";
    if (!source_.sequenceGiven) {
      if (unassigned) {
        ++entry_.unassigned;
        return;
      }
      if (chains_.insert(shift.chain).second) {
        Chain chain;
        chain.id = shift.chain;
        chain.idGiven = true;
        entry_.chains.push_back(std::move(chain));
      }
    } else if (source_.index.find(shift.chain, shift.residue) == nullptr) {
      const auto other = source_.others.find(ResidueIndex::key(shift.chain, shift.residue));
      if (other != source_.others.end()) {
        entry_.leaveOut(other->second);
      } else {
        ++entry_.unassigned;
        if (!unassigned && lost_++ == 0) {
          lostLine_ = shift.line;
          lostName_ = shift.chain + " " + shift.residue + " " + shift.name;
        }
      }
      return;
    }
    entry_.shifts.push_back(std::move(shift));
  }

  const ShiftSource& source_;
  Entry& entry_;
  Log& log_;
  std::unordered_set<std::string> chains_;
  std::size_t lost_ = 0;
  int lostLine_ = 0;
  std::string lostName_;
};

/// A chain without any amino acid is another kind of molecule.
void markProteins(Entry& entry) {
  for (Chain& chain : entry.chains) {
    chain.protein = std::any_of(chain.residues.begin(), chain.residues.end(),
                                [](const Residue& r) { return isAminoAcidName(r.name); });
  }
}

bool readShifts(const Document& document, const SequenceReader& sequence, Entry& entry, Log& log) {
  const ResidueIndex index(entry);
  for (const Frame& frame : document.frames) {
    const Loop* links = frame.loopWith("_nef_covalent_links.atom_name_1");
    if (links != nullptr && !readLinks(*links, index, log)) return false;
  }
  const ShiftSource source{index, sequence.others(), !entry.chains.empty()};
  ShiftReader reader(source, entry, log);
  for (const Frame& frame : document.frames) {
    for (const Loop& loop : frame.loops) {
      if (loop.column("_nef_chemical_shift.atom_name") >= 0 && !reader.read(frame, loop)) return false;
    }
  }
  reader.finish();
  if (source.sequenceGiven) return true;
  leaveOutOtherMolecules(entry);
  return sequenceFromShifts(entry, log);
}

}  // namespace

bool readNef(const Document& document, Entry& entry, Log& log) {
  entry.format = "NEF";
  if (!document.blocks.front().empty()) entry.title = document.blocks.front();
  SequenceReader sequence(entry, log);
  for (const Frame& frame : document.frames) {
    const std::string version = frame.text("_nef_nmr_meta_data.format_version");
    if (!version.empty()) entry.format = "NEF " + version;
    const std::string program = frame.text("_nef_nmr_meta_data.program_name");
    if (!program.empty()) entry.facts.push_back("Written by " + program);
    for (const Loop& loop : frame.loops) {
      if (loop.column("_nef_sequence.sequence_code") >= 0 && !sequence.read(loop)) return false;
    }
  }
  sequence.finish();
  markProteins(entry);
  return readShifts(document, sequence, entry, log);
}

}  // namespace convert
