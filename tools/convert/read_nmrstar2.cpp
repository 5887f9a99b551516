// NMR-STAR 2.1: tags without category, one molecule per save frame.
#include <algorithm>

#include "convert/names.h"
#include "convert/polymer.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

using star::Document;
using star::Frame;
using star::Loop;

std::vector<Residue> moleculeResidues(const Frame& frame) {
  const Loop* loop = frame.loopWith("_Residue_label");
  const bool usable = loop != nullptr && loop->fault.text.empty();
  if (!usable || loop->column("_Chem_shift_value") >= 0 || loop->column("_Residue_seq_code") < 0) {
    return residuesFromLetters(frame.text("_Mol_residue_sequence"), frame.line);
  }
  std::vector<Residue> residues;
  const int code = loop->column("_Residue_seq_code"), author = loop->column("_Residue_author_seq_code");
  const int label = loop->column("_Residue_label");
  for (std::size_t row = 0; row < loop->rows(); ++row) {
    Residue residue;
    residue.key = loop->text(row, code);
    residue.name = loop->text(row, label);
    residue.author = loop->text(row, author);
    residue.code = residueCode(residue.name);
    residue.line = loop->at(row, label)->line;
    residues.push_back(std::move(residue));
  }
  return residues;
}

void readMolecules(const Document& document, Entry& entry) {
  for (const Frame& frame : document.frames) {
    const bool molecule = frame.has("_Mol_residue_sequence") || frame.has("_Mol_polymer_class");
    if (!molecule) continue;
    Chain chain;
    chain.id = std::to_string(entry.chains.size() + 1);
    chain.description = frame.text("_Name_common");
    chain.entity = frame.name;
    if (!frame.name.empty()) chain.aliases.push_back(frame.name);
    chain.residues = moleculeResidues(frame);
    chain.sequenceGiven = !chain.residues.empty();
    const std::string kind = text::upper(frame.text("_Mol_polymer_class"));
    chain.protein = kind.empty() ? chain.residues.empty() || areAminoAcids(chain.residues)
                                 : kind == "PROTEIN" || kind.starts_with("POLYPEPTIDE");
    chain.idGiven = true;
    if (text::upper(frame.text("_Mol_thiol_state")) == "ALL DISULFIDE BOUND") {
      for (Residue& residue : chain.residues) residue.code = residue.code == 'C' ? 'c' : residue.code;
    }
    entry.chains.push_back(std::move(chain));
  }
}

void readSamples(const Document& document, Entry& entry) {
  for (const Frame& frame : document.frames) {
    const Loop* loop = frame.loopWith("_Isotopic_labeling");
    if (loop == nullptr || !loop->fault.text.empty()) continue;
    const int label = loop->column("_Mol_label"), labelling = loop->column("_Isotopic_labeling");
    for (std::size_t row = 0; row < loop->rows(); ++row) {
      std::string molecule = loop->text(row, label);
      // A leading '$' names a molecule of this entry; buffers and solvents have plain names.
      molecule = molecule.starts_with('$') ? molecule.substr(1) : "";
      entry.labelling.push_back({molecule, loop->text(row, labelling)});
    }
  }
}

/// Several molecules of an entry are told apart by the name given beside the shifts.
std::string chainOfList(const Frame& frame, Entry& entry) {
  const std::string component = frame.text("_Mol_system_component_name");
  for (const Chain& chain : entry.chains) {
    if (component.empty()) break;
    const bool named =
        std::find(chain.aliases.begin(), chain.aliases.end(), component) != chain.aliases.end();
    if (named || chain.id == component || chain.description == component || chain.entity == component) {
      return chain.id;
    }
  }
  if (entry.chains.size() > 1 && !component.empty()) {
    // The component's molecule stands in the molecular system; without it the name itself is the choice.
    Chain chain;
    chain.id = component;
    entry.chains.push_back(chain);
    return component;
  }
  if (entry.chains.empty()) entry.chains.push_back({"1", {}, "", {}, true, false, "", false});
  return entry.chains.front().id;
}

/// Components of the molecular system, in order: component name and molecule label.
void readSystem(const Document& document, Entry& entry) {
  for (const Frame& frame : document.frames) {
    const Loop* loop = frame.loopWith("_Mol_system_component_name");
    if (loop == nullptr || !loop->fault.text.empty()) continue;
    const int name = loop->column("_Mol_system_component_name"), label = loop->column("_Mol_label");
    for (std::size_t row = 0; row < loop->rows(); ++row) {
      std::string molecule = loop->text(row, label);
      if (molecule.starts_with('$')) molecule.erase(0, 1);
      for (Chain& chain : entry.chains) {
        if (chain.entity != molecule || molecule.empty()) continue;
        chain.aliases.push_back(loop->text(row, name));
        chain.description = loop->text(row, name);
      }
    }
  }
}

bool readShiftLoop(const Frame& frame, const Loop& loop, Entry& entry, Log& log) {
  if (!loop.usable(log)) return false;
  const int code = loop.column("_", {"Residue_seq_code", "Residue_ID", "Residue_number"});
  const int label = loop.column("_", {"Residue_label", "Residue_name", "Mol_residue_label"});
  const int atom = loop.column("_Atom_name"), value = loop.column("_Chem_shift_value");
  const int ambiguity = loop.column("_Chem_shift_ambiguity_code");
  const int author = loop.column("_Residue_author_seq_code");
  if (code < 0 || label < 0 || atom < 0) {
    return log.error(
        loop.line,
        "the shift loop lacks one of the columns _Residue_seq_code, _Residue_label and _Atom_name");
  }
  const std::string chain = chainOfList(frame, entry);
  ShiftList list{
      std::to_string(entry.lists.size() + 1), frame.name, frame.text("_Sample_conditions_label"), {}};
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    const star::Value& number = *loop.at(row, value);
    Shift shift;
    shift.line = number.line;
    shift.text = number.text;
    shift.missing = number.missing();
    shift.chain = chain;
    shift.list = list.id;
    shift.residue = loop.text(row, code);
    shift.name = loop.text(row, label);
    shift.atom = loop.text(row, atom);
    shift.author = loop.text(row, author);
    shift.ambiguity = wholeInteger(loop.text(row, ambiguity)).value_or(0);
    entry.shifts.push_back(std::move(shift));
  }
  entry.lists.push_back(std::move(list));
  return true;
}

}  // namespace

bool readNmrStar2(const Document& document, Entry& entry, Log& log) {
  entry.format = "NMR-STAR 2.1";
  readMolecules(document, entry);
  readSystem(document, entry);
  readSamples(document, entry);
  for (const Frame& frame : document.frames) {
    for (const Loop& loop : frame.loops) {
      if (loop.column("_Chem_shift_value") < 0 || loop.column("_Atom_name") < 0) continue;
      if (!readShiftLoop(frame, loop, entry, log)) return false;
    }
    if (entry.title.empty()) entry.title = frame.text("_Entry_title");
  }
  if (entry.title.empty()) entry.title = document.blocks.front();
  leaveOutOtherMolecules(entry);
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
