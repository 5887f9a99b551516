// A whole file as bytes.
#pragma once

#include <cstddef>
#include <string>

struct FileBytes {
  bool ok = false;
  std::string bytes;
  std::string error;  ///< the system's reason when not ok; a directory cannot be read
};

/// The bytes of `path`, at most about the first `most`; of standard input for "-" when `dashIsStandardInput`.
FileBytes readWholeFile(const std::string& path, bool dashIsStandardInput = false,
                        std::size_t most = std::string::npos);
