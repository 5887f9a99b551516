// The command line as an option map.
#include "driver/command_line.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>

#include "tables/text.h"

namespace {

bool isSwitch(std::string_view name) {
  static constexpr std::array<std::string_view, 5> kSwitches = {"noclip", "nodetail", "check", "noann",
                                                                "seqSS"};
  for (const std::string_view candidate : kSwitches) {
    if (name == candidate) return true;
  }
  return false;
}

void addOption(const std::string& piece, const std::vector<std::string>& accepted, CommandLine& result) {
  const std::size_t blank = piece.find(' ');
  const std::string name = piece.substr(0, blank);
  // The last option of a line carries no blank when nothing follows it: it is its own value.
  std::string value = blank == std::string::npos ? piece : text::simplifyWhiteSpace(piece.substr(blank + 1));
  if (name.empty()) return;
  if (std::ranges::find(accepted, name) == accepted.end()) std::cerr << " Invaid arg name -" << name << "\n";
  if (isSwitch(name)) value = "true";
  if (name == "seqSS") result.sequenceOnly = true;
  result.options[name] = value;
}

}  // namespace

CommandLine parseCommandLine(int argc, char** argv, const std::vector<std::string>& accepted) {
  std::string joined;
  for (int i = 1; i < argc; ++i) {
    joined += ' ';
    joined += argv[i];
  }
  CommandLine result;
  for (const std::string& piece : text::split('-', joined)) addOption(piece, accepted, result);
  return result;
}
