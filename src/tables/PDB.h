// Reference structure: atoms of the first chain and model of a PDB file, torsions, disulfide bonds.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "tables/CORdata.h"

class PDB {
 public:
  static constexpr float kMissing = 9999.0F;

  explicit PDB(const std::string& path);

  bool loadPDB(const std::string& path);
  bool isNull() const { return !loaded; }
  /// Copy of the atom record, or a record with an empty name.
  CORdata getEntry(std::int32_t model, std::int32_t resid, const std::string& atomName) const;
  float getPhi(std::int32_t model, std::int32_t resid) const;   ///< degrees, 9999 = undefined
  float getPsi(std::int32_t model, std::int32_t resid) const;   ///< degrees, 9999 = undefined
  float getChi1(std::int32_t model, std::int32_t resid) const;  ///< degrees, 9999 = undefined
  bool isSSBonded(std::int32_t model, std::int32_t resid) const;

  static float getDihedralAngle(const CORdata& a, const CORdata& b, const CORdata& c, const CORdata& d);
  static float arccos_(float x);  ///< radians; the argument is clamped to -1..1
  static float getDist(const float p[3], const float q[3]);
  /// Three-letter residue name -> one-letter code ("X" when unknown; "cys" -> "c", "his" -> "h").
  static std::string getOneAAName(std::string_view name);

  bool loaded = false;
  std::string fileName;
  std::map<std::int32_t, std::map<std::int32_t, std::map<std::string, CORdata>>> atomTable;  ///< model 1
  std::map<std::int32_t, std::string> resName3;
  std::map<std::int32_t, std::string> resName1;
  std::int32_t firstResid = 9999;
  std::int32_t lastResid = -9999;

 private:
  CORdata loadPDB_Entry(std::string_view line) const;
};
