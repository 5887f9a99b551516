// NMR-STAR 3.x: assigned chemical-shift lists, each known by its save frame.
#include <algorithm>
#include <map>

#include "convert/names.h"
#include "convert/polymer.h"
#include "convert/readers.h"
#include "convert/star_context.h"
#include "convert/star_entities.h"
#include "convert/star_rows.h"

namespace convert {

namespace {

using star::Document;
using star::Frame;
using star::Loop;

/// Columns of one shift loop, by the names of versions 3.0 to 3.2.
struct ShiftColumns {
  ShiftColumns(const Loop& loop, const std::string& category)
      : assembly(loop.column(category, {"Entity_assembly_ID", "Mol_sys_comp_ID"})),
        entity(loop.column(category, {"Entity_ID"})),
        index(loop.column(category, {"Comp_index_ID", "Chem_comp_index_ID"})),
        sequence(loop.column(category, {"Seq_ID", "Chem_comp_seq_num"})),
        comp(loop.column(category, {"Comp_ID", "Chem_comp_ID", "Auth_comp_ID"})),
        atom(loop.column(category, {"Atom_ID", "Auth_atom_ID"})),
        value(loop.column(category, {"Val", "Chem_shift_val"})),
        ambiguity(loop.column(category, {"Ambiguity_code", "Chem_shift_ambiguity_code"})),
        author(loop.column(category, {"Auth_seq_ID", "Author_seq_code"})),
        asym(loop.column(category, {"Auth_asym_ID"})),
        strand(loop.column(category, {"Original_PDB_strand_ID", "PDB_strand_ID"})),
        list(loop.column(category, {"Assigned_chem_shift_list_ID", "Assigned_chemical_shifts_ID",
                                    "Spectral_peak_list_ID"})) {}

  int assembly, entity, index, sequence, comp, atom, value, ambiguity, author, asym, strand, list;
};

/// The shift lists while they are read: one for each save frame, or for each number outside of frames.
class Lists {
 public:
  explicit Lists(Entry& entry) : entry_(entry) {}

  /// Index of the list in Entry::lists.
  std::size_t of(const Frame& frame, std::size_t frameIndex, const std::string& rowNumber) {
    const bool bare = frame.name.empty() && !frame.has("_Assigned_chem_shift_list.ID");
    const std::string number = frame.text("_Assigned_chem_shift_list.ID");
    const auto [it, added] =
        known_.emplace(std::to_string(frameIndex) + "/" + (bare ? rowNumber : ""), numbers_.size());
    if (added) {
      ShiftList list{"", frame.name, "", {}};
      list.details = frame.text("_Assigned_chem_shift_list.Sample_condition_list_label");
      const std::string details = frame.text("_Assigned_chem_shift_list.Details");
      if (!details.empty()) list.details += (list.details.empty() ? "" : ", ") + details;
      entry_.lists.push_back(std::move(list));
      numbers_.push_back(!number.empty() ? number : rowNumber);
      blocks_.push_back(frame.block);
    }
    return it->second;
  }

  /// A number that one list alone has is its name for the user; otherwise the save frame is, with its data
  /// block where two of these are called alike.
  void name(const std::vector<std::string>& blocks) {
    std::map<std::string, std::size_t> byNumber, byName;
    for (std::size_t i = 0; i < numbers_.size(); ++i) {
      if (numbers_[i].empty()) numbers_[i] = "1";
      ++byNumber[numbers_[i]];
      ++byName[entry_.lists[i].name];
    }
    for (std::size_t i = 0; i < numbers_.size(); ++i) {
      ShiftList& list = entry_.lists[i];
      const bool ownName = !list.name.empty() && byName[list.name] == 1;
      const std::string& block = blocks[blocks_[i]];
      list.id = byNumber[numbers_[i]] == 1 ? numbers_[i]
                : ownName                  ? list.name
                : block.empty()            ? numbers_[i] + "." + std::to_string(i + 1)
                                           : block + ":" + (list.name.empty() ? numbers_[i] : list.name);
      // Frames repeated in one block: their place tells them apart.
      for (std::size_t j = 0; j < i; ++j) {
        if (entry_.lists[j].id == list.id) list.id += "." + std::to_string(i + 1);
      }
      list.aliases.push_back(numbers_[i]);
    }
  }

 private:
  Entry& entry_;
  std::map<std::string, std::size_t> known_;
  std::vector<std::string> numbers_;
  std::vector<std::size_t> blocks_;
};

bool columnsComplete(const Loop& loop, const ShiftColumns& columns, Log& log) {
  std::string missing;
  const auto need = [&](bool present, const char* name) {
    if (!present) missing += (missing.empty() ? "" : ", ") + std::string(name);
  };
  need(columns.index >= 0 || columns.sequence >= 0 || columns.author >= 0, "Comp_index_ID");
  need(columns.comp >= 0, "Comp_ID");
  need(columns.atom >= 0, "Atom_ID");
  need(columns.value >= 0, "Val");
  return missing.empty() || log.error(loop.line, "the shift loop lacks " + missing +
                                                     "; it needs the columns Comp_index_ID, Comp_ID, "
                                                     "Atom_ID and Val");
}

StarRow readRow(const Loop& loop, const ShiftColumns& columns, std::size_t row) {
  const star::Value& value = *loop.at(row, columns.value);
  StarRow read;
  read.shift.line = value.line;
  read.shift.text = value.text;
  read.shift.missing = value.missing();
  read.shift.name = loop.text(row, columns.comp);
  read.shift.atom = loop.text(row, columns.atom);
  read.shift.author = loop.text(row, columns.author);
  read.shift.ambiguity = wholeInteger(loop.text(row, columns.ambiguity)).value_or(0);
  read.assembly = loop.text(row, columns.assembly);
  read.entity = loop.text(row, columns.entity);
  read.letter = loop.text(row, columns.asym);
  if (read.letter.empty()) read.letter = loop.text(row, columns.strand);
  read.index = loop.text(row, columns.index);
  read.sequence = loop.text(row, columns.sequence);
  return read;
}

/// Reads every loop of that category; shift.list holds the index of the list until it has a name.
bool readLoops(const Document& document, const std::string& category, Lists& lists,
               std::vector<StarRow>& rows, Log& log) {
  for (std::size_t i = 0; i < document.frames.size(); ++i) {
    const Frame& frame = document.frames[i];
    for (const Loop& loop : frame.loops) {
      const ShiftColumns columns(loop, category);
      if (columns.value < 0 && columns.atom < 0) continue;
      if (!loop.usable(log) || !columnsComplete(loop, columns, log)) return false;
      for (std::size_t row = 0; row < loop.rows(); ++row) {
        StarRow read = readRow(loop, columns, row);
        read.block = frame.block;
        read.shift.list = std::to_string(lists.of(frame, i, loop.text(row, columns.list)));
        rows.push_back(std::move(read));
      }
    }
  }
  return true;
}

}  // namespace

bool readNmrStar3(const Document& document, Entry& entry, Log& log) {
  readStarContext(document, entry);
  std::vector<Molecules> molecules(document.blocks.size());
  for (std::size_t block = 0; block < molecules.size(); ++block) {
    if (!readMolecules(document, block, molecules[block], log)) return false;
  }
  Lists lists(entry);
  std::vector<StarRow> rows;
  if (!readLoops(document, "_Atom_chem_shift.", lists, rows, log)) return false;
  if (rows.empty() && !readLoops(document, "_Assigned_peak_chem_shift.", lists, rows, log)) return false;
  lists.name(document.blocks);
  for (StarRow& row : rows) row.shift.list = entry.lists[std::stoul(row.shift.list)].id;
  if (!placeRows(rows, document.blocks, molecules, entry, log)) return false;
  if (!rows.empty() && document.loopWith("_Atom_chem_shift.Atom_ID") == nullptr) {
    log.warn(entry.shifts.front().line, "there is no shift list; the assignments of the peak list are taken");
  }
  leaveOutOtherMolecules(entry);
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
