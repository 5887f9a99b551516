// orbeln-convert: chemical shifts of other formats to the input table.
#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "common/arguments.h"
#include "common/files.h"
#include "common/same_file.h"
#include "convert/conversion.h"
#include "convert/list_choices.h"
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/programFrame.h"

namespace {

constexpr int kBadInput = 1, kChoiceNeeded = 3;
constexpr std::size_t kChoicesInOneLine = 10, kLongestLine = 400;

tools::Program program() {
  std::string formats;
  for (const std::string& name : convert::formatNames()) formats += (formats.empty() ? "" : ", ") + name;
  return {"orbeln-convert",
          "INPUT -o TABLE [OPTIONS]",
          "Converts assigned chemical shifts (NMR-STAR 3 and 2.1, NEF, XEASY, Sparky/POKY, SHIFTY, PIPP, "
          "CSV/TSV) "
          "to the "
          "input table of orbeln. The format is recognised by the content. INPUT and TABLE may be '-' for "
          "standard "
          "input and output.",
          {{"--output", "-o", "TABLE", "Write the table to this file."},
           {"--chain", "-c", "ID", "Convert this chain (identifier, PDB chain letter or name)."},
           {"--list", "-l", "ID", "Convert this shift list (identifier or name)."},
           {"--sequence", "-s", "FILE", "Take the sequence from this FASTA or XEASY .seq file."},
           {"--format", "-f", "NAME", "Read INPUT as one of: " + formats + "."},
           {"--columns", "", "LIST",
            "Columns of a table, by heading or position, as in resid=1,resname=2,atom=3,shift=ppm; also "
            "residue or "
            "assignment (labels such as M1 or M1CA), chain, list, and N, HN, CA ... where each atom has a "
            "column."},
           {"--first-resid", "", "N", "Give the first residue of the sequence this number."},
           {"--list-offset", "", "N", "Move the shifts by N residues against the sequence."},
           {"--keep-first", "", "", "Where an atom stands twice with different values, take the first one."},
           {"--skip-ambiguous", "", "", "Leave out assignments with ambiguity code 4, 5, 6 or 9."},
           {"--mse-as-met", "", "", "Take selenomethionine (MSE) as methionine."},
           {"--modified-as-parent", "", "",
            "Take modified residues (MSE, SEP, HYP ...) as the plain ones they were made from, without the "
            "shifts that the modification changes."},
           {"--strict", "", "", "Refuse to guess: treat warnings as errors."},
           {"--quiet", "-q", "", "Print warnings and errors only."}},
          "Exit status: 0 converted; 1 the input cannot be converted; 2 wrong usage;\n"
          "3 several chains or shift lists, and none was chosen.\n\n"
          "Examples:\n"
          "  orbeln-convert bmr17769.str -o ubiquitin.tab\n"
          "  orbeln-convert dimer.nef --chain B -o monomer.tab\n"
          "  orbeln-convert peaks.list --sequence protein.fasta -o protein.tab\n"};
}

convert::Settings settingsFrom(const tools::Arguments& arguments) {
  convert::Settings settings;
  settings.format = arguments.value("--format");
  settings.chain = arguments.value("--chain");
  settings.list = arguments.value("--list");
  settings.sequenceFile = arguments.value("--sequence");
  settings.columns = arguments.value("--columns");
  settings.firstResid = arguments.value("--first-resid");
  settings.listOffset = convert::wholeInteger(arguments.value("--list-offset")).value_or(0);
  settings.mseAsMet = arguments.has("--mse-as-met");
  settings.keepFirst = arguments.has("--keep-first");
  settings.skipAmbiguous = arguments.has("--skip-ambiguous");
  settings.modifiedAsParent = arguments.has("--modified-as-parent");
  settings.strict = arguments.has("--strict");
  return settings;
}

/// What is wrong with the command line; empty when nothing is.
std::string usageProblem(const tools::Arguments& arguments, const convert::Settings& settings) {
  if (!arguments.error.empty()) return arguments.error;
  if (arguments.words.size() + arguments.rest.size() != 1) {
    return arguments.words.empty() ? "which file is to be converted?" : "one input file at a time";
  }
  if (arguments.value("--output").empty() && !arguments.has("--choices"))
    return "where does the table go? Name it with -o ('-' for standard output)";
  if (!settings.format.empty() && convert::formatNamed(settings.format) == convert::Format::Unknown) {
    return "unknown format '" + settings.format + "'";
  }
  if (!settings.firstResid.empty() && !convert::wholeInteger(settings.firstResid)) {
    return "--first-resid '" + settings.firstResid + "' is no integer";
  }
  if (const std::string offset = arguments.value("--list-offset");
      !offset.empty() && !convert::wholeInteger(offset)) {
    return "--list-offset '" + offset + "' is no integer";
  }
  return "";
}

/// The long form of "choose one": a table in place of one line, where that would be long.
bool printedChoices(const std::string& input, const std::string& text, const convert::Settings& settings,
                    const tools::Log& said) {
  std::vector<convert::Option> found;
  tools::Log log(said.file());
  if (!convert::listOptions(input, text, settings, found, log) || found.empty()) return false;
  const bool longLine =
      std::any_of(said.messages().begin(), said.messages().end(),
                  [](const tools::Message& message) { return message.text.size() > kLongestLine; });
  if (found.size() <= kChoicesInOneLine && !longLine) return false;
  std::fprintf(stderr, "orbeln-convert: %s: error: %zu choices, take one with --chain and --list:\n%s",
               log.file().c_str(), found.size(), convert::optionsTable(found, "  ").c_str());
  return true;
}

int printChoices(const std::string& input, const tools::FileText& text, const convert::Settings& settings) {
  std::vector<convert::Option> found;
  tools::Log log(input == "-" ? "standard input" : input);
  const bool read =
      text.ok ? convert::listOptions(input, text.text, settings, found, log) : log.error(0, text.error);
  if (!read) {
    std::fprintf(stderr, "orbeln-convert: %s\n", tools::describe(log.messages().back()).c_str());
    return kBadInput;
  }
  return tools::writeTextFile("-", convert::optionsTsv(found)).empty() ? 0 : kBadInput;
}

/// One error is enough when the conversion failed; the warnings otherwise.
void printMessages(const tools::Log& log) {
  for (const tools::Message& message : log.messages()) {
    const bool wanted = log.failed() ? message.severity == tools::Severity::Error
                                     : message.severity == tools::Severity::Warning;
    if (wanted) std::fprintf(stderr, "orbeln-convert: %s\n", tools::describe(message).c_str());
  }
}

/// Why `output` must not be written; empty when it may.
std::string outputProblem(const std::string& input, const std::string& output,
                          const convert::Settings& settings) {
  // The .seq beside an XEASY .prot is read unasked.
  const std::string beside = std::filesystem::path(input).replace_extension(".seq").string();
  const std::string lost = tools::overwrittenInput(output, {input, settings.sequenceFile, beside});
  return lost.empty() ? "" : output + ": would overwrite the input " + lost + "; give the table another name";
}

int run(const tools::Arguments& arguments, const convert::Settings& settings) {
  const std::string input = arguments.words.empty() ? arguments.rest.front() : arguments.words.front();
  const std::string output = arguments.value("--output");
  if (const std::string problem = outputProblem(input, output, settings); !problem.empty()) {
    std::fprintf(stderr, "orbeln-convert: %s\n", problem.c_str());
    return kBadInput;
  }
  tools::Log log(input == "-" ? "standard input" : input);
  const tools::FileText text = tools::readTextFile(input);
  if (arguments.has("--choices")) return printChoices(input, text, settings);
  convert::Conversion conversion;
  bool ambiguous = false;
  if (!text.ok) {
    log.error(0, text.error);
  } else {
    convert::convertText(input, text.text, settings, conversion, ambiguous, log);
  }
  if (!ambiguous || !printedChoices(input, text.text, settings, log)) printMessages(log);
  if (log.failed()) return ambiguous ? kChoiceNeeded : kBadInput;
  if (const std::string problem = convert::writeTable(conversion, log, output); !problem.empty()) {
    std::fprintf(stderr, "orbeln-convert: cannot write %s: %s\n",
                 output == "-" ? "standard output" : tools::printable(output).c_str(), problem.c_str());
    return kBadInput;
  }
  if (arguments.has("--quiet")) return 0;
  for (const std::string& line : convert::reportLines(conversion)) {
    std::fprintf(output == "-" ? stderr : stdout, "%s\n", tools::shortened(line, kLongestLine).c_str());
  }
  return 0;
}

int runConvert(int argc, char** argv) {
  const tools::Program self = program();
  const tools::Arguments arguments =
      tools::parseArguments(self, std::vector<std::string>(argv + 1, argv + argc));
  if (arguments.error.empty() && tools::answerHelp(self, arguments)) return 0;
  const convert::Settings settings = settingsFrom(arguments);
  if (const std::string problem = usageProblem(arguments, settings); !problem.empty()) {
    return usageError(self, problem);
  }
  return run(arguments, settings);
}

}  // namespace

int main(int argc, char** argv) {
  return runProgramFrame("orbeln-convert", [&] { return runConvert(argc, argv); });
}
