// Residue, atom and number conventions of the exchange formats, brought to those of the input table.
#include "convert/names.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>

#include "common/residue_variants.h"
#include "tables/text.h"

namespace convert {

namespace {

struct ShiftRange {
  std::string_view atom;
  double low, high;  // ppm, wide of every value seen in diamagnetic proteins
};

constexpr std::array<ShiftRange, 6> kRanges = {{{"N", 80.0, 160.0},
                                                {"HN", 1.0, 18.0},
                                                {"HA", -3.0, 10.0},
                                                {"C", 150.0, 200.0},
                                                {"CA", 35.0, 80.0},
                                                {"CB", 5.0, 85.0}}};

}  // namespace

char residueCode(std::string_view name, bool mseAsMet) {
  if (name.size() == 1) {
    const char c = name[0];
    if (c == 'c') return 'c';
    const char raised = text::upper(name)[0];
    return isStandard(raised) ? raised : 'X';
  }
  const tools::ResidueVariant* known = tools::findResidueVariant(name);
  if (known == nullptr) return 'X';
  if (known->kind != tools::VariantKind::Modified) return known->parent;
  return mseAsMet && known->name == "MSE" ? 'M' : 'X';
}

char parentCode(std::string_view name) {
  const tools::ResidueVariant* known = name.size() > 1 ? tools::findResidueVariant(name) : nullptr;
  return known != nullptr ? known->parent : residueCode(name);
}

bool isStandard(char code) {
  return std::string_view("ACDEFGHIKLMNPQRSTVWYc").find(code) != std::string_view::npos;
}

std::string threeLetterName(char code) {
  if (code == 'c') return "CYSS";
  return isStandard(code) ? std::string(tools::plainResidueName(code)) : std::string(1, code);
}

std::string backboneAtom(char code, std::string_view atom) {
  const std::string name = text::upper(atom);
  if (name == "N" || name == "CA") return name;
  if (name == "H" || name == "HN") return code == 'P' ? "" : "HN";
  if (name == "C" || name == "CO" || name == "C'") return "C";
  if (name == "CB") return code == 'G' ? "" : "CB";
  if (code != 'G') return name == "HA" ? "HA" : "";
  if (name == "HA1" || name == "1HA") return "HA1";
  if (name == "HA2" || name == "HAX" || name == "2HA") return "HA2";
  if (name == "HA3" || name == "HAY") return "HA3";
  for (const std::string_view both : {"HA", "QA", "HA%", "HA#", "HA*", "MA"}) {
    if (name == both) return "HA*";
  }
  return "";
}

std::optional<int> wholeInteger(std::string_view text) {
  const std::string trimmed(text::trim(text));
  if (trimmed.empty()) return std::nullopt;
  char* end = nullptr;
  const long value = std::strtol(trimmed.c_str(), &end, 10);
  if (*end != '\0' || value > INT_MAX / 4 || value < INT_MIN / 4) return std::nullopt;
  return static_cast<int>(value);
}

std::optional<double> wholeNumber(std::string_view text) {
  const std::string trimmed(text::trim(text));
  if (trimmed.empty()) return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(trimmed.c_str(), &end);
  if (*end != '\0') return std::nullopt;
  return value;
}

bool plausibleShift(std::string_view atom, double ppm) {
  const std::string_view kind = atom.starts_with("HA") ? std::string_view("HA") : atom;
  for (const ShiftRange& range : kRanges) {
    if (range.atom == kind) return ppm >= range.low && ppm <= range.high;
  }
  return true;
}

}  // namespace convert
