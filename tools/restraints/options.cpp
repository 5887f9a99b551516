// Settings of orbeln-restraints.
#include "restraints/options.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "common/numbers.h"
#include "restraints/writers.h"
#include "tables/text.h"

namespace restraints {

const tools::Program& program() {
  static const tools::Program description{
      "orbeln-restraints",
      "PRED.tab --format FORMAT -o FILE [OPTIONS]",
      "Writes dihedral restraints from a torsion prediction. A restraint is centre +- half width with half "
      "width = max(K x standard deviation, floor). Angles without a prediction, full circles and residues of "
      "other classes are left out and reported. A chi1 restraint needs a residue of the chosen classes, too. "
      "Valine: chi1 and its rotamer class stand in the chi1 table 120 degrees below the torsion N-CA-CB-CG1; "
      "its restraints have the 120 degrees added back.",
      {{"--format", "-f", "FORMAT",
        "xplor (X-PLOR, Xplor-NIH, CNS, ARIA, HADDOCK), cyana, nef, star (NMR-STAR 3.2, with secondary "
        "structure and order parameters), gromacs or amber."},
       {"--output", "-o", "FILE", "Write the restraints to this file, - for standard output."},
       {"--chi1", "", "FILE", "Chi1 table: adds side-chain restraints."},
       {"--into", "", "FILE.nef",
        "Write this NEF file with the restraint list added, chain and residues named as in it."},
       {"--classes", "", "LIST", "Classes to use, separated by commas [Strong,Generous]."},
       {"--drop-bad", "", "",
        "Leave out residues that disagree with the reference structure of the run; else it has no say."},
       {"--input-table", "", "FILE",
        "Input table of the run, for title, chain, names and numbers of the residues [input.tab beside "
        "PRED.tab]."},
       {"--numbers", "", "WHICH",
        "original: residue numbers of the shift file where the input table notes them; table: those of the "
        "prediction table [original]."},
       {"--unknown-types", "", "", "Restraints for residues of unknown type (X), too."},
       {"--factor", "", "K", "Half width in standard deviations [2]."},
       {"--floor", "", "DEG", "Smallest half width of phi and psi in degrees [20]."},
       {"--cap", "", "DEG", "Largest half width in degrees [179]."},
       {"--chi1-floor", "", "DEG", "Smallest half width of chi1 in degrees [30]."},
       {"--chi1-probability", "", "P", "Smallest probability of a rotamer [0.9]."},
       {"--force", "", "K",
        "Force constant: xplor kcal/mol/rad^2 [1.0], gromacs kJ/mol/rad^2 [1000], amber kcal/mol/rad^2 [20]; "
        "cyana, nef and star: weight [1.0]."},
       {"--chain", "-c", "ID",
        "xplor: segid; nef, star: chain code [the one noted in the input table, or A]; gromacs, amber: chain "
        "of "
        "the coordinates."},
       {"--coordinates", "", "FILE",
        "gromacs, amber: .pdb or .gro file with the atoms of the topology, in its order."},
       {"--residue-offset", "", "N",
        "gromacs, amber: count from the table's numbers, the coordinates being N higher."},
       {"--wrap", "", "", "xplor: put 'restraints dihedral ... end' around the assign lines."},
       {"--quiet", "-q", "", "No report on standard error."}},
      "Exit status: 0 written; 1 bad input, or the output cannot be written; 2 wrong usage.\n\n"
      "Examples:\n"
      "  orbeln-restraints pred.tab --format cyana -o pred.aco\n"
      "  orbeln-restraints pred.tab --chi1 predChi1.tab --format xplor -o pred.tbl\n"
      "  orbeln-restraints pred.tab --into protein.nef -o protein_restraints.nef\n"
      "  orbeln-restraints pred.tab --format gromacs --coordinates conf.gro -o dihre.itp\n"};
  return description;
}

namespace {

constexpr std::array<std::pair<std::string_view, Format>, 6> kFormats = {{{"xplor", Format::Xplor},
                                                                          {"cyana", Format::Cyana},
                                                                          {"nef", Format::Nef},
                                                                          {"star", Format::Star},
                                                                          {"gromacs", Format::Gromacs},
                                                                          {"amber", Format::Amber}}};
constexpr std::array<std::string_view, 5> kClasses = {"Strong", "Generous", "Warn", "Dyn", "Bad"};

/// Turns option texts into settings; the first fault is kept.
class OptionReader {
 public:
  OptionReader(const tools::Arguments& given, std::string& fault) : arguments(given), error(fault) {}

  void number(const std::string& name, double& value, double low, double high) {
    if (!arguments.has(name)) return;
    const std::string word = arguments.value(name);
    if (!tools::parseNumber(word, value) || value < low || value > high) {
      fail(name + " needs " + print("a number from %g to %g", low, high) + ", not '" + word + "'");
    }
  }

  void format(Format& format) {
    const std::string word = arguments.value("--format", arguments.has("--into") ? "nef" : "");
    if (word.empty()) return fail("option --format is missing");
    for (const auto& [name, known] : kFormats) {
      if (name != word) continue;
      format = known;
      return;
    }
    fail("unknown format '" + word + "': xplor, cyana, nef, star, gromacs or amber");
  }

  void classes(std::set<std::string>& classes) {
    if (!arguments.has("--classes")) return;
    classes.clear();
    for (const std::string& word : text::split(',', arguments.value("--classes"))) {
      const std::string raised = text::upper(text::trim(word));
      if (raised == "NONE") return fail("class None has no angles and gives no restraints");
      const auto known = std::find_if(kClasses.begin(), kClasses.end(),
                                      [&](std::string_view name) { return text::upper(name) == raised; });
      if (known == kClasses.end()) {
        return fail("unknown class '" + word + "': Strong, Generous, Warn, Dyn or Bad");
      }
      classes.emplace(*known);
    }
    if (classes.empty()) fail("option --classes names no class");
  }

  void numbers(bool& ofTable) {
    const std::string which = arguments.value("--numbers", "original");
    ofTable = which == "table";
    if (!ofTable && which != "original") fail("--numbers is original or table, not '" + which + "'");
  }

  void fail(const std::string& what) {
    if (error.empty()) error = what;
  }

 private:
  const tools::Arguments& arguments;
  std::string& error;
};

/// What cannot be judged option by option.
std::string checkTogether(const Options& options) {
  if (options.outputFile.empty()) return "option -o is missing";
  if (!options.intoFile.empty() && options.format != Format::Nef) return "--into is for the format nef";
  if (options.dropBad && options.classes.contains("Bad"))
    return "--drop-bad and class Bad exclude each other";
  if (options.floor > options.cap) return "--floor is larger than --cap";
  const bool needsAtoms = options.format == Format::Gromacs || options.format == Format::Amber;
  if (needsAtoms && options.coordinateFile.empty()) {
    return "this format counts atoms: --coordinates FILE.pdb or FILE.gro is needed";
  }
  if (options.format == Format::Xplor && options.chain.size() > 4) {
    return "a segid has at most four characters";
  }
  for (const char c : options.chain) {
    if (c <= ' ' || c > '~' || c == '"' || c == '\'') return "--chain takes letters and digits only";
  }
  return {};
}

void readNumbers(const tools::Arguments& arguments, OptionReader& reader, Options& options) {
  reader.number("--factor", options.factor, 0, 100);
  reader.number("--floor", options.floor, 0.1, 179);
  reader.number("--cap", options.cap, 0.1, 179);
  reader.number("--chi1-floor", options.chi1Floor, 0.1, 179);
  reader.number("--chi1-probability", options.chi1Probability, 0, 1);
  double offset = 0, force = 0;
  reader.number("--residue-offset", offset, -1e6, 1e6);
  options.residueOffset = static_cast<int>(std::lround(offset));
  reader.number("--force", force, 1e-6, 1e9);
  if (arguments.has("--force")) options.force = force;
}

}  // namespace

std::string readOptions(const tools::Arguments& arguments, Options& options) {
  std::string error = arguments.error;
  OptionReader reader(arguments, error);
  std::vector<std::string> words = arguments.words;
  words.insert(words.end(), arguments.rest.begin(), arguments.rest.end());
  if (words.empty()) reader.fail("no prediction table given");
  if (words.size() > 1) reader.fail("more than one prediction table: " + words[1]);
  if (!words.empty()) options.predictionFile = words[0];
  options.chi1File = arguments.value("--chi1");
  options.outputFile = arguments.value("--output");
  options.coordinateFile = arguments.value("--coordinates");
  options.chain = arguments.value("--chain");
  options.inputTable = arguments.value("--input-table");
  options.intoFile = arguments.value("--into");
  options.unknownTypes = arguments.has("--unknown-types");
  options.dropBad = arguments.has("--drop-bad");
  options.wrap = arguments.has("--wrap");
  options.quiet = arguments.has("--quiet");
  reader.format(options.format);
  reader.classes(options.classes);
  reader.numbers(options.tableNumbers);
  readNumbers(arguments, reader, options);
  return error.empty() ? checkTogether(options) : error;
}

}  // namespace restraints
