// Reference structure: reading of the atom records, torsions, disulfide bonds.
#include "tables/PDB.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>

#include "base/residues.h"
#include "tables/LineReader.h"
#include "tables/text.h"

namespace {

constexpr float kDisulfideLimit = 2.5F;        // largest SG-SG distance of a bond, angstrom
constexpr std::int64_t kDisulfideSpacing = 3;  // cysteines closer in sequence are not tested
constexpr std::size_t kCoordinatesEnd = 54;    // last column of z

using Vector = std::array<double, 3>;

/// Columns `first` to `last` (from 1, inclusive) of a line, as far as the line goes.
std::string_view getField(std::string_view line, std::size_t first, std::size_t last) {
  return first > line.size() ? std::string_view{} : line.substr(first - 1, last - first + 1);
}

bool hasDigit(std::string_view s) {
  return std::any_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// A line cut off before the last column of z may hold half a number: it has no coordinates.
bool hasCoordinates(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line.size() >= kCoordinatesEnd && hasDigit(getField(line, 31, 38)) &&
         hasDigit(getField(line, 39, 46)) && hasDigit(getField(line, 47, 54));
}

/// H -> HN; a leading digit 1 to 3 goes to the end (1HB -> HB1).
std::string normaliseAtomName(std::string_view name) {
  if (name == "H") return "HN";
  std::string result(name);
  if (!result.empty() && result[0] >= '1' && result[0] <= '3') {
    std::rotate(result.begin(), result.begin() + 1, result.end());
  }
  return result;
}

/// Difference of two atom positions, formed in single precision.
Vector difference(const CORdata& from, const CORdata& to) {
  const float dx = to.x - from.x, dy = to.y - from.y, dz = to.z - from.z;
  return {dx, dy, dz};
}

Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double dot(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

std::int32_t shifted(std::int32_t resid, std::int32_t by) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(resid) + static_cast<std::uint32_t>(by));
}

/// Fourth atom of the chi1 torsion; empty for residues without one.
std::string chi1Atom(const std::string& resName) {
  if (resName == "GLY" || resName == "ALA") return "";
  if (resName == "VAL" || resName == "ILE") return "CG1";
  if (resName == "THR") return "OG1";
  if (resName == "SER") return "OG";
  if (resName == "CYS" || resName == "cys") return "SG";
  return "CG";
}

}  // namespace

PDB::PDB(const std::string& path) {
  loaded = loadPDB(path);
}

bool PDB::loadPDB(const std::string& path) {
  fileName = path;
  LineReader reader(path);
  if (!reader.isOpen()) {
    std::cerr << "\tPDB error:: Can't open PDB file " << path << " for reading" << std::endl;
    return false;
  }
  atomTable.clear();
  resName3.clear();
  resName1.clear();
  std::string_view line;
  while (reader.next(line)) {
    if (line.starts_with("TER") || line.starts_with("END")) break;
    if (!line.starts_with("ATOM") || !hasCoordinates(line)) continue;
    CORdata atom = loadPDB_Entry(line);
    resName3[atom.resid] = atom.resName;
    resName1[atom.resid] = getOneAAName(atom.resName);
    firstResid = std::min(firstResid, atom.resid);
    lastResid = std::max(lastResid, atom.resid);
    auto& slot = atomTable[1][atom.resid][atom.atomName];
    slot = std::move(atom);
  }
  for (auto& [resid, code] : resName1) {
    if (code != "C" || !isSSBonded(1, resid)) continue;
    code = "c";
    resName3[resid] = "cys";
  }
  return true;
}

CORdata PDB::loadPDB_Entry(std::string_view line) const {
  const auto number = [line](std::size_t first, std::size_t last) {
    return static_cast<float>(text::toDouble(getField(line, first, last)));
  };
  CORdata atom;
  atom.serial = text::toInt(getField(line, 7, 11));
  atom.atomName = normaliseAtomName(text::trim(getField(line, 12, 16)));
  atom.resName = text::trim(getField(line, 18, 20));
  atom.chainID = getField(line, 22, 22);
  atom.resid = text::toInt(getField(line, 23, 26));
  atom.x = atom.x2 = number(31, 38);
  atom.y = atom.y2 = number(39, 46);
  atom.z = atom.z2 = number(47, 54);
  atom.bFactor = number(61, 66);
  return atom;
}

CORdata PDB::getEntry(std::int32_t model, std::int32_t resid, const std::string& atomName) const {
  const auto residues = atomTable.find(model);
  if (residues == atomTable.end()) return {};
  const auto atoms = residues->second.find(resid);
  if (atoms == residues->second.end()) return {};
  const auto atom = atoms->second.find(atomName);
  return atom == atoms->second.end() ? CORdata{} : atom->second;
}

float PDB::getPhi(std::int32_t model, std::int32_t resid) const {
  return getDihedralAngle(getEntry(model, shifted(resid, -1), "C"), getEntry(model, resid, "N"),
                          getEntry(model, resid, "CA"), getEntry(model, resid, "C"));
}

float PDB::getPsi(std::int32_t model, std::int32_t resid) const {
  return getDihedralAngle(getEntry(model, resid, "N"), getEntry(model, resid, "CA"),
                          getEntry(model, resid, "C"), getEntry(model, shifted(resid, 1), "N"));
}

float PDB::getChi1(std::int32_t model, std::int32_t resid) const {
  const auto name = resName3.find(resid);
  if (name == resName3.end()) return kMissing;
  const std::string fourth = chi1Atom(name->second);
  if (fourth.empty()) return kMissing;
  return getDihedralAngle(getEntry(model, resid, "N"), getEntry(model, resid, "CA"),
                          getEntry(model, resid, "CB"), getEntry(model, resid, fourth));
}

bool PDB::isSSBonded(std::int32_t model, std::int32_t resid) const {
  const auto own = resName1.find(resid);
  if (own == resName1.end() || !isCysteine(own->second)) return false;
  const CORdata sulfur = getEntry(model, resid, "SG");
  if (sulfur.atomName.empty()) return false;
  const float p[3] = {sulfur.x, sulfur.y, sulfur.z};
  for (const auto& [other, code] : resName1) {
    if (!isCysteine(code) || std::abs(std::int64_t{other} - resid) <= kDisulfideSpacing) continue;
    const CORdata partner = getEntry(model, other, "SG");
    const float q[3] = {partner.x, partner.y, partner.z};
    if (!partner.atomName.empty() && getDist(p, q) <= kDisulfideLimit) return true;
  }
  return false;
}

float PDB::getDihedralAngle(const CORdata& a, const CORdata& b, const CORdata& c, const CORdata& d) {
  if (a.atomName.empty() || b.atomName.empty() || c.atomName.empty() || d.atomName.empty()) return kMissing;
  const Vector u = difference(a, b), v = difference(b, c), w = difference(c, d);
  const Vector n1 = cross(u, v), n2 = cross(v, w);
  const auto cosine = static_cast<float>(dot(n1, n2) / std::sqrt(dot(n1, n1) * dot(n2, n2)));
  if (!std::isfinite(cosine)) return kMissing;  // atoms on one line or on one point: no torsion
  const float angle = arccos_(cosine);
  const float sign = static_cast<float>(dot(cross(n1, n2), v)) >= 0.0F ? 1.0F : -1.0F;
  return static_cast<float>(static_cast<double>(angle * sign) * 57.29577951);
}

std::string PDB::getOneAAName(std::string_view name) {
  return {oneLetterCode(name)};
}

float PDB::arccos_(float x) {
  constexpr double kHalfPi = 1.5707963267948966, kPi = 3.141592653589793;
  const double c = std::clamp(x, -1.0F, 1.0F);
  const double s = std::sqrt(1.0 - c * c);
  if (std::abs(c) < 0.5) return static_cast<float>(kHalfPi - std::atan(c / s));
  const double angle = std::atan(s / c);
  return static_cast<float>(c >= 0.5 ? angle : angle + kPi);
}

float PDB::getDist(const float p[3], const float q[3]) {
  const float dx = p[0] - q[0], dy = p[1] - q[1], dz = p[2] - q[2];
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}
