// The list of tables that an installation carries: what should be there, and a cheap look at what is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct ListedTable {
  std::string sha256;  ///< 64 hexadecimal digits
  std::uintmax_t bytes = 0;
  std::string name;  ///< file name in the table folder
};

/// Name of the list in the table folder. Its lines hold checksum, size and name; '#' starts a comment.
inline constexpr const char* kTableListName = "TABLES.sha256";

struct TableList {
  std::string text;                 ///< as in the file
  std::vector<ListedTable> tables;  ///< in file order
  std::vector<int> unreadable;      ///< numbers of lines, from 1, that are not of this form
};

/// The list in `folder`; nothing where an installation carries none.
std::optional<TableList> readTableList(const std::string& folder);

/// Compares sizes only: one sentence for every listed table that is missing or of another size, and for every
/// line of the list that cannot be read. `without` names tables that are not read from `folder`.
std::vector<std::string> tableSizeFaults(const std::string& folder,
                                         const std::vector<std::string>& without = {});
