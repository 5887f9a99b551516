// The steps from a shift file to the report: which program, with which arguments, leaving which file.
#include "run/plan.h"

#include <array>
#include <filesystem>

#include "tables/text.h"

namespace run {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTable = "input.tab";
constexpr const char* kReference = "reference.pdb";

/// Options with a value and switches that go to the conversion as they are.
constexpr std::array<const char*, 5> kConvertValues = {"--chain", "--list", "--sequence", "--format",
                                                       "--first-resid"};
constexpr std::array<const char*, 4> kConvertSwitches = {"--keep-first", "--skip-ambiguous", "--mse-as-met",
                                                         "--strict"};
constexpr std::array<const char*, 4> kPredictSwitches = {"--iso", "--noproton", "--offset",
                                                         "--noOxiCysCheck"};
constexpr std::array<const char*, 3> kRestraintValues = {"--classes", "--factor", "--floor"};

struct RestraintFile {
  const char* format;
  const char* name;
  bool needsCoordinates;
};

constexpr std::array<RestraintFile, 5> kRestraintFiles = {{{"xplor", "restraints.tbl", false},
                                                           {"cyana", "restraints.aco", false},
                                                           {"nef", "restraints.nef", false},
                                                           {"gromacs", "restraints.itp", true},
                                                           {"amber", "restraints.rst", true}}};

/// "shifts/bmr17769.str" -> "bmr17769_orbeln".
std::string defaultFolder(const std::string& input) {
  const std::string stem = input == "-" ? "" : fs::path(input).stem().string();
  return (stem.empty() ? "shifts" : stem) + "_orbeln";
}

Step convertStep(const tools::Arguments& arguments, const Plan& plan) {
  Step step{"convert the shifts", "orbeln-convert", {}, false, "convert.log", {kTable}, true};
  step.arguments = {"--output", (fs::path(plan.folder) / kTable).string()};
  for (const char* option : kConvertValues) {
    if (arguments.has(option)) step.arguments.insert(step.arguments.end(), {option, arguments.value(option)});
  }
  for (const char* option : kConvertSwitches) {
    if (arguments.has(option)) step.arguments.emplace_back(option);
  }
  step.arguments.insert(step.arguments.end(), {"--", plan.input});
  return step;
}

/// The prediction cuts its command line at every hyphen, so it runs in the result folder on plain names.
Step predictStep(const tools::Arguments& arguments, const Plan& plan) {
  Step step{"predict the torsion angles", "orbeln", {"-in", kTable}, true, "orbeln.log", {}, true};
  for (const char* option : kPredictSwitches) {
    if (arguments.has(option)) step.arguments.emplace_back(std::string(option).substr(1));
  }
  if (!plan.reference.empty()) step.arguments.insert(step.arguments.end(), {"-ref", kReference});
  step.arguments.insert(step.arguments.end(), arguments.rest.begin(), arguments.rest.end());
  for (const char* ending : {"", "Chi1", "All", "ABP", "SS", "S2", "AdjCS"}) {
    step.products.push_back(std::string("pred") + ending + ".tab");
  }
  return step;
}

Step reportStep(const Plan& plan) {
  Step step{"write the report",
            "orbeln-report",
            {".", "-o", "report.html"},
            true,
            "report.log",
            {"report.html"},
            false};
  step.arguments.insert(step.arguments.end(),
                        {"--json", "report.json", "--tsv", "report.tsv", "--log", "orbeln.log"});
  step.products.insert(step.products.end(), {"report.json", "report.tsv"});
  if (!plan.reference.empty()) step.arguments.insert(step.arguments.end(), {"--ref", kReference});
  if (plan.input != "-")
    step.arguments.insert(step.arguments.end(), {"--title", fs::path(plan.input).filename().string()});
  return step;
}

Step restraintStep(const tools::Arguments& arguments, const RestraintFile& file) {
  const std::string format = file.format;
  Step step{"write restraints (" + format + ")", "orbeln-restraints", {"pred.tab"}, true,
            "restraints_" + format + ".log",     {file.name},         false};
  step.arguments.insert(step.arguments.end(),
                        {"--chi1", "predChi1.tab", "--format", format, "-o", file.name});
  for (const char* option : kRestraintValues) {
    if (arguments.has(option)) step.arguments.insert(step.arguments.end(), {option, arguments.value(option)});
  }
  if (file.needsCoordinates) {
    std::error_code error;
    const fs::path coordinates = fs::absolute(arguments.value("--coordinates"), error);
    step.arguments.insert(step.arguments.end(), {"--coordinates", coordinates.string()});
  }
  return step;
}

bool addRestraints(const tools::Arguments& arguments, Plan& plan) {
  const std::string list = arguments.value("--restraints", "xplor,cyana");
  if (list == "none") return true;
  for (const std::string& name : text::split(',', list)) {
    const RestraintFile* wanted = nullptr;
    for (const RestraintFile& file : kRestraintFiles) {
      if (name == file.format) wanted = &file;
    }
    if (wanted == nullptr) {
      plan.error = "unknown restraint format '" + name + "': xplor, cyana, nef, gromacs, amber or none";
      return false;
    }
    if (wanted->needsCoordinates && !arguments.has("--coordinates")) {
      plan.error = "restraints for " + name + " need the atom numbers of your structure: give --coordinates";
      return false;
    }
    plan.steps.push_back(restraintStep(arguments, *wanted));
  }
  return true;
}

}  // namespace

tools::Program runProgram() {
  return {"orbeln-run",
          "INPUT [-o DIR] [OPTIONS] [-- ORBELN-OPTIONS]",
          "From assigned chemical shifts to torsion angles in one command: converts INPUT (any format of "
          "orbeln-convert, or an input table), runs the prediction, writes the report and restraints, all "
          "into one "
          "folder. What stands after '--' goes to orbeln as it is.",
          {{"--output", "-o", "DIR",
            "Result folder, made when it is missing; files of an earlier run are replaced "
            "[name of INPUT + _orbeln]."},
           {"--chain", "-c", "ID", "Convert this chain."},
           {"--list", "-l", "ID", "Convert this shift list."},
           {"--sequence", "-s", "FILE", "Take the sequence from this FASTA or XEASY .seq file."},
           {"--format", "-f", "NAME", "Format of INPUT, as for orbeln-convert."},
           {"--first-resid", "", "N", "Give the first residue of the sequence this number."},
           {"--keep-first", "", "", "Of two values of one atom take the first one."},
           {"--skip-ambiguous", "", "", "Leave out ambiguous assignments."},
           {"--mse-as-met", "", "", "Take selenomethionine (MSE) as methionine."},
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
           {"--no-report", "", "", "Write no report page."}},
          "The tables of orbeln are those of ORBELN_DIR, or else found beside the programs.\n\n"
          "Exit status: 0 everything was made; 1 a step failed; 2 wrong usage;\n"
          "3 INPUT holds several chains or shift lists, and none was chosen.\n\n"
          "Examples:\n"
          "  orbeln-run bmr17769.str\n"
          "  orbeln-run dimer.nef --chain A -o dimer --restraints nef,xplor\n"
          "  orbeln-run shifts.str -o run -- -excl 1UBQ\n"};
}

Plan makePlan(const tools::Arguments& arguments) {
  Plan plan;
  plan.error = arguments.error;
  if (plan.error.empty() && arguments.words.size() != 1) {
    plan.error = arguments.words.empty() ? "which file holds the shifts?" : "one input file at a time";
  }
  if (!plan.error.empty()) return plan;
  std::error_code error;
  plan.input = arguments.words.front();
  plan.folder =
      fs::absolute(arguments.value("--output", defaultFolder(plan.input)), error).lexically_normal().string();
  plan.reference = arguments.value("--ref");
  plan.steps.push_back(convertStep(arguments, plan));
  plan.steps.push_back(predictStep(arguments, plan));
  if (!arguments.has("--no-report")) plan.steps.push_back(reportStep(plan));
  addRestraints(arguments, plan);
  return plan;
}

}  // namespace run
