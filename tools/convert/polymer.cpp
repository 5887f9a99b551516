// Which residues of a shift list belong to a protein: amino acids, nucleotides and everything else.
#include "convert/polymer.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "common/residue_variants.h"
#include "convert/names.h"
#include "tables/text.h"

namespace convert {

namespace {

constexpr std::array<std::string_view, 20> kNucleotides = {"DA",  "DC",  "DG",  "DT",  "DU",  "DI",  "RA",
                                                           "RC",  "RG",  "RU",  "ADE", "CYT", "GUA", "THY",
                                                           "URA", "URI", "GUO", "ADO", "CYD", "PSU"};

bool isNucleotideName(std::string_view raised) {
  return std::find(kNucleotides.begin(), kNucleotides.end(), raised) != kNucleotides.end();
}

bool isNucleotideLetter(std::string_view raised) {
  return raised.size() == 1 && std::string_view("ACGTUIN").find(raised[0]) != std::string_view::npos;
}

/// The sugar's atoms carry a prime (or the old asterisk behind a digit), the phosphate is P.
bool isNucleotideAtom(std::string_view raised) {
  const bool starred = raised.size() > 2 && raised.back() == '*' && raised[raised.size() - 2] >= '0' &&
                       raised[raised.size() - 2] <= '5';
  return raised == "P" || (raised.size() > 2 && raised.find('\'') != std::string_view::npos) || starred;
}

/// One residue as the rows show it.
struct Seen {
  std::string name;
  std::set<std::string> backbone;  ///< names of backbone atoms among its rows
  bool nucleotide = false;         ///< an atom of a nucleotide among them
};

/// What the rows of a chain say about its residues.
struct ChainRows {
  std::unordered_map<std::string, Seen> residues;  // by key and name
  std::unordered_set<int> aminoAcids;              // numbers of residues with the name of one
  bool threeLetters = false;                       // amino acids are called by three letters
  bool nucleotides = false;
};

std::string residueKey(const Shift& shift) {
  return shift.residue + '\n' + shift.name;
}

void addRow(ChainRows& rows, const Shift& shift) {
  Seen& seen = rows.residues[residueKey(shift)];
  if (seen.name.empty()) seen.name = text::upper(shift.name);
  const std::string atom = text::upper(shift.atom);
  for (const std::string_view backbone : {"N", "H", "HN", "CA", "HA", "C", "CB"}) {
    if (atom == backbone && atom != seen.name) seen.backbone.insert(atom);
  }
  seen.nucleotide = seen.nucleotide || isNucleotideAtom(atom);
  if (isAminoAcidName(shift.name)) {
    rows.threeLetters = true;
    if (const auto number = wholeInteger(shift.residue)) rows.aminoAcids.insert(*number);
  }
  rows.nucleotides =
      rows.nucleotides || isNucleotideName(seen.name) || (seen.nucleotide && isNucleotideLetter(seen.name));
}

bool belongsToProtein(const std::string& residue, const Seen& seen, const ChainRows& rows) {
  constexpr std::size_t kLeastBackbone = 2;  // one equal name may be chance, as CA of calcium
  if (seen.name.empty()) return !seen.nucleotide;
  if (isAminoAcidName(seen.name)) return true;
  if (isNucleotideName(seen.name)) return false;
  if (seen.name.size() == 1) {
    const bool nucleotide = isNucleotideLetter(seen.name) && (rows.threeLetters || rows.nucleotides);
    return !nucleotide && residueCode(seen.name) != 'X';
  }
  // An amino acid that no table knows has the backbone all amino acids have, or stands between two others.
  if (seen.backbone.size() >= kLeastBackbone) return true;
  const auto number = wholeInteger(residue);
  return number && rows.aminoAcids.count(*number - 1) > 0 && rows.aminoAcids.count(*number + 1) > 0 &&
         rows.aminoAcids.count(*number) == 0;
}

}  // namespace

bool isAminoAcidName(std::string_view name) {
  return name.size() > 2 && tools::findResidueVariant(name) != nullptr;
}

bool areAminoAcids(const std::vector<Residue>& residues) {
  bool otherLetters = false;
  for (const Residue& residue : residues) {
    if (isAminoAcidName(residue.name)) return true;
    const std::string name = text::upper(residue.name);
    if (name.size() == 1 && !isNucleotideLetter(name) && residue.code != 'X') otherLetters = true;
  }
  return otherLetters;
}

void leaveOutOtherMolecules(Entry& entry) {
  std::unordered_map<std::string, ChainRows> chains;
  for (const Chain& chain : entry.chains) {
    if (chain.residues.empty()) chains.emplace(chain.id, ChainRows{});
  }
  if (chains.empty()) return;
  for (const Shift& shift : entry.shifts) {
    if (const auto it = chains.find(shift.chain); it != chains.end()) addRow(it->second, shift);
  }
  std::unordered_set<std::string> proteins;
  std::vector<Shift> kept;
  kept.reserve(entry.shifts.size());
  for (Shift& shift : entry.shifts) {
    const auto it = chains.find(shift.chain);
    if (it != chains.end() &&
        !belongsToProtein(shift.residue, it->second.residues.at(residueKey(shift)), it->second)) {
      entry.leaveOut(shift.name);
      continue;
    }
    if (it != chains.end()) proteins.insert(shift.chain);
    kept.push_back(std::move(shift));
  }
  entry.shifts = std::move(kept);
  for (Chain& chain : entry.chains) {
    if (chains.count(chain.id) > 0) chain.protein = chain.protein && proteins.count(chain.id) > 0;
  }
}

}  // namespace convert
