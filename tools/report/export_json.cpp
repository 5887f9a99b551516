// The report's data as JSON.
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "report/exports.h"
#include "report/summary.h"
#include "report/svg.h"

namespace report {

namespace {

std::string quoted(std::string_view s) {
  std::string out = "\"";
  for (const char c : validUtf8(s)) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<std::uint8_t>(c) < 0x20) {
      char buffer[8];
      std::snprintf(buffer, sizeof buffer, "\\u%04x", static_cast<unsigned>(c));
      out += buffer;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string number(double value, int decimals) {
  return value < predictions::kMissing && value > -1e9 ? fixed(value, decimals) : "null";
}

std::string number(const std::optional<double>& value, int decimals) {
  return value ? number(*value, decimals) : "null";
}

/// Members of an object, written one after the other.
class Object {
 public:
  Object& add(std::string_view name, std::string_view json) {
    text += text.empty() ? "" : ", ";
    text.append(quoted(name)).append(": ").append(json);
    return *this;
  }
  std::string finish() const { return "{" + text + "}"; }

 private:
  std::string text;
};

template <class List, class Write>
std::string array(const List& list, const std::string& separator, Write write) {
  std::string out = "[";
  bool first = true;
  for (const auto& item : list) {
    if (!first) out += separator;
    out += write(item);
    first = false;
  }
  return out + "]";
}

void addTorsions(Object& object, const Residue& r) {
  const bool predicted = r.hasPrediction();
  const predictions::TorsionRow row = r.torsion.value_or(predictions::TorsionRow{});
  const auto cell = [&](double value) { return predicted ? number(value, 3) : "null"; };
  object.add("phi", cell(row.phi)).add("psi", cell(row.psi));
  object.add("dphi", cell(row.dphi)).add("dpsi", cell(row.dpsi)).add("dist", cell(row.dist));
  const bool withoutS2 = !r.torsion || row.className == "None";
  object.add("s2", r.s2 ? number(*r.s2, 3) : withoutS2 ? "null" : number(row.s2, 3));
  object.add("count", r.torsion ? std::to_string(row.count) : "null");
  object.add("cs_count", r.torsion ? std::to_string(row.csCount) : "null");
  object.add("class", r.torsion ? quoted(row.className) : "null");
}

std::string structureObject(const Residue& r) {
  if (!r.ss) return "null";
  return Object()
      .add("H", number(r.ss->helix, 3))
      .add("E", number(r.ss->strand, 3))
      .add("L", number(r.ss->coil, 3))
      .add("confidence", number(r.ss->confidence, 2))
      .add("class", quoted(std::string(1, r.ss->className)))
      .finish();
}

/// `angle` as in the table; `torsion` is N-CA-CB-XG, which differs for valine.
std::string chi1Object(const Residue& r) {
  if (!r.chi1) return "null";
  const predictions::Chi1Row& row = *r.chi1;
  const bool predicted = row.hasAngle();
  return Object()
      .add("gm", number(row.gm, 3))
      .add("gp", number(row.gp, 3))
      .add("t", number(row.t, 3))
      .add("class", row.className == "na" ? "null" : quoted(row.className))
      .add("angle", predicted ? number(row.chi1, 1) : "null")
      .add("sd", predicted ? number(row.dchi1, 1) : "null")
      .add("torsion", predicted ? number(row.torsion(), 1) : "null")
      .finish();
}

std::string residueObject(const Residue& r, const ReportData& data) {
  Object object;
  object.add("resid", std::to_string(r.resid)).add("resname", quoted(std::string(1, r.code)));
  addTorsions(object, r);
  object.add("ss", structureObject(r)).add("chi1", chi1Object(r));
  if (data.hasBoxes) {
    object.add("clusters", r.boxes ? std::to_string(r.boxes->clusters) : "null");
  }
  if (data.hasShifts) {
    Object shifts;
    for (std::size_t k = 0; k < kAtoms.size(); ++k) shifts.add(kAtoms[k], number(r.secondaryShifts[k], 3));
    object.add("secondary_shifts", shifts.finish());
  }
  if (data.hasReference || r.referenceChi1) {
    object.add("reference", Object()
                                .add("phi", number(r.referencePhi, 1))
                                .add("psi", number(r.referencePsi, 1))
                                .add("chi1", number(r.referenceChi1, 1))
                                .finish());
  }
  return object.finish();
}

std::string settingsObject(const ReportData& data) {
  return Object()
      .add("deuterium_correction", data.deuterated ? "true" : "false")
      .add("reference", data.referenceTitle.empty() ? "null" : quoted(data.referenceTitle))
      .finish();
}

std::string checkObject(const ReportData& data) {
  const auto offset = [](const ReferencingOffset& o) {
    return Object()
        .add("nuclei", quoted(o.nuclei))
        .add("offset", number(o.offset, 3))
        .add("error", o.error > 0 ? number(o.error, 3) : "null")
        .add("shifts", o.shifts > 0 ? std::to_string(o.shifts) : "null")
        .add("applied", o.applied ? "true" : "false")
        .finish();
  };
  const auto outlier = [](const Outlier& o) {
    return Object()
        .add("resid", std::to_string(o.resid))
        .add("atom", quoted(o.atom))
        .add("secondary_shift", number(o.shift, 3))
        .add("limit", number(o.limit, 3))
        .add("extreme", o.extreme ? "true" : "false")
        .finish();
  };
  return Object()
      .add("read", data.check.fromLog ? "true" : "false")
      .add("offsets", array(data.check.offsets, ", ", offset))
      .add("outliers", array(data.check.outliers, ", ", outlier))
      .finish();
}

}  // namespace

std::string jsonExport(const ReportData& data) {
  std::string sequence;
  for (const Residue& r : data.residues) sequence += r.code;
  std::string out = "{\n";
  const auto member = [&](const char* name, const std::string& json, const char* end = ",\n") {
    out.append("  ").append(quoted(name)).append(": ").append(json).append(end);
  };
  member("program", quoted("orbeln-report"));
  member("version", quoted(ORBELN_VERSION));
  member("prediction", data.version.empty() ? "null" : quoted(data.version));
  member("input", quoted(data.title));
  member("sequence", quoted(sequence));
  member("first_residue", std::to_string(data.residues.front().resid));
  member("settings", settingsObject(data));
  member("summary", array(summarize(data), ",\n    ", [](const Statement& s) { return quoted(s.text); }));
  member("check", checkObject(data));
  member("missing_tables", array(data.missing, ", ", [](const std::string& name) { return quoted(name); }));
  member("residues",
         array(data.residues, ",\n    ", [&](const Residue& r) { return residueObject(r, data); }), "\n");
  return out + "}\n";
}

}  // namespace report
