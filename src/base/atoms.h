// The backbone nuclei whose shifts describe a residue, and the orders in which data hold them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// In the order of every per-atom loop, of shift rows and of database entries.
enum class Atom : std::uint8_t { N, HA, C, CA, CB, HN };

inline constexpr std::size_t kAtoms = 6;
using AtomOrder = std::array<Atom, kAtoms>;

inline constexpr AtomOrder kAtomOrder = {Atom::N, Atom::HA, Atom::C, Atom::CA, Atom::CB, Atom::HN};
/// Order of network inputs, of the random coil index and of the columns of the comprehensive table.
inline constexpr AtomOrder kInputOrder = {Atom::HN, Atom::N, Atom::HA, Atom::C, Atom::CA, Atom::CB};
/// Order of columns of the random coil tables.
inline constexpr AtomOrder kCoilOrder = {Atom::N, Atom::C, Atom::CA, Atom::CB, Atom::HN, Atom::HA};

/// Place in a row of values, from 0.
constexpr std::size_t column(Atom atom) {
  return static_cast<std::size_t>(atom);
}
constexpr std::size_t columnIn(const AtomOrder& order, Atom atom) {
  std::size_t i = 0;
  while (order[i] != atom) ++i;
  return i;
}
/// Place in numbered lists, from 1.
constexpr int position(Atom atom) {
  return static_cast<int>(atom) + 1;
}
constexpr const char* atomName(Atom atom) {
  constexpr std::array<const char*, kAtoms> kNames = {"N", "HA", "C", "CA", "CB", "HN"};
  return kNames[column(atom)];
}

constexpr bool isProton(Atom atom) {
  return atom == Atom::HA || atom == Atom::HN;
}
constexpr bool isProton(std::string_view name) {
  return name == atomName(Atom::HA) || name == atomName(Atom::HN);
}

/// Tables may name the amide proton H.
inline std::string backboneName(std::string name) {
  return name == "H" ? atomName(Atom::HN) : name;
}

/// One value per atom, in kAtomOrder.
using ShiftRow = std::array<double, kAtoms>;

/// Secondary shifts in ppm of the residues `first` to `last`, one row each, 9999 = missing.
struct ShiftRows {
  const std::vector<ShiftRow>& rows;
  int first, last;

  /// nullptr outside the range and the rows.
  const ShiftRow* find(int resid) const {
    if (resid < first || resid > last) return nullptr;
    const auto row = static_cast<std::size_t>(std::int64_t{resid} - first);
    return row < rows.size() ? &rows[row] : nullptr;
  }
};

/// Shifts present in the residues `first` to `last`; a residue without a count misses none.
inline int presentShifts(const std::map<int, int>& missingCount, int first, int last) {
  int present = 0;
  for (std::int64_t resid = first; resid <= last; ++resid) {
    const auto missing = missingCount.find(static_cast<int>(resid));
    present += static_cast<int>(kAtoms) - (missing == missingCount.end() ? 0 : missing->second);
  }
  return present;
}
