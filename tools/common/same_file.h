// Files by identity: two spellings, a symbolic link or a hard link may all be one file.
#pragma once

#include <string>
#include <vector>

namespace tools {

/// True when both paths lead to one existing file (device and inode, links followed). "-" is no file.
bool sameFile(const std::string& a, const std::string& b);

/// The first of `inputs` that `output` would overwrite; empty when there is none.
std::string overwrittenInput(const std::string& output, const std::vector<std::string>& inputs);

}  // namespace tools
