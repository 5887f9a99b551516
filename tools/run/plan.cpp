// The steps from a shift file to the report: which program, with which arguments, leaving which file.
#include "run/plan.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "common/same_file.h"
#include "run/options.h"
#include "run/result_folder.h"
#include "tables/text.h"

namespace run {

namespace fs = std::filesystem;

namespace {

constexpr const char* kReference = "reference.pdb";

/// Options with a value and switches that go to the conversion as they are.
constexpr std::array<const char*, 5> kConvertValues = {"--sequence", "--format", "--columns", "--first-resid",
                                                       "--list-offset"};
constexpr std::array<const char*, 5> kConvertSwitches = {"--keep-first", "--skip-ambiguous", "--mse-as-met",
                                                         "--modified-as-parent", "--strict"};
constexpr std::array<const char*, 4> kPredictSwitches = {"--iso", "--noproton", "--offset",
                                                         "--noOxiCysCheck"};
constexpr std::array<const char*, 4> kRestraintValues = {"--classes", "--factor", "--floor", "--numbers"};
constexpr std::array<const char*, 2> kRestraintSwitches = {"--drop-bad", "--unknown-types"};

struct RestraintFile {
  const char* format;
  const char* name;
  bool needsCoordinates;
};

constexpr std::array<RestraintFile, 6> kRestraintFiles = {{{"xplor", "restraints.tbl", false},
                                                           {"cyana", "restraints.aco", false},
                                                           {"nef", "restraints.nef", false},
                                                           {"star", "restraints.str", false},
                                                           {"gromacs", "restraints.itp", true},
                                                           {"amber", "restraints.rst", true}}};

/// The restraint files to write; `problem` says what is wrong with the list.
std::vector<RestraintFile> restraintFiles(const tools::Arguments& arguments, std::string& problem) {
  std::vector<RestraintFile> wanted;
  const std::string list = arguments.value("--restraints", "xplor,cyana");
  if (list == "none") return wanted;
  for (const std::string& name : text::split(',', list)) {
    const auto file = std::find_if(kRestraintFiles.begin(), kRestraintFiles.end(),
                                   [&](const RestraintFile& known) { return name == known.format; });
    if (file == kRestraintFiles.end()) {
      problem = "unknown restraint format '" + name + "': xplor, cyana, nef, star, gromacs, amber or none";
      return wanted;
    }
    if (file->needsCoordinates && !arguments.has("--coordinates")) {
      problem = "restraints for " + name + " need the atom numbers of your structure: give --coordinates";
      return wanted;
    }
    const bool repeated = std::any_of(wanted.begin(), wanted.end(),
                                      [&](const RestraintFile& known) { return name == known.format; });
    if (!repeated) wanted.push_back(*file);
  }
  return wanted;
}

/// A title that survives the prediction's command line, which is cut at hyphens and blanks simplified.
std::string predictionTitle(std::string title) {
  for (char& c : title) {
    if (c == '-') c = '_';
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  return text::simplifyWhiteSpace(title);
}

Step convertStep(const tools::Arguments& arguments, const Plan& plan) {
  Step step{"convert the shifts", "orbeln-convert", {}, false, "convert.log", {plan.table}, true};
  const Job& job = plan.job;
  step.arguments = {"--output", (fs::path(job.folder) / kWorkName / plan.table).string()};
  const auto add = [&](const char* option, const std::string& value) {
    if (!value.empty()) step.arguments.insert(step.arguments.end(), {option, value});
  };
  add("--chain", job.chain.empty() ? arguments.value("--chain") : job.chain);
  add("--list", job.list.empty() ? arguments.value("--list") : job.list);
  for (const char* option : kConvertValues) add(option, arguments.value(option));
  for (const char* option : kConvertSwitches) {
    if (arguments.has(option)) step.arguments.emplace_back(option);
  }
  step.arguments.insert(step.arguments.end(), {"--", job.text ? "-" : job.input});
  return step;
}

/// What goes to orbeln, with plain names for its files.
std::vector<std::string> predictionWords(const tools::Arguments& arguments, Plan& plan) {
  std::vector<std::string> words = arguments.rest;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    if (!words[i].starts_with('-') || !namesFile(std::string_view(words[i]).substr(1))) continue;
    std::error_code error;
    if (!fs::exists(words[i + 1], error)) continue;
    const std::string name = "given_" + words[i].substr(1);
    plan.links.emplace_back(name, fs::absolute(words[i + 1], error).string());
    words[++i] = name;
  }
  return words;
}

/// The prediction cuts its command line at every hyphen, so it runs in the working folder on plain names.
Step predictStep(const tools::Arguments& arguments, Plan& plan) {
  Step step{"predict the torsion angles", "orbeln", {"-in", plan.table}, true, "orbeln.log", {}, true};
  if (const std::string title = predictionTitle(plan.job.title); !title.empty())
    step.arguments.insert(step.arguments.end(), {"-inTitle", title});
  for (const char* option : kPredictSwitches) {
    if (arguments.has(option)) step.arguments.emplace_back(std::string(option).substr(1));
  }
  if (!plan.reference.empty()) {
    const std::string title = predictionTitle(fs::path(plan.reference).filename().string());
    step.arguments.insert(step.arguments.end(), {"-ref", kReference, "-refTitle", title});
  }
  const std::vector<std::string> given = predictionWords(arguments, plan);
  step.arguments.insert(step.arguments.end(), given.begin(), given.end());
  for (const char* ending : {"", "Chi1", "All", "ABP", "SS", "S2", "AdjCS"}) {
    step.products.push_back(std::string("pred") + ending + ".tab");
  }
  return step;
}

Step reportStep(const Plan& plan) {
  Step step{"write the report", "orbeln-report", {}, true, "report.log", {}, false};
  step.arguments = {".",     "-o",         "report.html", "--json",    "report.json",
                    "--tsv", "report.tsv", "--log",       "orbeln.log"};
  step.products = {"report.html", "report.json", "report.tsv"};
  if (!plan.reference.empty()) step.arguments.insert(step.arguments.end(), {"--ref", kReference});
  step.arguments.insert(step.arguments.end(), {"--title", plan.job.title});
  return step;
}

Step restraintStep(const tools::Arguments& arguments, const RestraintFile& file, const std::string& table) {
  const std::string format = file.format;
  Step step{"write restraints (" + format + ")", "orbeln-restraints", {"pred.tab"}, true,
            "restraints_" + format + ".log",     {file.name},         false};
  step.arguments.insert(step.arguments.end(), {"--chi1", "predChi1.tab", "--input-table", table, "--format",
                                               format, "-o", file.name});
  for (const char* option : kRestraintValues) {
    if (arguments.has(option)) step.arguments.insert(step.arguments.end(), {option, arguments.value(option)});
  }
  for (const char* option : kRestraintSwitches) {
    if (arguments.has(option)) step.arguments.emplace_back(option);
  }
  if (file.needsCoordinates) {
    std::error_code error;
    const fs::path coordinates = fs::absolute(arguments.value("--coordinates"), error);
    step.arguments.insert(step.arguments.end(), {"--coordinates", coordinates.string()});
  }
  return step;
}

}  // namespace

std::vector<std::string> Plan::products() const {
  std::vector<std::string> names;
  for (const Step& step : steps) {
    names.push_back(step.log);
    names.insert(names.end(), step.products.begin(), step.products.end());
  }
  if (!reference.empty() && ownsReference) names.emplace_back(kReference);
  return names;
}

std::string usageProblem(const tools::Arguments& arguments) {
  if (!arguments.error.empty()) return arguments.error;
  if (arguments.words.empty()) return "which file holds the shifts?";
  if (std::count(arguments.words.begin(), arguments.words.end(), "-") > 1)
    return "standard input can be read once";
  std::string problem = predictionOptionProblem(arguments.rest);
  if (problem.empty()) restraintFiles(arguments, problem);
  return problem;
}

std::vector<std::string> namedInputs(const tools::Arguments& arguments) {
  std::vector<std::string> inputs;
  for (const std::string& word : arguments.words) {
    if (word == "-") continue;
    inputs.push_back(word);
    inputs.push_back(
        fs::path(word).replace_extension(".seq").string());  // read unasked beside an XEASY .prot
  }
  for (const char* option : {"--sequence", "--ref", "--coordinates"}) {
    if (arguments.has(option)) inputs.push_back(arguments.value(option));
  }
  inputs.insert(inputs.end(), arguments.rest.begin(), arguments.rest.end());
  return inputs;
}

Plan makePlan(const tools::Arguments& arguments, const Job& job) {
  Plan plan;
  plan.job = job;
  plan.inputs = namedInputs(arguments);
  plan.reference = arguments.value("--ref");
  const fs::path folder(job.folder);
  // The edited table of an earlier run is an input now; what is made of it gets a name of its own.
  if (!tools::overwrittenInput((folder / plan.table).string(), plan.inputs).empty())
    plan.table = "converted.tab";
  plan.ownsReference = !tools::sameFile((folder / kReference).string(), plan.reference);
  plan.steps.push_back(convertStep(arguments, plan));
  plan.steps.push_back(predictStep(arguments, plan));
  if (!arguments.has("--no-report")) plan.steps.push_back(reportStep(plan));
  std::string checked;  // by usageProblem()
  for (const RestraintFile& file : restraintFiles(arguments, checked))
    plan.steps.push_back(restraintStep(arguments, file, plan.table));
  return plan;
}

}  // namespace run
