// Names of amino acid residues in files of other programs, with the plain residue behind each.
#include "common/residue_variants.h"

#include <array>

#include "tables/text.h"

namespace tools {

namespace {

constexpr VariantKind kPlain = VariantKind::Plain, kState = VariantKind::State,
                      kBound = VariantKind::Disulfide, kModified = VariantKind::Modified;

// Component names are those of the PDB chemical component dictionary; states are those of the AMBER, CHARMM,
// GROMACS and CYANA residue libraries. `changed` follows the distance: a group at the beta carbon or next to
// it moves CB and its neighbours by more than the spread of the plain residue, one at the end of a long side
// chain moves nothing of the backbone.
constexpr std::array kVariants = std::to_array<ResidueVariant>({
    {"ALA", 'A', kPlain, "", ""},
    {"CYS", 'C', kPlain, "", ""},
    {"ASP", 'D', kPlain, "", ""},
    {"GLU", 'E', kPlain, "", ""},
    {"PHE", 'F', kPlain, "", ""},
    {"GLY", 'G', kPlain, "", ""},
    {"HIS", 'H', kPlain, "", ""},
    {"ILE", 'I', kPlain, "", ""},
    {"LYS", 'K', kPlain, "", ""},
    {"LEU", 'L', kPlain, "", ""},
    {"MET", 'M', kPlain, "", ""},
    {"ASN", 'N', kPlain, "", ""},
    {"PRO", 'P', kPlain, "", ""},
    {"GLN", 'Q', kPlain, "", ""},
    {"ARG", 'R', kPlain, "", ""},
    {"SER", 'S', kPlain, "", ""},
    {"THR", 'T', kPlain, "", ""},
    {"VAL", 'V', kPlain, "", ""},
    {"TRP", 'W', kPlain, "", ""},
    {"TYR", 'Y', kPlain, "", ""},

    {"ARG+", 'R', kState, "", "charged arginine"},
    {"ARGN", 'R', kState, "", "neutral arginine"},
    {"LYS+", 'K', kState, "", "charged lysine"},
    {"LYSH", 'K', kState, "", "charged lysine"},
    {"LYN", 'K', kState, "", "neutral lysine"},
    {"LSN", 'K', kState, "", "neutral lysine"},
    {"HIS+", 'H', kState, "", "charged histidine"},
    {"HISH", 'H', kState, "", "charged histidine"},
    {"HIST", 'H', kState, "", "histidine tautomer"},
    {"HISE", 'H', kState, "", "histidine, N epsilon 2 protonated"},
    {"HISD", 'H', kState, "", "histidine, N delta 1 protonated"},
    {"HISA", 'H', kState, "", "histidine, N delta 1 protonated"},
    {"HISB", 'H', kState, "", "histidine, N epsilon 2 protonated"},
    {"HIS1", 'H', kState, "", "histidine bound to heme"},
    {"HID", 'H', kState, "", "histidine, N delta 1 protonated"},
    {"HIE", 'H', kState, "", "histidine, N epsilon 2 protonated"},
    {"HIP", 'H', kState, "", "charged histidine"},
    {"HSD", 'H', kState, "", "histidine, N delta 1 protonated"},
    {"HSE", 'H', kState, "", "histidine, N epsilon 2 protonated"},
    {"HSP", 'H', kState, "", "charged histidine"},
    {"ASP-", 'D', kState, "", "charged aspartate"},
    {"ASPH", 'D', kState, "", "neutral aspartate"},
    {"ASPP", 'D', kState, "", "neutral aspartate"},
    {"ASH", 'D', kState, "", "neutral aspartate"},
    {"GLU-", 'E', kState, "", "charged glutamate"},
    {"GLUH", 'E', kState, "", "neutral glutamate"},
    {"GLUP", 'E', kState, "", "neutral glutamate"},
    {"GLH", 'E', kState, "", "neutral glutamate"},
    {"CYSH", 'C', kState, "", "free cysteine"},
    {"CYS-", 'C', kState, "", "cysteine thiolate"},
    {"CYM", 'C', kState, "", "cysteine thiolate"},
    {"CPRO", 'P', kState, "", "cis proline"},
    {"TYRM", 'Y', kState, "", "tyrosinate"},
    {"TYR-", 'Y', kState, "", "tyrosinate"},

    {"CYSS", 'c', kBound, "", "disulfide-bonded cysteine"},
    {"CYX", 'c', kBound, "", "disulfide-bonded cysteine"},
    {"CYS2", 'c', kBound, "", "disulfide-bonded cysteine"},

    {"MSE", 'M', kModified, "", "selenomethionine"},
    {"FME", 'M', kModified, "N HN", "N-formylmethionine"},
    {"MHO", 'M', kModified, "", "methionine sulfoxide"},
    {"SME", 'M', kModified, "", "methionine sulfoxide"},
    {"OMT", 'M', kModified, "", "methionine sulfone"},
    {"NLE", 'M', kModified, "CB", "norleucine"},
    {"SEP", 'S', kModified, "HN HA CA CB", "phosphoserine"},
    {"TPO", 'T', kModified, "HN HA CA CB", "phosphothreonine"},
    {"PTR", 'Y', kModified, "", "phosphotyrosine"},
    {"TYS", 'Y', kModified, "", "sulfotyrosine"},
    {"NIY", 'Y', kModified, "", "nitrotyrosine"},
    {"DAH", 'Y', kModified, "", "dihydroxyphenylalanine"},
    {"S1P", 'S', kModified, "HN HA CA CB", "phosphoserine"},
    {"T1P", 'T', kModified, "HN HA CA CB", "phosphothreonine"},
    {"Y1P", 'Y', kModified, "", "phosphotyrosine"},
    {"HYP", 'P', kModified, "N HA CA CB", "4-hydroxyproline"},
    {"HY3", 'P', kModified, "N HA CA CB", "3-hydroxyproline"},
    {"CSO", 'C', kModified, "CA CB", "S-hydroxycysteine"},
    {"CSD", 'C', kModified, "CA CB", "cysteine sulfinate"},
    {"OCS", 'C', kModified, "CA CB", "cysteine sulfonate"},
    {"CSX", 'C', kModified, "CA CB", "cysteine S-oxide"},
    {"SNC", 'C', kModified, "CA CB", "S-nitrosocysteine"},
    {"CME", 'c', kModified, "", "cysteine bound to mercaptoethanol"},
    {"R1A", 'c', kModified, "HN HA CA CB", "cysteine with a nitroxide spin label"},
    {"SCH", 'c', kModified, "", "S-methylthiocysteine"},
    {"SMC", 'C', kModified, "CA CB", "S-methylcysteine"},
    {"CAF", 'C', kModified, "CA CB", "S-dimethylarsinoylcysteine"},
    {"CAS", 'C', kModified, "CA CB", "S-dimethylarsenocysteine"},
    {"YCM", 'C', kModified, "CA CB", "S-carbamoylmethylcysteine"},
    {"SEC", 'C', kModified, "CA CB", "selenocysteine"},
    {"MLZ", 'K', kModified, "", "monomethyllysine"},
    {"MLY", 'K', kModified, "", "dimethyllysine"},
    {"M2L", 'K', kModified, "", "dimethyllysine"},
    {"M3L", 'K', kModified, "", "trimethyllysine"},
    {"ALY", 'K', kModified, "", "acetyllysine"},
    {"KCX", 'K', kModified, "", "carboxylysine"},
    {"LLP", 'K', kModified, "", "lysine bound to pyridoxal phosphate"},
    {"PYL", 'K', kModified, "", "pyrrolysine"},
    {"AGM", 'R', kModified, "", "methylarginine"},
    {"DA2", 'R', kModified, "", "dimethylarginine"},
    {"2MR", 'R', kModified, "", "dimethylarginine"},
    {"CIR", 'R', kModified, "", "citrulline"},
    {"PCA", 'Q', kModified, "N HN HA C CA CB", "pyroglutamate"},
    {"CGU", 'E', kModified, "CB", "carboxyglutamate"},
    {"PHD", 'D', kModified, "CA CB", "aspartyl phosphate"},
    {"BFD", 'D', kModified, "CA CB", "aspartate with beryllium fluoride"},
    {"IAS", 'D', kModified, "N HN HA C CA CB", "isoaspartate"},
    {"MEN", 'N', kModified, "", "methylasparagine"},
    {"HIC", 'H', kModified, "", "methylhistidine"},
    {"MHS", 'H', kModified, "", "methylhistidine"},
    {"NEP", 'H', kModified, "", "phosphohistidine"},
    {"PHF", 'F', kModified, "CB", "substituted phenylalanine"},
    {"PFF", 'F', kModified, "", "4-fluorophenylalanine"},
    {"PF5", 'F', kModified, "CB", "pentafluorophenylalanine"},
    {"PHI", 'F', kModified, "", "iodophenylalanine"},
    {"BIF", 'F', kModified, "", "biphenylalanine"},
    {"FTR", 'W', kModified, "", "fluorotryptophan"},
    {"4IN", 'W', kModified, "", "aminotryptophan"},
    {"HTR", 'W', kModified, "CA CB", "hydroxytryptophan"},
    {"FTY", 'Y', kModified, "", "fluorotyrosine"},
    {"YOF", 'Y', kModified, "", "fluorotyrosine"},
    {"SAC", 'S', kModified, "N HN", "N-acetylserine"},
    {"AYA", 'A', kModified, "N HN", "N-acetylalanine"},
    {"SAR", 'G', kModified, "N HN HA C CA", "sarcosine"},
    {"ABA", 'A', kModified, "HA CA CB", "aminobutyric acid"},
    {"AIB", 'A', kModified, "N HN HA C CA CB", "aminoisobutyric acid"},
    {"ORN", 'K', kModified, "CB", "ornithine"},
    {"NVA", 'V', kModified, "HA CA CB", "norvaline"},
});

}  // namespace

bool ResidueVariant::shiftsLikeParent(std::string_view backboneAtom) const {
  for (const std::string_view atom : text::split_WhiteSpace(changed)) {
    if (atom == backboneAtom || (atom == "HA" && backboneAtom.starts_with("HA"))) return false;
  }
  return true;
}

const ResidueVariant* findResidueVariant(std::string_view name) {
  const std::string raised = text::upper(name);
  for (const ResidueVariant& known : kVariants) {
    if (raised == known.name) return &known;
  }
  return nullptr;
}

std::string_view plainResidueName(char code) {
  if (code == 'c') code = 'C';
  for (const ResidueVariant& known : kVariants) {
    if (known.kind == kPlain && known.parent == code) return known.name;
  }
  return "UNK";
}

bool namesMoreThan(std::string_view name, char code) {
  if (name.size() < 2) return false;
  const ResidueVariant* known = findResidueVariant(name);
  return known == nullptr || known->kind != kPlain || known->name != plainResidueName(code);
}

}  // namespace tools
