// The program orbeln-restraints: tables in, restraint file and report out.
#include "restraints/program.h"

#include <filesystem>
#include <optional>
#include <ostream>

#include "common/files.h"
#include "common/numbers.h"
#include "predictions/model.h"
#include "restraints/coordinates.h"
#include "restraints/input_table.h"
#include "restraints/nef_file.h"
#include "restraints/options.h"
#include "restraints/select.h"
#include "restraints/writers.h"

namespace restraints {

namespace {

/// The names of the NEF file that is added to, or those that the input table notes.
std::optional<Labels> makeLabels(const InputTable& input, const std::map<int, char>& sequence,
                                 const std::optional<NefFile>& nef, const Options& options,
                                 std::string& error) {
  Labels labels = labelsFrom(input, options);
  if (nef) return nef->label(sequence, labels, options.chain.empty(), error);
  if (const std::string number = labels.sharedNumber(); !number.empty()) {
    error = input.file + ": two residues have the original number " + number + ": use --numbers table";
  }
  for (const auto& [resid, number] : labels.numbers) {
    int whole = 0;
    if (options.format == Format::Cyana && !tools::parseInteger(number, whole)) {
      error = input.file + ": residue " + number + ": CYANA has no insertion codes: use --numbers table";
    }
  }
  return error.empty() ? std::optional(std::move(labels)) : std::nullopt;
}

std::optional<RestraintList> makeList(const std::optional<NefFile>& nef, const Options& options,
                                      std::string& error) {
  auto torsions = predictions::loadTorsions(options.predictionFile, error);
  if (!torsions) return std::nullopt;
  std::vector<Chi1Row> chi1;
  if (!options.chi1File.empty()) {
    auto rows = predictions::loadChi1(options.chi1File, error);
    if (!rows) return std::nullopt;
    chi1 = std::move(*rows);
  }
  auto input = loadInputTable(options, torsions->sequence, error);
  if (!input) return std::nullopt;
  if (!input->notes.entry.empty()) torsions->title = input->notes.entry;
  auto labels = makeLabels(*input, torsions->sequence, nef, options, error);
  if (!labels) return std::nullopt;
  if (options.format == Format::Nef || options.format == Format::Star) labels->quoteForStar();
  RestraintList list = selectRestraints(*torsions, chi1, options, *labels);
  list.shifts = std::move(input->shifts);
  if (!input->problem.empty()) list.report.push_back("input table not used: " + input->problem);
  if (!list.restraints.empty()) return list;
  error = options.predictionFile + ": no residue gives a restraint with these classes";
  return std::nullopt;
}

/// Atom numbers for the formats that need them; a hint when the structure cannot be the simulated one.
std::optional<AtomNumbers> numberAtoms(RestraintList& list, const Options& options, std::string& error) {
  const Counting counting = options.format == Format::Amber ? Counting::File : Counting::Chain;
  const auto coordinates = CoordinateFile::load(options.coordinateFile, options.chain, counting, error);
  if (!coordinates) return std::nullopt;
  if (!coordinates->hasHydrogens()) {
    list.report.push_back("warning: " + options.coordinateFile +
                          " holds no hydrogens; atom numbers must be those of the simulated system");
  }
  return coordinates->match(list, options.residueOffset, error);
}

std::optional<std::string> starText(const RestraintList& list, const Options& options, std::string& error) {
  const std::filesystem::path file(options.predictionFile);
  predictions::Model model;
  predictions::Tables tables{file.parent_path().string(), file.stem().string(), {"SS", "S2"}};
  if (!loadModel(tables, model, error)) return std::nullopt;
  return writeStar(list, model, options);
}

std::optional<std::string> writeFormat(RestraintList& list, const std::optional<NefFile>& nef,
                                       const Options& options, std::string& error) {
  AtomNumbers atoms;
  if (options.format == Format::Gromacs || options.format == Format::Amber) {
    auto numbers = numberAtoms(list, options, error);
    if (!numbers) return std::nullopt;
    atoms = std::move(*numbers);
  }
  switch (options.format) {
    case Format::Xplor:
      return writeXplor(list, options);
    case Format::Cyana:
      return writeCyana(list, options);
    case Format::Nef:
      if (nef) return nef->with(nefRestraintFrame(list, options, nef->unusedFrame(kNefFrame)));
      if (list.shifts.empty()) {
        list.report.push_back(
            "warning: no input table, and so no shifts, which a complete NEF file has (see --input-table)");
      }
      return writeNef(list, options);
    case Format::Star:
      return starText(list, options, error);
    case Format::Gromacs:
      return writeGromacs(list, options, atoms);
    case Format::Amber:
      return writeAmber(list, options, atoms);
  }
  return std::nullopt;
}

int fail(std::ostream& err, const std::string& message) {
  err << program().name << ": " << message << "\n";
  return 1;
}

}  // namespace

int runProgram(const std::vector<std::string>& words, std::ostream& out, std::ostream& err) {
  const tools::Arguments arguments = tools::parseArguments(program(), words);
  if (tools::answerHelp(program(), arguments, out)) return 0;
  Options options;
  std::string error = readOptions(arguments, options);
  if (!error.empty()) return tools::usageError(program(), error, err);
  std::optional<NefFile> nef;
  if (!options.intoFile.empty() && !(nef = NefFile::load(options.intoFile, error))) return fail(err, error);
  auto list = makeList(nef, options, error);
  if (!list) return fail(err, error);
  const auto content = writeFormat(*list, nef, options, error);
  if (!content) return fail(err, error);
  if (options.outputFile == "-") {
    out << *content;
  } else if (error = tools::writeTextFile(options.outputFile, *content); !error.empty()) {
    return fail(err, "cannot write " + options.outputFile + ": " + error);
  }
  if (!options.quiet) {
    for (const std::string& statement : list->report) err << statement << "\n";
  }
  return 0;
}

}  // namespace restraints
