// NEF 1.1: a complete file with the sequence and one dihedral restraint list.
#include "predictions/names.h"
#include "restraints/writers.h"

namespace restraints {

namespace {

std::string metaData() {
  return "data_nef_orbeln_restraints\n\n"
         "save_nef_nmr_meta_data\n"
         "   _nef_nmr_meta_data.sf_category      nef_nmr_meta_data\n"
         "   _nef_nmr_meta_data.sf_framecode     nef_nmr_meta_data\n"
         "   _nef_nmr_meta_data.format_name      nmr_exchange_format\n"
         "   _nef_nmr_meta_data.format_version   1.1\n"
         "   _nef_nmr_meta_data.program_name     orbeln-restraints\n"
         "   _nef_nmr_meta_data.program_version  " ORBELN_VERSION
         "\n"
         "   _nef_nmr_meta_data.creation_date    .\n"
         "   _nef_nmr_meta_data.uuid             .\n"
         "save_\n\n";
}

/// How a residue is bonded within its chain of `length` residues.
const char* linking(std::size_t index, std::size_t length) {
  if (length == 1) return "single";
  if (index == 1) return "start";
  return index == length ? "end" : "middle";
}

std::string molecularSystem(const RestraintList& list, const std::string& chain) {
  std::string out =
      "save_nef_molecular_system\n"
      "   _nef_molecular_system.sf_category   nef_molecular_system\n"
      "   _nef_molecular_system.sf_framecode  nef_molecular_system\n"
      "   loop_\n";
  for (const char* tag : {"index", "chain_code", "sequence_code", "residue_name", "linking",
                          "residue_variant", "cis_peptide"}) {
    out += std::string("      _nef_sequence.") + tag + "\n";
  }
  std::size_t index = 0;
  for (const auto& [resid, code] : list.sequence) {
    ++index;
    out +=
        print("      %zu %s %d %s %s . %s\n", index, chain.c_str(), resid, predictions::threeLetterName(code),
              linking(index, list.sequence.size()), code == 'p' ? "true" : ".");
  }
  return out + "   stop_\nsave_\n\n";
}

/// The frame is mandatory; the shifts themselves stay in the file that they came from.
std::string emptyShiftList() {
  std::string out =
      "save_nef_chemical_shift_list_none\n"
      "   _nef_chemical_shift_list.sf_category   nef_chemical_shift_list\n"
      "   _nef_chemical_shift_list.sf_framecode  nef_chemical_shift_list_none\n"
      "   loop_\n";
  for (const char* tag : {"chain_code", "sequence_code", "residue_name", "atom_name", "value"}) {
    out += std::string("      _nef_chemical_shift.") + tag + "\n";
  }
  return out + "   stop_\nsave_\n\n";
}

std::string restraintTags() {
  std::string out;
  const auto tag = [&](const std::string& name) { out += "      _nef_dihedral_restraint." + name + "\n"; };
  for (const char* name : {"index", "restraint_id", "restraint_combination_id"}) tag(name);
  for (const char* atom : {"_1", "_2", "_3", "_4"}) {
    for (const char* name : {"chain_code", "sequence_code", "residue_name", "atom_name"}) {
      tag(std::string(name) + atom);
    }
  }
  for (const char* name : {"weight", "target_value", "target_value_uncertainty", "lower_linear_limit",
                           "lower_limit", "upper_limit", "upper_linear_limit", "name"}) {
    tag(name);
  }
  return out;
}

std::string restraintRow(const Restraint& r, std::size_t index, const std::string& chain, double weight) {
  std::string row = print("      %zu %zu .", index, index);
  for (const RestraintAtom& atom : r.atoms) {
    row += print(" %s %d %s %s", chain.c_str(), atom.resid, predictions::threeLetterName(atom.code),
                 atom.name.c_str());
  }
  return row + print(" %.2f %.1f %.1f . %.1f %.1f . %s\n", weight, r.centre, r.deviation, r.lower(),
                     r.upper(), r.angleName());
}

}  // namespace

std::string writeNef(const RestraintList& list, const Options& options) {
  const std::string chain = options.chain.empty() ? "A" : options.chain;
  std::string out = commentBlock(list, "# ");
  for (const Restraint& r : list.restraints) {
    if (r.angle == Angle::Chi1) out += "# " + describe(r) + "\n";
  }
  out += metaData() + molecularSystem(list, chain) + emptyShiftList();
  out +=
      "save_nef_dihedral_restraint_list_orbeln\n"
      "   _nef_dihedral_restraint_list.sf_category       nef_dihedral_restraint_list\n"
      "   _nef_dihedral_restraint_list.sf_framecode      nef_dihedral_restraint_list_orbeln\n"
      "   _nef_dihedral_restraint_list.potential_type    square-well-parabolic\n"
      "   _nef_dihedral_restraint_list.restraint_origin  chemical_shift\n"
      "   loop_\n" +
      restraintTags();
  std::size_t index = 0;
  for (const Restraint& r : list.restraints) {
    out += restraintRow(r, ++index, chain, options.force.value_or(1.0));
  }
  return out + "   stop_\nsave_\n";
}

}  // namespace restraints
