// Command lines of the companion programs: options, positional words, help text.
#include "common/arguments.h"

#include <algorithm>
#include <numeric>

#include "common/log.h"
#include "tables/text.h"

#ifndef ORBELN_VERSION
#define ORBELN_VERSION "unknown"
#endif

namespace tools {

namespace {

constexpr std::size_t kHelpColumn = 26;
constexpr std::size_t kHelpWidth = 79;

const Option& helpOption() {
  static const Option option{"--help", "-h", "", "Show this text and exit."};
  return option;
}

const Option& versionOption() {
  static const Option option{"--version", "-V", "", "Show the version and exit."};
  return option;
}

const Option* findOption(const Program& program, const std::string& name) {
  for (const Option* always : {&helpOption(), &versionOption()}) {
    if (name == always->name || name == always->shortName) return always;
  }
  for (const Option& option : program.options) {
    if (name == option.name || (!option.shortName.empty() && name == option.shortName)) return &option;
  }
  return nullptr;
}

/// Number of single-letter edits between two words.
std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row[b.size()];
}

std::string unknownOption(const Program& program, const std::string& name) {
  std::string message = "unknown option " + name;
  std::size_t best = 3;  // more than two edits away is no likely slip
  std::string suggestion;
  for (const Option& option : program.options) {
    const std::size_t distance = editDistance(name, option.name);
    if (distance < best) {
      best = distance;
      suggestion = option.name;
    }
  }
  if (!suggestion.empty()) message += "; did you mean " + suggestion + "?";
  return message;
}

void appendWrapped(std::string& out, const std::string& text, std::size_t indent, std::size_t column) {
  for (const std::string_view word : text::split_WhiteSpace(text)) {
    if (column > indent && column + 1 + word.size() > kHelpWidth) {
      out += "\n" + std::string(indent, ' ');
      column = indent;
    }
    if (column > indent) {
      out += ' ';
      ++column;
    }
    out += word;
    column += word.size();
  }
  out += "\n";
}

void appendOption(std::string& out, const Option& option) {
  std::string head = "  " + (option.shortName.empty() ? std::string("    ") : option.shortName + ", ");
  head += option.name;
  if (!option.value.empty()) head += " " + option.value;
  if (head.size() + 2 > kHelpColumn) {
    out += head + "\n" + std::string(kHelpColumn, ' ');
  } else {
    head.resize(kHelpColumn, ' ');
    out += head;
  }
  appendWrapped(out, option.help, kHelpColumn, kHelpColumn);
}

}  // namespace

std::string Arguments::value(const std::string& name, const std::string& fallback) const {
  const auto it = options.find(name);
  return it == options.end() ? fallback : it->second;
}

Arguments parseArguments(const Program& program, const std::vector<std::string>& arguments) {
  Arguments result;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--") {
      result.rest.assign(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, arguments.end());
      break;
    }
    if (argument.size() < 2 || argument[0] != '-') {
      result.words.push_back(argument);
      continue;
    }
    const std::size_t equals = argument.starts_with("--") ? argument.find('=') : std::string::npos;
    const std::string name = argument.substr(0, equals);
    const Option* option = findOption(program, name);
    if (option == nullptr) {
      result.error = unknownOption(program, name);
      return result;
    }
    const bool valueAttached = equals != std::string::npos;
    if (option->value.empty()) {
      if (valueAttached) result.error = "option " + name + " takes no value";
      result.options[option->name] = "1";
    } else if (valueAttached) {
      result.options[option->name] = argument.substr(equals + 1);
    } else if (i + 1 < arguments.size()) {
      result.options[option->name] = arguments[++i];
    } else {
      result.error = "option " + name + " needs a value: " + option->value;
    }
    if (!result.error.empty()) return result;
  }
  return result;
}

std::string helpText(const Program& program) {
  std::string out = "Usage: " + program.name + " " + program.usage + "\n\n";
  appendWrapped(out, program.description, 0, 0);
  out += "\nOptions:\n";
  for (const Option& option : program.options) appendOption(out, option);
  appendOption(out, helpOption());
  appendOption(out, versionOption());
  if (!program.epilogue.empty()) out += "\n" + program.epilogue;
  return out;
}

int usageError(const Program& program, const std::string& message, std::ostream& err) {
  err << program.name << ": " << printable(message) << "\nUsage: " << program.name << " " << program.usage << "\nTry '"
      << program.name << " --help' for more.\n";
  return 2;
}

bool answerHelp(const Program& program, const Arguments& arguments, std::ostream& out) {
  if (arguments.has("--help")) {
    out << helpText(program);
    return true;
  }
  if (!arguments.has("--version")) return false;
  out << program.name << " " ORBELN_VERSION "\n";
  return true;
}

}  // namespace tools
