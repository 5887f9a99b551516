// One line of the fragment database as numbers.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "base/atoms.h"

/// The initial values are those of fields that a line lacks.
struct DatabaseRecord {
  static constexpr float kNoAngle = 9999.0F;

  std::string_view source;
  char resName = 'X';
  std::uint32_t resid = 0, boxClass = 0;
  std::array<float, 3> angles{kNoAngle, kNoAngle, kNoAngle};
  std::array<float, 2 * kAtoms> shifts{};

  /// Reads a line as the formatted scan "%s %c %u %f %f %f %u" and twelve "%f" would; false when a field is
  /// missing or does not convert. Values that are not finite count as missing. `previousSource`, the name in
  /// the line before, is recognised without a search; `source` points into it or into the line. Behind the
  /// line must stand a newline and what LineReader::kPadding grants.
  bool parse(std::string_view line, std::string_view previousSource);
};
