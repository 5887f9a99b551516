// The list of tables that an installation carries: what should be there, and a cheap look at what is.
#include "tables/tableList.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "tables/text.h"
#include "tables/wholeFile.h"

namespace {

namespace fs = std::filesystem;
constexpr std::size_t kDigits = 64;

bool isChecksum(std::string_view word) {
  return word.size() == kDigits && word.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::optional<ListedTable> parseLine(const std::vector<std::string_view>& words) {
  if (words.size() != 3 || !isChecksum(words[0])) return std::nullopt;
  ListedTable table;
  const char* end = words[1].data() + words[1].size();
  const auto [stop, error] = std::from_chars(words[1].data(), end, table.bytes);
  if (error != std::errc{} || stop != end || words[2].find('/') != std::string_view::npos)
    return std::nullopt;
  table.sha256 = words[0];
  table.name = words[2];
  return table;
}

}  // namespace

std::optional<TableList> readTableList(const std::string& folder) {
  FileBytes file = readWholeFile((fs::path(folder) / kTableListName).string());
  if (!file.ok) return std::nullopt;
  TableList list;
  list.text = std::move(file.bytes);
  int number = 0;
  for (std::size_t start = 0; start < list.text.size(); ++start) {
    const std::size_t end = std::min(list.text.find('\n', start), list.text.size());
    const auto words = text::split_WhiteSpace(std::string_view(list.text).substr(start, end - start));
    ++number;
    start = end;
    if (words.empty() || words[0].starts_with('#')) continue;
    if (auto table = parseLine(words)) {
      list.tables.push_back(std::move(*table));
    } else {
      list.unreadable.push_back(number);
    }
  }
  return list;
}

std::vector<std::string> tableSizeFaults(const std::string& folder, const std::vector<std::string>& without) {
  std::vector<std::string> faults;
  const auto list = readTableList(folder);
  if (!list) return faults;
  for (const ListedTable& table : list->tables) {
    if (std::find(without.begin(), without.end(), table.name) != without.end()) continue;
    const fs::path file = fs::path(folder) / table.name;
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(file, error);
    if (error) {
      faults.push_back("Table " + file.string() + " is missing");
    } else if (bytes != table.bytes) {
      faults.push_back("Table " + file.string() + " is damaged or of another installation: " +
                       std::to_string(bytes) + " bytes, " + std::to_string(table.bytes) + " expected");
    }
  }
  for (const int line : list->unreadable) {
    faults.push_back((fs::path(folder) / kTableListName).string() + ":" + std::to_string(line) +
                     ": damaged line in the list of tables");
  }
  return faults;
}
