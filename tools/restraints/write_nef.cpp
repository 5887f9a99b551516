// NEF 1.1: one dihedral restraint list, alone or in a complete file with sequence and shifts.
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include "common/numbers.h"
#include "restraints/writers.h"

namespace restraints {

namespace {

/// Now, or SOURCE_DATE_EPOCH where outputs must be the same in every run; UTC, ISO 8601.
std::string creationDate() {
  const char* fixed = std::getenv("SOURCE_DATE_EPOCH");
  double seconds = 0;
  if (fixed != nullptr) tools::parseNumber(fixed, seconds);
  const std::time_t now = seconds > 0 ? static_cast<std::time_t>(seconds) : std::time(nullptr);
  char buffer[32];
  std::tm parts{};
  gmtime_r(&now, &parts);
  std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S", &parts);
  return buffer;
}

/// The format's identifier: program, date, and a number that differs between contents (FNV-1a).
std::string metaData(const std::string& content) {
  std::uint64_t number = 14695981039346656037U;
  for (const char c : content) number = (number ^ static_cast<unsigned char>(c)) * 1099511628211U;
  const std::string date = creationDate();
  return "data_nef_orbeln_restraints\n\n"
         "save_nef_nmr_meta_data\n"
         "   _nef_nmr_meta_data.sf_category      nef_nmr_meta_data\n"
         "   _nef_nmr_meta_data.sf_framecode     nef_nmr_meta_data\n"
         "   _nef_nmr_meta_data.format_name      nmr_exchange_format\n"
         "   _nef_nmr_meta_data.format_version   1.1\n"
         "   _nef_nmr_meta_data.program_name     orbeln-restraints\n"
         "   _nef_nmr_meta_data.program_version  " ORBELN_VERSION
         "\n"
         "   _nef_nmr_meta_data.creation_date    " +
         date + "\n   _nef_nmr_meta_data.uuid             orbeln-restraints-" + date + "-" +
         std::to_string(number) + "\nsave_\n\n";
}

/// How residue `index` is bonded within its chain; residues without a name are a gap.
const char* linking(const std::vector<SequenceResidue>& residues, std::size_t index) {
  if (residues.size() == 1) return "single";
  if (index == 0) return "start";
  if (index + 1 == residues.size()) return "end";
  return residues[index].resid + 1 == residues[index + 1].resid ? "middle" : "break";
}

std::string molecularSystem(const RestraintList& list) {
  std::string out =
      "save_nef_molecular_system\n"
      "   _nef_molecular_system.sf_category   nef_molecular_system\n"
      "   _nef_molecular_system.sf_framecode  nef_molecular_system\n"
      "   loop_\n";
  for (const char* tag : {"index", "chain_code", "sequence_code", "residue_name", "linking",
                          "residue_variant", "cis_peptide"}) {
    out += std::string("      _nef_sequence.") + tag + "\n";
  }
  const std::vector<SequenceResidue> residues = namedResidues(list);
  for (std::size_t i = 0; i < residues.size(); ++i) {
    out += print("      %zu %s %s %s %s . %s\n", i + 1, list.labels.chain.c_str(), residues[i].number.c_str(),
                 residues[i].name.c_str(), linking(residues, i), residues[i].code == 'p' ? "true" : ".");
  }
  return out + "   stop_\nsave_\n\n";
}

/// Atom names of the table in NEF: glycine's two protons are not told apart.
std::string nefAtom(const std::string& atom, char code) {
  if (atom == "HN") return "H";
  if (code != 'G') return atom;
  return atom == "HA2" ? "HAx" : atom == "HA3" ? "HAy" : atom == "HA" ? "HA%" : atom;
}

/// The frame is mandatory, and a loop without rows is not allowed: the shifts of the input table fill it.
std::string shiftList(const RestraintList& list) {
  std::string out =
      "save_nef_chemical_shift_list_orbeln\n"
      "   _nef_chemical_shift_list.sf_category   nef_chemical_shift_list\n"
      "   _nef_chemical_shift_list.sf_framecode  nef_chemical_shift_list_orbeln\n";
  std::string rows;
  for (const InputShift& shift : list.shifts) {
    const std::string name = list.labels.componentName(shift.resid, shift.code);
    if (name.empty()) continue;
    rows += "      " + list.labels.chain + " " + list.labels.number(shift.resid) + " " + name + " " +
            nefAtom(shift.atom, shift.code) + " " + shift.value + "\n";
  }
  if (rows.empty()) return out + "save_\n\n";
  out += "   loop_\n";
  for (const char* tag : {"chain_code", "sequence_code", "residue_name", "atom_name", "value"}) {
    out += std::string("      _nef_chemical_shift.") + tag + "\n";
  }
  return out + rows + "   stop_\nsave_\n\n";
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

std::string restraintRow(const Restraint& r, std::size_t index, const Labels& labels, double weight) {
  std::string row = print("      %zu %zu .", index, index);
  for (const RestraintAtom& atom : r.atoms) {
    row += print(" %s %s %s %s", labels.chain.c_str(), labels.number(atom.resid).c_str(),
                 labels.componentName(atom.resid, atom.code).c_str(), atom.name.c_str());
  }
  return row + print(" %.2f %.1f %.1f . %.1f %.1f . %s\n", weight, r.centre, r.deviation, r.lower(),
                     r.upper(), r.angleName());
}

}  // namespace

std::string nefRestraintFrame(const RestraintList& list, const Options& options, const std::string& frame) {
  std::string out = commentBlock(list, "# ");
  for (const Restraint& r : list.restraints) {
    if (r.angle == Angle::Chi1) out += "# " + describe(r, list.labels) + "\n";
  }
  out += "save_" + frame +
         "\n"
         "   _nef_dihedral_restraint_list.sf_category       nef_dihedral_restraint_list\n"
         "   _nef_dihedral_restraint_list.sf_framecode      " +
         frame +
         "\n"
         "   _nef_dihedral_restraint_list.potential_type    square-well-parabolic\n"
         "   _nef_dihedral_restraint_list.restraint_origin  chemical_shift\n"
         "   loop_\n" +
         restraintTags();
  std::size_t index = 0;
  for (const Restraint& r : list.restraints) {
    out += restraintRow(r, ++index, list.labels, options.force.value_or(1.0));
  }
  return out + "   stop_\nsave_\n";
}

std::string writeNef(const RestraintList& list, const Options& options) {
  const std::string content =
      molecularSystem(list) + shiftList(list) + nefRestraintFrame(list, options, kNefFrame);
  return metaData(content) + content;
}

}  // namespace restraints
