// Hints on options of the prediction; nothing is ever switched on by itself.
#include "convert/conversion.h"
#include "tables/text.h"

namespace convert {

namespace {

/// 2H somewhere in the labelling of the protein, as in [U-13C; U-15N; U-2H].
bool isDeuterated(const Entry& entry, const Chain& chain) {
  for (const Labelling& component : entry.labelling) {
    if (component.entity.empty()) continue;
    if (!chain.entity.empty() && component.entity != chain.entity) continue;
    const std::string labelling = text::upper(component.text);
    if (labelling.find("2H") != std::string::npos || labelling.find("-D]") != std::string::npos) return true;
  }
  return false;
}

}  // namespace

void addHints(const Entry& entry, const Chain& chain, Conversion& conversion) {
  const bool amide = conversion.taken.count("HN") > 0;
  const bool alpha = conversion.taken.count("HA") + conversion.taken.count("HA2") > 0;
  if (isDeuterated(entry, chain)) {
    conversion.hints.push_back(
        "the sample is labelled with 2H: run orbeln with -iso if the CA and CB shifts were measured on "
        "deuterated protein");
  } else if (!alpha) {
    conversion.hints.push_back("no HA shifts: if the protein was deuterated, run orbeln with -iso");
  }
  if (!amide && !alpha) {
    conversion.hints.push_back("no proton shifts at all: run orbeln with -noproton");
  }
}

}  // namespace convert
