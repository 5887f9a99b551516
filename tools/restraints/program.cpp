// The program orbeln-restraints: tables in, restraint file and report out.
#include "restraints/program.h"

#include <optional>
#include <ostream>

#include "common/files.h"
#include "restraints/coordinates.h"
#include "restraints/options.h"
#include "restraints/select.h"
#include "restraints/writers.h"

namespace restraints {

namespace {

std::optional<RestraintList> makeList(const Options& options, std::string& error) {
  const auto torsions = predictions::loadTorsions(options.predictionFile, error);
  if (!torsions) return std::nullopt;
  std::vector<Chi1Row> chi1;
  if (!options.chi1File.empty()) {
    auto rows = predictions::loadChi1(options.chi1File, error);
    if (!rows) return std::nullopt;
    chi1 = std::move(*rows);
  }
  RestraintList list = selectRestraints(*torsions, chi1, options);
  if (list.restraints.empty()) {
    error = options.predictionFile + ": no residue gives a restraint with these classes";
    return std::nullopt;
  }
  return list;
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

std::optional<std::string> writeFormat(RestraintList& list, const Options& options, std::string& error) {
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
      return writeNef(list, options);
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
  auto list = makeList(options, error);
  if (!list) return fail(err, error);
  const auto content = writeFormat(*list, options, error);
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
