// The driver object: defaults, installation directory, number-to-text helpers.
#include "driver/ORBEL.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ann/CHI1ANN.h"
#include "base/atoms.h"
#include "base/residues.h"

namespace {

constexpr std::array<const char*, 60> kAcceptedOptions = {
    "orbelDir",   "orbelNDir", "orbelnDir", "shiftDir", "pdbDir",     "tabDir",   "predDir",     "in",
    "inTitle",    "star",      "bmrb",      "auto",     "noauto",     "graph",    "nograph",     "ref",
    "refTitle",   "pdb",       "sum",       "all",      "out",        "homo",     "iso",         "noiso",
    "autoproton", "noproton",  "proton",    "offset",   "map",        "db",       "w",           "rand",
    "adj",        "prev",      "next",      "limits",   "noautoExcl", "autoExcl", "excl",        "first",
    "last",       "thresh",    "count",     "clip",     "noclip",     "path",     "nopath",      "nofast",
    "verb",       "noverb",    "tpct",      "dbpct",    "s2Thresh",   "check",    "blast_check", "seqSS",
    "help",       "alignLen",  "len",       "np"};
constexpr std::array<const char*, 2> kCysteineOptions = {"OxiCysCheck", "noOxiCysCheck"};

/// The separator that `text` uses, empty when it holds none.
std::string separatorIn(const char* text) {
  if (std::strchr(text, '/') != nullptr) return "/";
  if (std::strchr(text, '\\') != nullptr) return "\\";
  return "";
}

/// PATH serves only to tell the platform's separator; no directory is searched.
std::string platformSeparator() {
  const char* path = std::getenv("PATH");
  return path == nullptr ? "\\" : separatorIn(path);
}

}  // namespace

ORBEL::ORBEL() {
  acceptedOptions.assign(kAcceptedOptions.begin(), kAcceptedOptions.end());
  acceptedOptions.insert(acceptedOptions.end(), kCysteineOptions.begin(), kCysteineOptions.end());
  for (const Atom atom : kAtomOrder) atomNames[position(atom)] = atomName(atom);

  installDir = ".";
  pathSeparator = platformSeparator();
  if (const char* directory = std::getenv("ORBELN_DIR"); directory != nullptr) {
    const std::string separator = separatorIn(directory);
    if (!separator.empty()) {
      installDir = directory;
      pathSeparator = separator;
    }
  }
  for (const char code : kAminoAcids) {
    if (hasChi1Rotamers(code)) chi1Networks[code] = nullptr;
  }
}

ORBEL::~ORBEL() = default;

/// Decimal text of `value` in `buffer` (at least 12 characters); the base is not used.
char* ORBEL::itoa(int value, char* buffer, int /*base*/) {
  std::snprintf(buffer, 12, "%d", value);
  return buffer;
}

/// `value` by the conversion "%.<precision>l<conversion>" in `buffer`, which must hold 32 characters for
/// conversion g with precision 6 and up to 420 for f. Unknown conversions become f, precisions above 99
/// become 99, a negative precision leaves the precision out.
char* ORBEL::ftoa(double value, char* buffer, char conversion, int precision) {
  constexpr std::size_t kLongest = 420;  // 309 digits, sign, point, 99 decimals
  const char kind = std::strchr("fFeEgG", conversion) != nullptr && conversion != '\0' ? conversion : 'f';
  std::string format = "%";
  if (precision >= 0) format += "." + std::to_string(std::min(precision, 99));
  format += 'l';
  format += kind;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(buffer, kLongest, format.c_str(), value);
#pragma GCC diagnostic pop
  return buffer;
}

ResidueSpan ORBEL::span() const {
  return {firstResidOption, lastResidOption, shiftFirstResid, shiftLastResid};
}

ShiftRows ORBEL::shiftRows() const {
  return {secondaryShift, firstResidOption, lastResidOption};
}

bool ORBEL::hasReference() const {
  return !referenceFile.empty() && referenceStructure != nullptr && !referenceStructure->isNull();
}
