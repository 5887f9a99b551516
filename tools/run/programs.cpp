// Where the sibling programs and the installation data are.
#include "run/programs.h"

#include <unistd.h>

#include <filesystem>

#include "common/installation.h"
#include "tables/text.h"

namespace run {

namespace fs = std::filesystem;

namespace {

bool isProgram(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
}

bool holdsTables(const fs::path& folder) {
  std::error_code error;
  return fs::is_directory(folder / "tab", error);
}

}  // namespace

std::string executableFolder() {
  std::error_code error;
  const fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? std::string() : self.parent_path().string();
}

std::string findProgram(const std::string& name, const std::string& folder, const std::string& searchPath) {
  if (!folder.empty() && isProgram(fs::path(folder) / name)) return (fs::path(folder) / name).string();
  for (const std::string& place : text::split(':', searchPath)) {
    if (isProgram(fs::path(place) / name)) return (fs::path(place) / name).string();
  }
  return "";
}

Installation findInstallation(const std::string& given, const std::string& folder) {
  Installation result;
  std::error_code error;
  if (!given.empty()) {
    if (holdsTables(given)) {
      result.folder = fs::absolute(given, error).string();
    } else {
      result.error = "ORBELN_DIR is " + given + ", which holds no folder tab";
    }
    return result;
  }
  if (!folder.empty()) {
    const fs::path here(folder);
    for (const fs::path& candidate :
         {here / "install", here / ".." / "install", here / ".." / "share" / "orbeln"}) {
      if (!holdsTables(candidate)) continue;
      result.folder = fs::weakly_canonical(candidate, error).string();
      result.guessed = true;
      return result;
    }
  }
  result.error =
      "the tables of orbeln are not beside the programs; set ORBELN_DIR to the folder that holds tab";
  return result;
}

std::string describeMaker(const std::string& installation) {
  const std::string identity = tools::installationIdentity(installation);
  return "orbeln-run " ORBELN_VERSION ", tables of " + installation +
         (identity.empty() ? "" : " (installation " + identity + ")");
}

}  // namespace run
