// Which installation is this, and is it whole?
#pragma once

#include <string>
#include <vector>

namespace tools {

/// `folder`/tab where there is one, else `folder` itself.
std::string tableFolder(const std::string& folder);

/// Twelve hexadecimal digits that stand for the tables of an installation (the start of the SHA-256 of their
/// list); empty where it carries no list. `folder` holds tab/, or is the table folder itself.
std::string installationIdentity(const std::string& folder);

struct Verification {
  bool listed = false;              ///< the installation carries a list
  std::size_t tables = 0;           ///< in the list
  std::vector<std::string> faults;  ///< one sentence each
};

/// Compares the checksum of every table with the list: reads the whole installation.
Verification verifyInstallation(const std::string& folder);

}  // namespace tools
