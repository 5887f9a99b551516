// The rows of NMR-STAR 3.x shift loops, and the chains they are about.
#include "convert/star_rows.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>

#include "convert/names.h"
#include "convert/polymer.h"

namespace convert {

namespace {

constexpr std::size_t kMostCopies = 60;  // more numbers than that in a column name no subunits

void addAlias(Chain& chain, const std::string& alias) {
  if (alias.empty() || alias == chain.id) return;
  if (std::find(chain.aliases.begin(), chain.aliases.end(), alias) == chain.aliases.end()) {
    chain.aliases.push_back(alias);
  }
}

bool sameSequence(const std::vector<Residue>& a, const std::vector<Residue>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const Residue& x, const Residue& y) { return x.key == y.key && x.name == y.name; });
}

/// Adds a chain under a free identifier; a chain that an earlier data block has described alike is kept.
std::string addChain(Entry& entry, Chain chain, const std::string& block) {
  const Chain* known = entry.findChain(chain.id);
  if (known != nullptr && sameSequence(known->residues, chain.residues) && known->protein == chain.protein) {
    return known->id;
  }
  if (known != nullptr) {
    const std::string plain = chain.id;
    chain.id = (block.empty() ? "other" : block) + ":" + plain;
    while (entry.findChain(chain.id) != nullptr) chain.id += "'";
  }
  entry.chains.push_back(std::move(chain));
  return entry.chains.back().id;
}

/// Chains of the rows of one data block whose molecules are described.
class DescribedChains {
 public:
  DescribedChains(const Molecules& molecules, std::string block, Entry& entry)
      : molecules_(molecules), block_(std::move(block)), entry_(entry) {
    for (const AssemblyMember& member : molecules.assembly) {
      const Entity* entity = molecules.find(member.entity);
      if (entity == nullptr && molecules.entities.size() == 1) entity = &molecules.entities.front();
      if (entity == nullptr || members_.count(member.id) > 0) continue;
      Chain chain = chainOf(*entity, member.id);
      for (const std::string& letter : member.letters) {
        addAlias(chain, letter);
        letters_.emplace(letter, Place{});
      }
      addAlias(chain, member.name);
      if (!member.name.empty()) chain.description = member.name;
      const Place place{addChain(entry_, std::move(chain), block_), entity->id};
      members_.emplace(member.id, place);
      firstCopy_.emplace(entity->id, place.chain);
      for (const std::string& letter : member.letters) nameLetter(letter, place);
    }
  }

  std::string chainFor(const StarRow& row) {
    const bool known = molecules_.find(row.entity) != nullptr;
    const auto member = members_.find(row.assembly);
    if (member != members_.end() && (!known || member->second.entity == row.entity)) {
      return member->second.chain;
    }
    if (row.assembly.empty() && !row.letter.empty()) {
      const auto letter = letters_.find(row.letter);
      if (letter != letters_.end() && !letter->second.chain.empty() &&
          (!known || letter->second.entity == row.entity)) {
        return letter->second.chain;
      }
    }
    const Entity* entity = known ? molecules_.find(row.entity) : likelyEntity(row);
    return copyOf(*entity, !row.assembly.empty() ? row.assembly : known ? "" : row.letter);
  }

  /// Chains of molecules that no row is about, so that the user sees them named.
  void addTheRest() {
    for (const Entity& entity : molecules_.entities) {
      if (firstCopy_.count(entity.id) == 0) copyOf(entity, "");
    }
  }

 private:
  struct Place {
    std::string chain, entity;
  };

  void nameLetter(const std::string& letter, const Place& place) {
    Place& named = letters_[letter];
    if (named.chain.empty()) named = place;
  }

  /// The molecule of a row that does not say: the one that has such a residue there, else the protein.
  const Entity* likelyEntity(const StarRow& row) const {
    const Entity* protein = nullptr;
    for (const Entity& entity : molecules_.entities) {
      if (entity.protein && protein == nullptr) protein = &entity;
      if (!entity.protein && entity.residues.size() == 1 && !row.shift.name.empty() &&
          entity.residues.front().name == row.shift.name) {
        return &entity;
      }
    }
    return protein != nullptr ? protein : &molecules_.entities.front();
  }

  /// Rows that number their subunits without a list of them: each number is a copy of its molecule.
  std::string copyOf(const Entity& entity, const std::string& copy) {
    if (copy.empty() && firstCopy_.count(entity.id) > 0) return firstCopy_.at(entity.id);
    const auto [it, added] = copies_.emplace(entity.id + '\n' + copy, "");
    if (!added) return it->second;
    std::string id = copy.empty() ? entity.id : copy;
    const Chain* taken = entry_.findChain(id);
    if (taken != nullptr && taken->entity != entity.id) id += "/" + entity.id;
    Chain chain = chainOf(entity, id);
    addAlias(chain, entity.strand);
    it->second = addChain(entry_, std::move(chain), block_);
    firstCopy_.emplace(entity.id, it->second);
    return it->second;
  }

  const Molecules& molecules_;
  std::string block_;
  Entry& entry_;
  std::map<std::string, Place> members_, letters_;
  std::map<std::string, std::string> copies_, firstCopy_;
};

/// Chains of rows that no molecule is described for: told apart by their letter, else by the number of the
/// subunit, else by that of the molecule.
class BareChains {
 public:
  BareChains(const std::vector<StarRow>& rows, const std::vector<bool>& bare) {
    // One letter for several subunits shows as one atom standing under two subunit numbers.
    std::unordered_map<std::string, const std::string*> subunit;
    for (const StarRow& row : rows) {
      if (!bare[row.block] || row.letter.empty() || row.assembly.empty()) continue;
      const auto [it, added] =
          subunit.emplace(row.shift.list + '\n' + row.letter + '\n' + row.index + '\n' + row.sequence + '\n' +
                              row.shift.name + '\n' + row.shift.atom,
                          &row.assembly);
      if (!added && *it->second != row.assembly) lettersShared_ = true;
    }
  }

  std::string chainFor(const StarRow& row, Entry& entry) const {
    const bool byLetter = !row.letter.empty() && !(lettersShared_ && !row.assembly.empty());
    const std::string& given = byLetter ? row.letter : !row.assembly.empty() ? row.assembly : row.entity;
    const std::string id = given.empty() ? "1" : given;
    Chain* chain = entry.findChain(id);
    if (chain == nullptr) {
      Chain bare;
      bare.id = id;
      bare.entity = row.entity;
      bare.idGiven = !given.empty();
      entry.chains.push_back(std::move(bare));
      chain = &entry.chains.back();
    }
    if (!byLetter) addAlias(*chain, row.letter);
    return id;
  }

 private:
  bool lettersShared_ = false;
};

/// Numbers of subunits that are none, as a row counter in their column, say nothing about chains.
void dropCounters(std::vector<StarRow>& rows, Log& log) {
  std::set<std::string> numbers;
  for (const StarRow& row : rows) {
    numbers.insert(row.assembly);
    if (numbers.size() > kMostCopies) break;
  }
  if (numbers.size() <= kMostCopies) return;
  log.warn(rows.front().shift.line, "the column Entity_assembly_ID has more than " +
                                        std::to_string(kMostCopies) + " different numbers; it is not read");
  for (StarRow& row : rows) row.assembly.clear();
}

/// How many rows of a chain agree with its sequence, by either column.
struct Agreement {
  bool indexGiven = false;
  std::size_t byIndex = 0, bySequence = 0, rows = 0;
  int line = 0;
};

class ResidueKeys {
 public:
  explicit ResidueKeys(const Entry& entry) {
    for (const Chain& chain : entry.chains) {
      auto& codes = codes_[chain.id];
      for (const Residue& residue : chain.residues) codes.emplace(residue.key, &residue);
    }
  }

  void count(const StarRow& row) {
    const auto& codes = codes_[row.shift.chain];
    if (codes.empty() || row.shift.name.empty()) return;
    Agreement& agreement = agreements_[row.shift.chain];
    if (agreement.rows++ == 0) agreement.line = row.shift.line;
    agreement.indexGiven = agreement.indexGiven || !row.index.empty();
    agreement.byIndex += agrees(codes, row.index, row.shift.name) ? 1 : 0;
    agreement.bySequence += agrees(codes, row.sequence, row.shift.name) ? 1 : 0;
  }

  /// Chains whose rows fit their sequence by Seq_ID and not by Comp_index_ID.
  std::set<std::string> bySequence(Log& log) const {
    std::set<std::string> chains;
    for (const auto& [id, agreement] : agreements_) {
      const bool poor = agreement.indexGiven && agreement.byIndex * 2 < agreement.rows;
      if (!poor || agreement.bySequence * 10 < agreement.rows * 9) continue;
      log.warn(agreement.line,
               "chain " + id + ": Comp_index_ID does not fit the sequence, Seq_ID does and is taken");
      chains.insert(id);
    }
    return chains;
  }

 private:
  using Codes = std::unordered_map<std::string, const Residue*>;

  static bool agrees(const Codes& codes, const std::string& key, const std::string& name) {
    const auto it = codes.find(key);
    if (it == codes.end()) return false;
    const char named = residueCode(name), known = it->second->code;
    return it->second->name == name || named == known || (named == 'C' && known == 'c');
  }

  std::map<std::string, Codes> codes_;
  std::map<std::string, Agreement> agreements_;
};

bool nameResidue(StarRow& row, bool bySequence, Log& log) {
  const std::string& first = bySequence ? row.sequence : row.index;
  const std::string& second = bySequence ? row.index : row.sequence;
  const std::string& given = !first.empty() ? first : !second.empty() ? second : row.shift.author;
  const auto number = wholeInteger(given);
  if (!number) {
    return log.error(row.shift.line,
                     "the residue number '" + given + "' is no integer; are the columns in another order?");
  }
  row.shift.residue = std::to_string(*number);
  return true;
}

}  // namespace

bool placeRows(std::vector<StarRow>& rows, const std::vector<std::string>& blocks,
               const std::vector<Molecules>& molecules, Entry& entry, Log& log) {
  dropCounters(rows, log);
  // A block that only brings shifts is about the molecules described before it.
  std::vector<DescribedChains> described;
  described.reserve(blocks.size());
  std::vector<std::size_t> owner(blocks.size(), blocks.size());
  std::vector<bool> bare(blocks.size(), false);
  for (std::size_t block = 0; block < blocks.size(); ++block) {
    if (!molecules[block].entities.empty()) {
      owner[block] = described.size();
      described.emplace_back(molecules[block], blocks[block], entry);
    } else if (!described.empty()) {
      owner[block] = 0;
    } else {
      bare[block] = true;
    }
  }
  const BareChains bareChains(rows, bare);
  for (StarRow& row : rows) {
    row.shift.chain =
        bare[row.block] ? bareChains.chainFor(row, entry) : described[owner[row.block]].chainFor(row);
  }
  for (DescribedChains& chains : described) chains.addTheRest();
  ResidueKeys keys(entry);
  for (const StarRow& row : rows) keys.count(row);
  const std::set<std::string> bySequence = keys.bySequence(log);
  entry.shifts.reserve(rows.size());
  for (StarRow& row : rows) {
    if (!nameResidue(row, bySequence.count(row.shift.chain) > 0, log)) return false;
    entry.shifts.push_back(std::move(row.shift));
  }
  return true;
}

}  // namespace convert
