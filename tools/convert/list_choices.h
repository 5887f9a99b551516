// The chains and shift lists of a file that can be converted.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "convert/entry.h"

namespace convert {

/// One chain with one shift list: what --chain and --list take, and what a user knows them by.
struct Option {
  std::string chain, list;
  std::string chainName, listName;  ///< one line each, cut to a readable length
  std::size_t residues = 0;
  std::size_t shifts = 0;  ///< backbone shifts with a value, more than none
};

/// The pairs of protein chain and list with a backbone shift, in the order of the file; only those that
/// `settings` name where they name a chain or a list.
std::vector<Option> options(const Entry& entry, const Settings& settings);

/// Reads `text` and lists its options. False with an error in `log` for a text that cannot be read, or
/// without any.
bool listOptions(const std::string& file, std::string_view text, const Settings& settings,
                 std::vector<Option>& found, Log& log);

/// Tab-separated with a header line, for programs.
std::string optionsTsv(const std::vector<Option>& found);
/// Aligned columns, for people; every line begins with `indent`.
std::string optionsTable(const std::vector<Option>& found, const std::string& indent);

}  // namespace convert
