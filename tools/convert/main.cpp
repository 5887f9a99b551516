// orbeln-convert: chemical shifts of other formats to the input table.
#include <cstdio>

#include "common/arguments.h"
#include "common/files.h"
#include "convert/conversion.h"
#include "convert/names.h"
#include "convert/readers.h"
#include "tables/programFrame.h"

namespace {

constexpr int kBadInput = 1, kChoiceNeeded = 3;

tools::Program program() {
  std::string formats;
  for (const std::string& name : convert::formatNames()) formats += (formats.empty() ? "" : ", ") + name;
  return {"orbeln-convert",
          "INPUT -o TABLE [OPTIONS]",
          "Converts assigned chemical shifts (NMR-STAR 3 and 2.1, NEF, XEASY, Sparky/POKY, SHIFTY, CSV/TSV) "
          "to the "
          "input table of orbeln. The format is recognised by the content. INPUT and TABLE may be '-' for "
          "standard "
          "input and output.",
          {{"--output", "-o", "TABLE", "Write the table to this file."},
           {"--chain", "-c", "ID", "Convert this chain (identifier, PDB chain letter or name)."},
           {"--list", "-l", "ID", "Convert this shift list (identifier or name)."},
           {"--sequence", "-s", "FILE", "Take the sequence from this FASTA or XEASY .seq file."},
           {"--format", "-f", "NAME", "Read INPUT as one of: " + formats + "."},
           {"--first-resid", "", "N", "Give the first residue of the sequence this number."},
           {"--keep-first", "", "", "Where an atom stands twice with different values, take the first one."},
           {"--skip-ambiguous", "", "", "Leave out assignments with ambiguity code 4, 5, 6 or 9."},
           {"--mse-as-met", "", "", "Take selenomethionine (MSE) as methionine."},
           {"--strict", "", "", "Treat warnings as errors."},
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
  settings.firstResid = arguments.value("--first-resid");
  settings.mseAsMet = arguments.has("--mse-as-met");
  settings.keepFirst = arguments.has("--keep-first");
  settings.skipAmbiguous = arguments.has("--skip-ambiguous");
  settings.strict = arguments.has("--strict");
  return settings;
}

/// What is wrong with the command line; empty when nothing is.
std::string usageProblem(const tools::Arguments& arguments, const convert::Settings& settings) {
  if (!arguments.error.empty()) return arguments.error;
  if (arguments.words.size() + arguments.rest.size() != 1) {
    return arguments.words.empty() ? "which file is to be converted?" : "one input file at a time";
  }
  if (arguments.value("--output").empty())
    return "where does the table go? Name it with -o ('-' for standard output)";
  if (!settings.format.empty() && convert::formatNamed(settings.format) == convert::Format::Unknown) {
    return "unknown format '" + settings.format + "'";
  }
  if (!settings.firstResid.empty() && !convert::wholeInteger(settings.firstResid)) {
    return "--first-resid '" + settings.firstResid + "' is no integer";
  }
  return "";
}

/// One error is enough when the conversion failed; the warnings otherwise.
void printMessages(const tools::Log& log) {
  for (const tools::Message& message : log.messages()) {
    const bool wanted = log.failed() ? message.severity == tools::Severity::Error
                                     : message.severity == tools::Severity::Warning;
    if (wanted) std::fprintf(stderr, "orbeln-convert: %s\n", tools::describe(message).c_str());
  }
}

int run(const tools::Arguments& arguments, const convert::Settings& settings) {
  const std::string input = arguments.words.empty() ? arguments.rest.front() : arguments.words.front();
  const std::string output = arguments.value("--output");
  tools::Log log(input == "-" ? "standard input" : input);
  const tools::FileText text = tools::readTextFile(input);
  convert::Conversion conversion;
  bool ambiguous = false;
  if (!text.ok) {
    log.error(0, text.error);
  } else {
    convert::convertText(input, text.text, settings, conversion, ambiguous, log);
  }
  printMessages(log);
  if (log.failed()) return ambiguous ? kChoiceNeeded : kBadInput;
  if (const std::string problem = convert::writeTable(conversion, log, output); !problem.empty()) {
    std::fprintf(stderr, "orbeln-convert: cannot write %s: %s\n",
                 output == "-" ? "standard output" : output.c_str(), problem.c_str());
    return kBadInput;
  }
  if (arguments.has("--quiet")) return 0;
  for (const std::string& line : convert::reportLines(conversion)) {
    std::fprintf(output == "-" ? stderr : stdout, "%s\n", line.c_str());
  }
  return 0;
}

int runConvert(int argc, char** argv) {
  const tools::Program self = program();
  const tools::Arguments arguments =
      tools::parseArguments(self, std::vector<std::string>(argv + 1, argv + argc));
  if (arguments.error.empty() && tools::answeredHelp(self, arguments)) return 0;
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
