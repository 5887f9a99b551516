// Which network's phi/psi map stands for a residue.
#pragma once

#include <array>
#include <cstdint>

#include "base/residue_range.h"

/// The two-level network's map, the one of the network for incomplete shifts, or none.
enum class BoxMap : std::uint8_t { None, Full, Hybrid };

struct MapSelection {
  int resid = 0;
  ResidueSpan span;
  int sequenceLast = 0;          ///< last residue of the chain
  std::array<int, 5> missing{};  ///< shifts of the residues resid - 2 .. resid + 2
  bool noProton = false;
};

BoxMap selectMap(const MapSelection& input);
