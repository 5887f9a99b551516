// Line kinds and FORMAT pieces of the table format, shared by both table readers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class LineKind : std::uint8_t { Other, Remark, Data, Vars, Format };

/// Kind of a line by its first token, in any case.
LineKind lineKind(std::string_view firstToken);

/// The part of a raw line from byte `from`, empty when the line is shorter.
std::string_view tailFrom(std::string_view line, std::size_t from);

inline constexpr std::size_t kRemarkKeyword = 6, kDataKeyword = 4, kVarsKeyword = 4, kFormatKeyword = 6;

/// The `count` pieces of a FORMAT text, each from its '%' up to the next one; empty unless the text holds
/// exactly `count` of them. A '%' directly followed by another yields no piece of its own: the last piece is
/// then a lone "%".
std::vector<std::string> formatPieces(std::string_view format, std::size_t count);
