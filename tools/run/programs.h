// Where the sibling programs and the installation data are.
#pragma once

#include <string>

namespace run {

/// Folder of the running executable; empty when the system does not tell.
std::string executableFolder();

/// Path of a program: in `folder`, else in a folder of `searchPath` (as PATH); empty when there is none.
std::string findProgram(const std::string& name, const std::string& folder, const std::string& searchPath);

struct Installation {
  std::string folder;    ///< absolute; empty when none was found
  bool guessed = false;  ///< found beside the executable, not given by the user
  std::string error;
};

/// The folder that holds the table folder tab/: `given` (the value of ORBELN_DIR) when it is not empty, else
/// install/ beside or above `folder`, else share/orbeln/ above it.
Installation findInstallation(const std::string& given, const std::string& folder);

/// Which program and which installation made a result, in one line.
std::string describeMaker(const std::string& installation);

}  // namespace run
