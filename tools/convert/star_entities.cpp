// Entities and assembly of an NMR-STAR 3.x data block: which molecules there are and how often.
#include "convert/star_entities.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>

#include "convert/names.h"
#include "convert/polymer.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

using star::Frame;
using star::Loop;

struct OrderedResidue {
  int order = 0;
  Residue residue;
};

/// What the block says of one entity, in whichever loops and tags.
struct Description {
  Entity entity;
  std::string type, polymer, letters, thiol;
  int line = 0;
  std::vector<OrderedResidue> sequence, index;           // _Entity_poly_seq, _Entity_comp_index
  std::unordered_map<std::string, std::string> authors;  // by residue key
};

class EntityReader {
 public:
  explicit EntityReader(Log& log) : log_(log) {}

  bool read(const Frame& frame) {
    constexpr const char* kTags[] = {"_Entity.ID", "_Entity.Polymer_seq_one_letter_code", "_Entity.Type",
                                     "_Entity.Sf_category"};
    const bool described =
        std::any_of(std::begin(kTags), std::end(kTags), [&](const char* tag) { return frame.has(tag); });
    const std::string id = frame.text("_Entity.ID");
    if (described) {
      describe(
          descriptionOf(id), [&](const char* tag) { return frame.text(tag); }, frame.line);
    }
    for (const Loop& loop : frame.loops) {
      if (loop.column("_Entity.ID") >= 0 && !readEntityLoop(loop)) return false;
      if (loop.column("_Entity_poly_seq.Mon_ID") >= 0 && !readSequence(loop, id)) return false;
      if (loop.column("_Entity_comp_index.Comp_ID") >= 0 && !readIndex(loop, id)) return false;
    }
    return true;
  }

  std::vector<Entity> finish() {
    std::vector<Entity> entities;
    for (Description& description : descriptions_) entities.push_back(finished(description));
    return entities;
  }

 private:
  Description& descriptionOf(const std::string& id) {
    const std::string key = id.empty() ? "1" : id;
    const auto [it, added] = byId_.emplace(key, descriptions_.size());
    if (added) {
      descriptions_.emplace_back();
      descriptions_.back().entity.id = key;
    }
    return descriptions_[it->second];
  }

  template <class Text>
  static void describe(Description& description, Text text, int line) {
    const auto set = [&](std::string& member, const char* tag) {
      if (member.empty()) member = text(tag);
    };
    set(description.entity.name, "_Entity.Name");
    set(description.entity.strand, "_Entity.Polymer_strand_ID");
    set(description.type, "_Entity.Type");
    set(description.polymer, "_Entity.Polymer_type");
    set(description.letters, "_Entity.Polymer_seq_one_letter_code");
    set(description.letters, "_Entity.Polymer_seq_one_letter_code_can");
    set(description.thiol, "_Entity.Thiol_state");
    if (description.line == 0) description.line = line;
  }

  bool readEntityLoop(const Loop& loop) {
    if (!loop.usable(log_)) return false;
    const int id = loop.column("_Entity.ID");
    for (std::size_t row = 0; row < loop.rows(); ++row) {
      describe(
          descriptionOf(loop.text(row, id)),
          [&](const char* tag) { return loop.text(row, loop.column(tag)); }, loop.at(row, id)->line);
    }
    return true;
  }

  bool readSequence(const Loop& loop, const std::string& frameId) {
    if (!loop.usable(log_)) return false;
    const std::string category = "_Entity_poly_seq.";
    const int number = loop.column(category, {"Num"}), name = loop.column(category, {"Mon_ID"});
    const int key = loop.column(category, {"Comp_index_ID", "Num"});
    const int owner = loop.column(category, {"Entity_ID"});
    for (std::size_t row = 0; row < loop.rows(); ++row) {
      Description& description = ownerOf(loop, row, owner, frameId);
      description.sequence.push_back(residueOf(loop, row, number, key, name));
    }
    return true;
  }

  bool readIndex(const Loop& loop, const std::string& frameId) {
    if (!loop.usable(log_)) return false;
    const std::string category = "_Entity_comp_index.";
    const int id = loop.column(category, {"ID", "Num"}), name = loop.column(category, {"Comp_ID"});
    const int author = loop.column(category, {"Auth_seq_ID", "Author_seq_code"});
    const int owner = loop.column(category, {"Entity_ID"});
    for (std::size_t row = 0; row < loop.rows(); ++row) {
      Description& description = ownerOf(loop, row, owner, frameId);
      OrderedResidue next = residueOf(loop, row, id, id, name);
      next.residue.author = loop.text(row, author);
      if (!next.residue.author.empty()) description.authors[next.residue.key] = next.residue.author;
      description.index.push_back(std::move(next));
    }
    return true;
  }

  Description& ownerOf(const Loop& loop, std::size_t row, int column, const std::string& frameId) {
    // The frame a row stands in says more than a number that was copied with it.
    return descriptionOf(frameId.empty() ? loop.text(row, column) : frameId);
  }

  static OrderedResidue residueOf(const Loop& loop, std::size_t row, int number, int key, int name) {
    OrderedResidue next;
    next.residue.name = loop.text(row, name);
    next.residue.code = residueCode(next.residue.name);
    next.residue.line = loop.at(row, name)->line;
    next.order = wholeInteger(loop.text(row, number)).value_or(static_cast<int>(row) + 1);
    next.residue.key = std::to_string(wholeInteger(loop.text(row, key)).value_or(next.order));
    return next;
  }

  /// In order; of two residues at one place (a mixture) the first.
  static std::vector<Residue> inOrder(std::vector<OrderedResidue>& rows) {
    std::stable_sort(rows.begin(), rows.end(),
                     [](const OrderedResidue& a, const OrderedResidue& b) { return a.order < b.order; });
    std::vector<Residue> residues;
    std::unordered_set<std::string> seen;
    for (OrderedResidue& row : rows) {
      if (seen.insert(row.residue.key).second) residues.push_back(std::move(row.residue));
    }
    return residues;
  }

  static Entity finished(Description& description) {
    Entity& entity = description.entity;
    entity.residues = inOrder(description.sequence.empty() ? description.index : description.sequence);
    if (entity.residues.empty()) entity.residues = residuesFromLetters(description.letters, description.line);
    for (Residue& residue : entity.residues) {
      const auto it = description.authors.find(residue.key);
      if (it != description.authors.end()) residue.author = it->second;
      if (description.thiol == "all disulfide bound" && residue.code == 'C') residue.code = 'c';
    }
    const std::string type = text::upper(description.type), polymer = text::upper(description.polymer);
    const bool polymerType = type.empty() || type == "POLYMER" || type == "POLYPEPTIDE(L)";
    entity.protein = polymerType && (polymer.empty() ? type == "POLYPEPTIDE(L)" || entity.residues.empty() ||
                                                           areAminoAcids(entity.residues)
                                                     : polymer.find("POLYPEPTIDE(L)") != std::string::npos);
    return std::move(entity);
  }

  Log& log_;
  std::vector<Description> descriptions_;
  std::map<std::string, std::size_t> byId_;
};

bool readAssembly(const Loop& loop, std::vector<AssemblyMember>& members, Log& log) {
  if (!loop.usable(log)) return false;
  const std::string category = "_Entity_assembly.";
  const int id = loop.column(category, {"ID"}), entity = loop.column(category, {"Entity_ID"});
  const int name = loop.column(category, {"Entity_assembly_name"});
  const int pdb = loop.column(category, {"PDB_chain_ID"}), asym = loop.column(category, {"Asym_ID"});
  for (std::size_t row = 0; row < loop.rows(); ++row) {
    AssemblyMember member{loop.text(row, id), loop.text(row, entity), loop.text(row, name), {}};
    if (member.id.empty()) member.id = std::to_string(row + 1);
    for (const int column : {pdb, asym}) {
      if (const std::string letter = loop.text(row, column); !letter.empty())
        member.letters.push_back(letter);
    }
    members.push_back(std::move(member));
  }
  return true;
}

}  // namespace

const Entity* Molecules::find(const std::string& id) const {
  const auto it = std::find_if(entities.begin(), entities.end(), [&](const Entity& e) { return e.id == id; });
  return it == entities.end() ? nullptr : &*it;
}

bool readMolecules(const star::Document& document, std::size_t block, Molecules& molecules, Log& log) {
  EntityReader reader(log);
  for (const Frame& frame : document.frames) {
    if (frame.block != block) continue;
    if (!reader.read(frame)) return false;
    const Loop* assembly = frame.loopWith("_Entity_assembly.Entity_ID");
    if (assembly != nullptr && !readAssembly(*assembly, molecules.assembly, log)) return false;
  }
  molecules.entities = reader.finish();
  return true;
}

Chain chainOf(const Entity& entity, const std::string& id) {
  Chain chain;
  chain.id = id;
  chain.description = entity.name;
  chain.entity = entity.id;
  chain.residues = entity.residues;
  chain.protein = entity.protein;
  chain.sequenceGiven = !entity.residues.empty();
  chain.idGiven = true;
  return chain;
}

}  // namespace convert
