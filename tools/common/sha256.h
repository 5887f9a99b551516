// SHA-256 (FIPS 180-4) of a text in memory.
#pragma once

#include <string>
#include <string_view>

namespace tools {

/// 64 lower-case hexadecimal digits.
std::string sha256(std::string_view bytes);

}  // namespace tools
