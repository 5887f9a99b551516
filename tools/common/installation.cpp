// Which installation is this, and is it whole?
#include "common/installation.h"

#include <filesystem>

#include "common/sha256.h"
#include "tables/tableList.h"
#include "tables/wholeFile.h"

namespace tools {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kIdentityDigits = 12;

}  // namespace

std::string tableFolder(const std::string& folder) {
  std::error_code error;
  const fs::path inside = fs::path(folder) / "tab";
  return fs::is_directory(inside, error) ? inside.string() : folder;
}

std::string installationIdentity(const std::string& folder) {
  const auto list = readTableList(tableFolder(folder));
  return list ? sha256(list->text).substr(0, kIdentityDigits) : std::string();
}

Verification verifyInstallation(const std::string& folder) {
  Verification result;
  const std::string tables = tableFolder(folder);
  const auto list = readTableList(tables);
  if (!list) return result;
  result.listed = true;
  result.tables = list->tables.size();
  result.faults = tableSizeFaults(tables);
  for (const ListedTable& table : list->tables) {
    const std::string path = (fs::path(tables) / table.name).string();
    const FileBytes file = readWholeFile(path);
    if (file.bytes.size() != table.bytes) continue;  // named above
    if (!file.ok) {
      result.faults.push_back("Table " + path + " cannot be read: " + file.error);
    } else if (sha256(file.bytes) != table.sha256) {
      result.faults.push_back("Table " + path + " is damaged: its checksum is not the listed one");
    }
  }
  return result;
}

}  // namespace tools
