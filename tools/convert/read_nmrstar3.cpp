// NMR-STAR 3.x: entities, their copies in the assembly, assigned chemical-shift lists.
#include <algorithm>

#include "convert/names.h"
#include "convert/readers.h"
#include "convert/star_context.h"

namespace convert {

namespace {

using star::Document;
using star::Frame;
using star::Loop;

struct Entity {
  std::string id;
  std::string name;
  std::string strand;
  std::vector<Residue> residues;
  bool protein = true;
};

struct OrderedResidue {
  int order = 0;
  Residue residue;
};

/// Residues of one entity from a sequence loop: number and residue name columns, rows of other entities
/// left out.
std::vector<Residue> residuesFromLoop(const Loop& loop, const std::string& category,
                                      const std::string& number, const std::string& name,
                                      const std::string& entity) {
  const int numberColumn = loop.column(category + number), nameColumn = loop.column(category + name);
  const int entityColumn = loop.column(category + ".Entity_ID");
  const int authorColumn = loop.column(category + ".Auth_seq_ID");
  std::vector<OrderedResidue> rows;
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    const std::string owner = loop.text(row, entityColumn);
    if (!owner.empty() && !entity.empty() && owner != entity) continue;
    OrderedResidue next;
    next.residue.name = loop.text(row, nameColumn);
    next.residue.code = residueCode(next.residue.name);
    next.residue.author = loop.text(row, authorColumn);
    next.residue.line = loop.at(row, nameColumn)->line;
    next.order = wholeInteger(loop.text(row, numberColumn)).value_or(static_cast<int>(row) + 1);
    next.residue.key = std::to_string(next.order);
    rows.push_back(std::move(next));
  }
  std::stable_sort(rows.begin(), rows.end(),
                   [](const OrderedResidue& a, const OrderedResidue& b) { return a.order < b.order; });
  std::vector<Residue> residues;
  for (OrderedResidue& row : rows) residues.push_back(std::move(row.residue));
  return residues;
}

/// The author's numbers, which stand in another loop than the preferred sequence.
void addAuthorNumbers(const Frame& frame, std::vector<Residue>& residues) {
  const Loop* loop = frame.loopWith("_Entity_comp_index.Auth_seq_ID");
  if (loop == nullptr) return;
  const int id = loop->column("_Entity_comp_index.ID"),
            author = loop->column("_Entity_comp_index.Auth_seq_ID");
  for (std::size_t row = 0; row < loop->rows(); ++row) {
    const std::string key = loop->text(row, id), number = loop->text(row, author);
    const auto it =
        std::find_if(residues.begin(), residues.end(), [&](const Residue& r) { return r.key == key; });
    if (it != residues.end()) it->author = number;
  }
}

std::vector<Residue> entityResidues(const Frame& frame, const std::string& id) {
  std::vector<Residue> residues;
  if (const Loop* loop = frame.loopWith("_Entity_poly_seq.Mon_ID")) {
    residues = residuesFromLoop(*loop, "_Entity_poly_seq", ".Num", ".Mon_ID", id);
  }
  const Loop* index = frame.loopWith("_Entity_comp_index.Comp_ID");
  if (residues.empty() && index != nullptr) {
    residues = residuesFromLoop(*index, "_Entity_comp_index", ".ID", ".Comp_ID", id);
  }
  if (residues.empty()) {
    residues = residuesFromLetters(frame.text("_Entity.Polymer_seq_one_letter_code"), frame.line);
  }
  addAuthorNumbers(frame, residues);
  if (frame.text("_Entity.Thiol_state") == "all disulfide bound") {
    for (Residue& residue : residues) residue.code = residue.code == 'C' ? 'c' : residue.code;
  }
  return residues;
}

std::vector<Entity> readEntities(const Document& document) {
  std::vector<Entity> entities;
  for (const Frame& frame : document.frames) {
    const bool loopsOnly = frame.name.empty() && frame.loopWith("_Entity_poly_seq.Mon_ID") != nullptr;
    if (!frame.has("_Entity.ID") && !loopsOnly) continue;
    Entity entity;
    entity.id = frame.text("_Entity.ID");
    if (entity.id.empty()) entity.id = "1";
    entity.name = frame.text("_Entity.Name");
    entity.strand = frame.text("_Entity.Polymer_strand_ID");
    const std::string polymer = frame.text("_Entity.Polymer_type"), type = frame.text("_Entity.Type");
    entity.protein = (polymer.empty() || polymer.find("polypeptide(L)") != std::string::npos) &&
                     (type.empty() || type == "polymer");
    entity.residues = entityResidues(frame, frame.text("_Entity.ID"));
    entities.push_back(std::move(entity));
  }
  return entities;
}

Chain chainOf(const Entity& entity, const std::string& id) {
  Chain chain;
  chain.id = id;
  chain.description = entity.name;
  chain.entity = entity.id;
  chain.residues = entity.residues;
  chain.protein = entity.protein;
  chain.sequenceGiven = !entity.residues.empty();
  return chain;
}

void addAlias(Chain& chain, const std::string& alias) {
  if (alias.empty() || alias == chain.id) return;
  if (std::find(chain.aliases.begin(), chain.aliases.end(), alias) == chain.aliases.end()) {
    chain.aliases.push_back(alias);
  }
}

void addAssembly(const Loop& loop, const std::vector<Entity>& entities, Entry& entry) {
  const int id = loop.column("_Entity_assembly.ID"), entityId = loop.column("_Entity_assembly.Entity_ID");
  const int name = loop.column("_Entity_assembly.Entity_assembly_name");
  const int asym = loop.column("_Entity_assembly.Asym_ID"),
            pdb = loop.column("_Entity_assembly.PDB_chain_ID");
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    const auto entity = std::find_if(entities.begin(), entities.end(),
                                     [&](const Entity& e) { return e.id == loop.text(row, entityId); });
    if (entity == entities.end()) continue;
    Chain chain = chainOf(*entity, loop.text(row, id));
    if (chain.id.empty()) chain.id = std::to_string(row + 1);
    for (const int column : {pdb, asym, name}) addAlias(chain, loop.text(row, column));
    if (const std::string label = loop.text(row, name); !label.empty()) chain.description = label;
    if (entry.findChain(chain.id) == nullptr) entry.chains.push_back(std::move(chain));
  }
}

void readChains(const Document& document, Entry& entry) {
  const std::vector<Entity> entities = readEntities(document);
  for (const Frame& frame : document.frames) {
    const Loop* loop = frame.loopWith("_Entity_assembly.Entity_ID");
    if (loop != nullptr) addAssembly(*loop, entities, entry);
  }
  for (const Entity& entity : entities) {
    const bool known = std::any_of(entry.chains.begin(), entry.chains.end(),
                                   [&](const Chain& chain) { return chain.entity == entity.id; });
    if (known) continue;
    std::string id = entity.id;
    while (entry.findChain(id) != nullptr) id += "'";
    entry.chains.push_back(chainOf(entity, id));
    addAlias(entry.chains.back(), entity.strand);
  }
}

/// Columns of one shift loop.
struct ShiftColumns {
  explicit ShiftColumns(const Loop& loop)
      : assembly(column(loop, "Entity_assembly_ID")),
        entity(column(loop, "Entity_ID")),
        index(column(loop, "Comp_index_ID")),
        sequence(column(loop, "Seq_ID")),
        comp(column(loop, "Comp_ID")),
        atom(column(loop, "Atom_ID")),
        value(column(loop, "Val")),
        ambiguity(column(loop, "Ambiguity_code")),
        author(column(loop, "Auth_seq_ID")),
        asym(column(loop, "Auth_asym_ID")),
        pdbStrand(column(loop, "Original_PDB_strand_ID")),
        list(column(loop, "Assigned_chem_shift_list_ID")) {}

  static int column(const Loop& loop, const std::string& name) {
    return loop.column("_Atom_chem_shift." + name);
  }

  int assembly, entity, index, sequence, comp, atom, value, ambiguity, author, asym, pdbStrand, list;
};

/// Chain of a shift row: its copy in the assembly, else the first copy of its entity, else chain 1.
Chain& chainOfRow(const Loop& loop, const ShiftColumns& columns, std::size_t row, Entry& entry) {
  const std::string assembly = loop.text(row, columns.assembly), entity = loop.text(row, columns.entity);
  if (!assembly.empty()) {
    if (Chain* chain = entry.findChain(assembly)) return *chain;
  }
  for (Chain& chain : entry.chains) {
    if (!entity.empty() && chain.entity == entity) return chain;
  }
  const std::string id = !assembly.empty() ? assembly : !entity.empty() ? entity : "1";
  if (Chain* chain = entry.findChain(id)) return *chain;
  Chain chain;
  chain.id = id;
  chain.entity = entity;
  entry.chains.push_back(std::move(chain));
  return entry.chains.back();
}

bool readShiftRow(const Loop& loop, const ShiftColumns& columns, std::size_t row, const std::string& listId,
                  Entry& entry, Log& log) {
  const star::Value& value = *loop.at(row, columns.value);
  Shift shift;
  shift.line = value.line;
  shift.text = value.text;
  shift.missing = value.missing();
  Chain& chain = chainOfRow(loop, columns, row, entry);
  addAlias(chain, loop.text(row, columns.asym));
  addAlias(chain, loop.text(row, columns.pdbStrand));
  shift.chain = chain.id;
  shift.list = listId;
  shift.residue = loop.text(row, columns.index);
  if (shift.residue.empty()) shift.residue = loop.text(row, columns.sequence);
  const auto index = wholeInteger(shift.residue);
  if (!index) {
    return log.error(shift.line, "the residue number '" + shift.residue +
                                     "' is no integer; are the columns in another order?");
  }
  shift.residue = std::to_string(*index);
  shift.name = loop.text(row, columns.comp);
  shift.atom = loop.text(row, columns.atom);
  shift.author = loop.text(row, columns.author);
  shift.ambiguity = wholeInteger(loop.text(row, columns.ambiguity)).value_or(0);
  entry.shifts.push_back(std::move(shift));
  return true;
}

ShiftList& listWithId(Entry& entry, const std::string& id) {
  const auto it =
      std::find_if(entry.lists.begin(), entry.lists.end(), [&](const ShiftList& l) { return l.id == id; });
  if (it != entry.lists.end()) return *it;
  entry.lists.push_back({id, "", ""});
  return entry.lists.back();
}

bool readShiftLoop(const Frame& frame, const Loop& loop, Entry& entry, Log& log) {
  const ShiftColumns columns(loop);
  if (columns.atom < 0 || columns.value < 0 || columns.comp < 0 ||
      (columns.index < 0 && columns.sequence < 0)) {
    return log.error(loop.line,
                     "the shift loop lacks one of the columns Comp_index_ID, Comp_ID, Atom_ID and Val");
  }
  const std::string frameId = frame.text("_Assigned_chem_shift_list.ID");
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    std::string id = frameId.empty() ? loop.text(row, columns.list) : frameId;
    if (id.empty()) id = "1";
    ShiftList& list = listWithId(entry, id);
    if (list.name.empty()) list.name = frame.name;
    if (list.details.empty()) {
      list.details = frame.text("_Assigned_chem_shift_list.Sample_condition_list_label");
      const std::string details = frame.text("_Assigned_chem_shift_list.Details");
      if (!details.empty()) list.details += (list.details.empty() ? "" : ", ") + details;
    }
    if (!readShiftRow(loop, columns, row, id, entry, log)) return false;
  }
  return true;
}

}  // namespace

bool readNmrStar3(const Document& document, Entry& entry, Log& log) {
  readChains(document, entry);
  readStarContext(document, entry);
  bool found = false;
  for (const Frame& frame : document.frames) {
    for (const Loop& loop : frame.loops) {
      if (loop.column("_Atom_chem_shift.Val") < 0 && loop.column("_Atom_chem_shift.Atom_ID") < 0) continue;
      found = true;
      if (!readShiftLoop(frame, loop, entry, log)) return false;
    }
  }
  if (!found) return log.error(0, "the file holds no _Atom_chem_shift loop");
  return sequenceFromShifts(entry, log);
}

}  // namespace convert
