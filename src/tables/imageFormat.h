// Layout of the binary image of an installation's tables (docs/IMAGE.md).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace image {

inline constexpr const char* kFileName = "TABLES.image";
inline constexpr std::array<char, 8> kMagic = {'O', 'R', 'B', 'E', 'L', 'N', 'I', 'M'};
inline constexpr std::uint32_t kByteOrder = 0x01020304;
/// Raise it whenever the layout, the meaning of a part or what a reader makes of a text table changes.
inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::size_t kAlignment = 64;  ///< of every part, and of every array in it
inline constexpr std::size_t kMostTables = 4096;

enum class Kind : std::uint32_t { Weights = 1, Database = 2, Triplets = 3 };

/// At the start of the file; the table entries follow.
struct Header {
  std::array<char, 8> magic = kMagic;
  std::uint32_t byteOrder = kByteOrder;
  std::uint32_t version = kVersion;
  std::uint64_t fileBytes = 0;
  std::uint64_t tables = 0;
  std::uint64_t headerHash = 0;  ///< of header and entries, with 0 in this place
  std::array<std::uint64_t, 3> reserved{};
};
static_assert(sizeof(Header) == kAlignment);

/// A stretch of the file. A part of no bytes has offset and checksum 0.
struct Part {
  std::uint64_t offset = 0, bytes = 0, hash = 0;
};

/// What identifies a text table. A time of 0 is never taken for a date.
struct TextIdentity {
  std::uint64_t bytes = 0;
  std::int64_t modified = 0;  ///< nanoseconds since 1970
  std::uint64_t hash = 0;
};

/// One text table and what was made of it: a part that readers copy and check before they follow anything in
/// it, and one of plain numbers that is used in place.
struct TableEntry {
  std::array<char, 64> name{};  ///< file name in the folder of the image, filled up with zeros
  Kind kind = Kind::Weights;
  std::uint32_t reserved = 0;
  TextIdentity text;
  std::array<std::uint8_t, 32> sha256{};  ///< of the text
  Part guide, bulk;
  std::array<std::uint64_t, 2> filler{};

  std::string_view tableName() const {
    const std::string_view all(name.data(), name.size());
    return all.substr(0, all.find('\0'));
  }
};
static_assert(sizeof(TableEntry) == 3 * kAlignment);

}  // namespace image
