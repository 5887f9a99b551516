// Settings of orbeln-report.
#include "report/options.h"

#include <vector>

namespace report {

const tools::Program& program() {
  static const tools::Program description{
      "orbeln-report",
      "DIR -o REPORT.html [OPTIONS]",
      "Makes one page to look at from the output tables of a prediction run in DIR. NAME.tab is needed; a "
      "section whose table is missing is left out, and the page says so. At least one of --output, --json "
      "and "
      "--tsv must be given. The page needs no network and no scripts.",
      {{"--output", "-o", "FILE", "Write the HTML page to this file, - for standard output."},
       {"--json", "", "FILE", "Write the same data as JSON."},
       {"--tsv", "", "FILE", "Write the same data as one tab-separated row per residue."},
       {"--stem", "", "NAME",
        "Stem of the table names [pred]: NAME.tab, NAMESS.tab, NAMES2.tab, NAMEChi1.tab, NAMEABP.tab, "
        "NAMEAdjCS.tab, NAMEAll.tab."},
       {"--log", "", "FILE", "Saved output of the run or of its check: outliers and referencing."},
       {"--ref", "", "FILE", "Reference structure (PDB) to show beside the prediction."},
       {"--title", "", "TEXT", "Title of the page [the title in NAME.tab]."},
       {"--quiet", "-q", "", "No messages about missing tables."}},
      "Exit status: 0 written; 1 bad input, or an output cannot be written; 2 wrong usage.\n\n"
      "Example:\n"
      "  orbeln-report . -o report.html --log orbeln.log --json report.json\n"};
  return description;
}

std::string readOptions(const tools::Arguments& arguments, Options& options) {
  if (!arguments.error.empty()) return arguments.error;
  std::vector<std::string> words = arguments.words;
  words.insert(words.end(), arguments.rest.begin(), arguments.rest.end());
  if (words.empty()) return "no directory given";
  if (words.size() > 1) return "more than one directory: " + words[1];
  options.directory = words[0];
  options.stem = arguments.value("--stem", "pred");
  options.htmlFile = arguments.value("--output");
  options.jsonFile = arguments.value("--json");
  options.tsvFile = arguments.value("--tsv");
  options.logFile = arguments.value("--log");
  options.referenceFile = arguments.value("--ref");
  options.title = arguments.value("--title");
  options.quiet = arguments.has("--quiet");
  if (options.stem.empty()) return "--stem is empty";
  if (options.htmlFile.empty() && options.jsonFile.empty() && options.tsvFile.empty()) {
    return "nothing to write: give -o, --json or --tsv";
  }
  return {};
}

}  // namespace report
