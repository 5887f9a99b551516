// NMR-STAR 3.2: save frames for a deposition with torsion restraints, secondary structure, order parameters.
#include <algorithm>
#include <map>

#include "restraints/writers.h"

namespace restraints {

namespace {

/// The head of the one save frame of a category whose tags begin with `list`.
std::string beginFrame(const std::string& list, const std::string& category, const std::string& details) {
  std::string out = "save_orbeln_" + category + "\n";
  const auto tag = [&](const std::string& name, const std::string& value) {
    std::string cell = "   _" + list + "." + name;
    cell.resize(std::max<std::size_t>(cell.size(), 58), ' ');
    out += cell + "  " + value + "\n";
  };
  tag("Sf_category", category);
  tag("Sf_framecode", "orbeln_" + category);
  tag("Entry_ID", ".");
  tag("ID", "1");
  tag("Details", "\"" + details + ", from chemical shifts by ORBEL-N " ORBELN_VERSION "\"");
  return out + "\n";
}

std::string beginLoop(const std::string& category, const std::vector<std::string>& tags) {
  std::string out = "   loop_\n";
  for (const std::string& tag : tags) out += "      _" + category + "." + tag + "\n";
  return out;
}

constexpr const char* kEndFrame = "   stop_\nsave_\n\n";

using Positions = std::map<int, std::size_t>;  ///< residue number -> position in the sequence, from 1

std::string torsionFrame(const RestraintList& list, const Positions& positions, const Options& options) {
  std::string out =
      beginFrame("Torsion_angle_constraint_list", "torsion_angle_constraints", "Torsion angle restraints");
  std::vector<std::string> tags = {"ID", "Torsion_angle_name"};
  const auto perAtom = [&](const std::vector<std::string>& names) {
    for (const char* atom : {"_1", "_2", "_3", "_4"}) {
      for (const std::string& name : names) tags.push_back(name + atom);
    }
  };
  perAtom({"Entity_assembly_ID", "Entity_ID", "Comp_index_ID", "Seq_ID", "Comp_ID", "Atom_ID", "Atom_type"});
  tags.insert(tags.end(), {"Angle_lower_bound_val", "Angle_upper_bound_val", "Angle_target_val",
                           "Angle_target_val_err", "Weight"});
  perAtom({"Auth_asym_ID", "Auth_seq_ID", "Auth_comp_ID", "Auth_atom_ID"});
  tags.insert(tags.end(), {"Entry_ID", "Torsion_angle_constraint_list_ID"});
  out += beginLoop("Torsion_angle_constraint", tags);
  std::size_t id = 0;
  for (const Restraint& r : list.restraints) {
    std::string authors;
    out += print("      %zu %s", ++id, r.angleName());
    for (const RestraintAtom& atom : r.atoms) {
      const std::string name = list.labels.componentName(atom.resid, atom.code);
      const std::size_t position = positions.at(atom.resid);
      out +=
          print(" 1 1 %zu %zu %s %s %c", position, position, name.c_str(), atom.name.c_str(), atom.name[0]);
      authors += print(" %s %s %s %s", list.labels.chain.c_str(), list.labels.number(atom.resid).c_str(),
                       list.labels.name(atom.resid, atom.code).c_str(), atom.name.c_str());
    }
    out += print(" %.1f %.1f %.1f %.1f %.2f", r.lower(), r.upper(), r.centre, r.deviation,
                 options.force.value_or(1.0));
    out += authors + " . 1\n";
  }
  return out + kEndFrame;
}

/// Helix or strand, or 0 for neither.
char elementOf(const predictions::Residue& r) {
  if (!r.ss) return 0;
  return r.ss->className == 'H' ? 'H' : r.ss->className == 'E' ? 'E' : '\0';
}

/// Runs of residues in one helix or strand; what was predicted from the sequence alone is no result of
/// shifts.
std::string structureFrame(const RestraintList& list, const predictions::Model& model,
                           const Positions& positions) {
  std::string rows;
  std::size_t id = 0;
  const std::vector<predictions::Residue>& all = model.residues;
  for (std::size_t from = 0, to = 0; from < all.size(); from = to) {
    const char kind = elementOf(all[from]);
    for (to = from + 1; to < all.size() && elementOf(all[to]) == kind;) ++to;
    const auto first = positions.find(all[from].resid), last = positions.find(all[to - 1].resid);
    if (kind == 0 || first == positions.end() || last == positions.end()) continue;
    rows += print("      %zu 1 1 %zu %zu %zu %zu %s %s %s %c . 1\n", ++id, first->second, last->second,
                  first->second, last->second, list.labels.number(first->first).c_str(),
                  list.labels.number(last->first).c_str(), kind == 'H' ? "helix" : "strand", kind);
  }
  if (rows.empty()) return {};
  return beginFrame("Secondary_struct_list", "secondary_structs", "Helices and strands") +
         beginLoop("Secondary_struct",
                   {"ID", "Entity_assembly_ID", "Entity_ID", "Comp_index_ID_start", "Comp_index_ID_end",
                    "Seq_ID_start", "Seq_ID_end", "Auth_seq_ID_start", "Auth_seq_ID_end", "Name", "Code",
                    "Entry_ID", "Secondary_struct_list_ID"}) +
         rows + kEndFrame;
}

std::string orderFrame(const RestraintList& list, const predictions::Model& model,
                       const Positions& positions) {
  std::string rows;
  std::size_t id = 0;
  for (const predictions::Residue& r : model.residues) {
    const std::string name = list.labels.componentName(r.resid, r.code);
    if (!r.s2 || name.empty() || !positions.contains(r.resid)) continue;
    rows += print("      %zu 1 1 %zu %zu %s N N 15 %.3f . %s %s N . 1\n", ++id, positions.at(r.resid),
                  positions.at(r.resid), name.c_str(), *r.s2, list.labels.number(r.resid).c_str(),
                  list.labels.name(r.resid, r.code).c_str());
  }
  if (rows.empty()) return {};
  return beginFrame("Order_parameter_list", "order_parameters",
                    "Predicted order parameters (random coil index), no relaxation measurement") +
         beginLoop("Order_param",
                   {"ID", "Entity_assembly_ID", "Entity_ID", "Comp_index_ID", "Seq_ID", "Comp_ID", "Atom_ID",
                    "Atom_type", "Atom_isotope_number", "Order_param_val", "Order_param_val_fit_err",
                    "Auth_seq_ID", "Auth_comp_ID", "Auth_atom_ID", "Entry_ID", "Order_parameter_list_ID"}) +
         rows + kEndFrame;
}

}  // namespace

std::string writeStar(const RestraintList& list, const predictions::Model& model, const Options& options) {
  Positions positions;
  for (const auto& [resid, code] : list.sequence) positions.emplace(resid, positions.size() + 1);
  return commentBlock(list, "# ") + "\ndata_orbeln_restraints\n\n" + torsionFrame(list, positions, options) +
         structureFrame(list, model, positions) + orderFrame(list, model, positions);
}

}  // namespace restraints
