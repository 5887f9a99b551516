// Sample, conditions and referencing of an NMR-STAR 3.x entry.
#include "convert/star_context.h"

#include <algorithm>

#include "tables/text.h"

namespace convert {

namespace {

using star::Frame;
using star::Loop;

void addFact(Entry& entry, const std::string& fact) {
  if (std::find(entry.facts.begin(), entry.facts.end(), fact) == entry.facts.end())
    entry.facts.push_back(fact);
}

void readConditions(const Frame& frame, Entry& entry) {
  const Loop* loop = frame.loopWith("_Sample_condition_variable.Val");
  if (loop == nullptr || !loop->fault.text.empty()) return;
  const int type = loop->column("_Sample_condition_variable.Type");
  const int value = loop->column("_Sample_condition_variable.Val");
  const int units = loop->column("_Sample_condition_variable.Val_units");
  std::string fact;
  for (std::size_t row = 0; row < loop->rows(); ++row) {
    const std::string name = text::upper(loop->text(row, type)), number = loop->text(row, value);
    if (number.empty()) continue;
    if (name == "PH" || name == "PH*" || name == "PD") fact += ", pH " + number;
    if (name == "TEMPERATURE") fact += ", " + number + " " + loop->text(row, units);
  }
  if (!fact.empty()) addFact(entry, "Conditions (" + frame.name + "): " + fact.substr(2));
}

void readReferencing(const Frame& frame, Entry& entry) {
  const Loop* loop = frame.loopWith("_Chem_shift_ref.Mol_common_name");
  if (loop == nullptr || !loop->fault.text.empty()) return;
  const int atom = loop->column("_Chem_shift_ref.Atom_type");
  const int molecule = loop->column("_Chem_shift_ref.Mol_common_name");
  std::string fact;
  for (std::size_t row = 0; row < loop->rows(); ++row) {
    fact += ", " + loop->text(row, atom) + " to " + loop->text(row, molecule);
  }
  if (!fact.empty()) addFact(entry, "Referencing: " + fact.substr(2));
}

void readLabelling(const Frame& frame, Entry& entry) {
  const Loop* loop = frame.loopWith("_Sample_component.Isotopic_labeling");
  if (loop == nullptr || !loop->fault.text.empty()) return;
  const int labelling = loop->column("_Sample_component.Isotopic_labeling");
  const int entity = loop->column("_Sample_component.Entity_ID");
  for (std::size_t row = 0; row < loop->rows(); ++row) {
    entry.labelling.push_back({loop->text(row, entity), loop->text(row, labelling)});
  }
}

}  // namespace

void readStarContext(const star::Document& document, Entry& entry) {
  entry.format = "NMR-STAR 3";
  for (const Frame& frame : document.frames) {
    const std::string version = frame.text("_Entry.NMR_STAR_version");
    if (!version.empty()) entry.format = "NMR-STAR " + version;
    const std::string id = frame.text("_Entry.ID");
    if (!id.empty()) addFact(entry, "Entry " + id);
    if (entry.title.empty()) entry.title = frame.text("_Entry.Title");
    readConditions(frame, entry);
    readReferencing(frame, entry);
    readLabelling(frame, entry);
  }
  if (entry.title.empty()) entry.title = document.blocks.front();
}

}  // namespace convert
