// Any kind of STAR: parsed once, then read as what its tags say it is.
#include "convert/readers.h"

namespace convert {

namespace {

bool hasTag(const star::Document& document, std::string_view prefix) {
  const auto matches = [&](const std::string& tag) {
    return tag.size() >= prefix.size() &&
           star::equalsIgnoringCase(std::string_view(tag).substr(0, prefix.size()), prefix);
  };
  for (const star::Frame& frame : document.frames) {
    for (const star::Item& item : frame.items) {
      if (matches(item.tag)) return true;
    }
    for (const star::Loop& loop : frame.loops) {
      for (const std::string& tag : loop.tags) {
        if (matches(tag)) return true;
      }
    }
  }
  return false;
}

/// What the file holds instead of shifts: the categories of its first loops.
std::string contents(const star::Document& document) {
  constexpr std::size_t kMost = 5;
  std::vector<std::string> categories;
  for (const star::Frame& frame : document.frames) {
    for (const star::Loop& loop : frame.loops) {
      const std::string category = tools::shortened(loop.tags[0].substr(0, loop.tags[0].find('.')), 40);
      if (categories.size() < kMost && (categories.empty() || categories.back() != category)) {
        categories.push_back(category);
      }
    }
  }
  std::string text;
  for (const std::string& category : categories) text += (text.empty() ? "" : ", ") + category;
  return text.empty() ? "; it holds no loop" : "; its loops are " + text;
}

bool reportUnknown(const star::Document& document, Log& log) {
  if (hasTag(document, "_atom_site.")) {
    return log.error(0, "this is an mmCIF file with coordinates, not with chemical shifts");
  }
  std::string text = "the file holds no loop with assigned chemical shifts" + contents(document);
  if (!document.slips.empty()) {
    const star::Fault& first = document.slips.front();
    text += " (line " + std::to_string(first.line) + ": " + first.text + ")";
  }
  return log.error(0, text);
}

}  // namespace

Format starDialect(const star::Document& document) {
  // Shifts decide; without any, what else tells of the molecules.
  if (hasTag(document, "_Atom_chem_shift.")) return Format::NmrStar3;
  if (hasTag(document, "_nef_chemical_shift.")) return Format::Nef;
  if (hasTag(document, "_Chem_shift_value")) return Format::NmrStar2;
  if (hasTag(document, "_nef_")) return Format::Nef;
  if (hasTag(document, "_Assigned_peak_chem_shift.")) return Format::NmrStar3;
  if (hasTag(document, "_Entity_poly_seq.") || hasTag(document, "_Entity.Polymer_seq_one_letter_code")) {
    return Format::NmrStar3;
  }
  if (hasTag(document, "_Mol_residue_sequence")) return Format::NmrStar2;
  return Format::Unknown;
}

bool readStar(Format format, std::string_view text, Entry& entry, Log& log) {
  star::Document document;
  if (!star::parse(text, document, log)) return false;
  if (format == Format::Star) format = starDialect(document);
  bool read = false;
  if (format == Format::Nef) {
    read = readNef(document, entry, log);
  } else if (format == Format::NmrStar2) {
    read = readNmrStar2(document, entry, log);
  } else if (format == Format::NmrStar3) {
    read = readNmrStar3(document, entry, log);
  } else {
    return reportUnknown(document, log);
  }
  if (!read) return false;
  star::reportSlips(document, log);
  return (!entry.shifts.empty() || !entry.chains.empty()) || reportUnknown(document, log);
}

}  // namespace convert
