// Making and checking of the binary image of an installation's tables (docs/IMAGE.md).
#pragma once

#include <string>
#include <vector>

struct ImageReport {
  std::size_t tables = 0;           ///< in the image
  std::vector<std::string> faults;  ///< one sentence each
};

/// Reads the tables in `folder` as the program does and writes the image beside them. Tables that the program
/// could not use as they are stay out of it, each with a fault; the image of the others is written.
ImageReport writeTableImage(const std::string& folder);

/// Compares the image in `folder` with its own checksums and with the SHA-256 of every text table.
ImageReport verifyTableImage(const std::string& folder);
