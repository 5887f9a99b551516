// The command line of orbeln-run.
#include "run/options.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace run {

namespace {

/// Options of orbeln that would take the results elsewhere, or leave none.
constexpr std::array<std::string_view, 9> kOwnOptions = {"in",    "star",  "sum",         "out", "all",
                                                         "check", "seqSS", "blast_check", "help"};
constexpr std::array<std::string_view, 13> kFileOptions = {
    "db",     "w",        "homo",      "rand", "adj",    "prev",     "next",
    "limits", "orbelDir", "orbelNDir", "ref",  "tabDir", "orbelnDir"};

template <class List>
bool listed(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

std::vector<tools::Option> options() {
  return {{"--output", "-o", "DIR",
           "Result folder, made when it is missing. Results of an earlier run in it are replaced when the "
           "new ones "
           "are complete; no other file there is touched [name of INPUT + _orbeln]."},
          {"--all", "-a", "",
           "Every protein chain and every shift list of the input, each in a folder of its own, with a page "
           "and a "
           "table that compare them."},
          {"--chain", "-c", "ID", "Convert this chain."},
          {"--list", "-l", "ID", "Convert this shift list."},
          {"--sequence", "-s", "FILE", "Take the sequence from this FASTA or XEASY .seq file."},
          {"--format", "-f", "NAME", "Format of INPUT, as for orbeln-convert."},
          {"--columns", "", "LIST", "Columns of a table, as for orbeln-convert."},
          {"--first-resid", "", "N", "Give the first residue of the sequence this number."},
          {"--list-offset", "", "N", "Move the shifts by N residues against the sequence."},
          {"--keep-first", "", "", "Of two values of one atom take the first one."},
          {"--skip-ambiguous", "", "", "Leave out ambiguous assignments."},
          {"--mse-as-met", "", "", "Take selenomethionine (MSE) as methionine."},
          {"--modified-as-parent", "", "", "Take modified residues as the plain ones they were made from."},
          {"--strict", "", "", "Treat warnings of the conversion as errors."},
          {"--iso", "-iso", "", "Deuterated protein: isotope correction of CA and CB."},
          {"--noproton", "-noproton", "", "Ignore proton shifts."},
          {"--offset", "-offset", "", "Apply the referencing offsets that the check finds."},
          {"--noOxiCysCheck", "-noOxiCysCheck", "", "Leave the oxidation state of cysteines as it is."},
          {"--ref", "-ref", "PDB", "Compare with this structure."},
          {"--restraints", "", "LIST", "Restraint formats separated by commas, or none [xplor,cyana]."},
          {"--coordinates", "", "FILE", "Structure with the atom numbers for gromacs and amber."},
          {"--classes", "", "LIST", "Classes that give restraints [Strong,Generous]."},
          {"--factor", "", "K", "Half width of restraints in standard deviations [2]."},
          {"--floor", "", "DEG", "Smallest half width of restraints in degrees [20]."},
          {"--numbers", "", "WHICH", "Residue numbers of restraints: original or table [original]."},
          {"--drop-bad", "", "", "With --ref: no restraints for residues of class Bad."},
          {"--unknown-types", "", "", "Restraints for residues of unknown type (X), too."},
          {"--no-report", "", "", "Write no report page."}};
}

}  // namespace

tools::Program runProgram() {
  return {"orbeln-run", "INPUT... [-o DIR] [--all] [OPTIONS] [-- ORBELN-OPTIONS]",
          "From assigned chemical shifts to torsion angles in one command: converts INPUT (any format of "
          "orbeln-convert, or an input table), runs the prediction, writes the report and restraints, all "
          "into one "
          "folder. Several inputs get a folder each, and a page that compares them. INPUT may be '-' for "
          "standard "
          "input. What stands after '--' goes to orbeln as it is.",
          options(),
          "The tables of orbeln are those of ORBELN_DIR, or else found beside the programs.\n\n"
          "Inputs are never changed. A file in the result folder that orbeln-run did not make, or\n"
          "that was edited since, is never replaced or removed: the run says so and ends.\n\n"
          "Exit status: 0 everything was made; 1 a step failed; 2 wrong usage;\n"
          "3 INPUT holds several chains or shift lists, and none was chosen;\n"
          "ended by a signal, it shows the signal.\n\n"
          "Examples:\n"
          "  orbeln-run bmr17769.str\n"
          "  orbeln-run dimer.nef --chain A -o dimer --restraints nef,xplor\n"
          "  orbeln-run titration.str --all -o titration\n"
          "  orbeln-run result/input.tab -o result     (after editing the table)\n"
          "  orbeln-run shifts.str -o run -- -excl 1UBQ\n"};
}

bool namesFile(std::string_view option) {
  return listed(kFileOptions, option);
}

std::string predictionOptionProblem(const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (!word.starts_with('-')) continue;
    const std::string name = word.substr(1, word.find(' ') - 1);
    if (listed(kOwnOptions, name))
      return "-" + name + " of orbeln is not for a run with report and restraints";
  }
  return "";
}

}  // namespace run
