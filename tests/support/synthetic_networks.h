// The network weight tables of the synthetic installation.
#pragma once

#include <filesystem>

namespace support {

/// Writes every weight table of every network into `tab`.
void writeNetworks(const std::filesystem::path& tab);

}  // namespace support
