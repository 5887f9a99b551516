// The readers of the companions: every format of the converter, tables of report and restraints, coordinates.
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/arguments.h"
#include "convert/conversion.h"
#include "convert/readers.h"
#include "fuzz/harness.h"
#include "report/program.h"
#include "restraints/program.h"
#include "tables/GDB.h"

namespace fuzz {

namespace {

constexpr std::string_view kConverter = "convert";

void requireSound(const convert::Conversion& conversion) {
  for (const convert::TableRow& row : conversion.rows) {
    const long long position = static_cast<long long>(row.resid) - conversion.firstResid;
    require(position >= 0 && position < static_cast<long long>(conversion.sequence.size()),
            "every row belongs to a residue of the sequence");
    require(std::isfinite(row.value), "every shift is a number");
    require(conversion.sequence[static_cast<std::size_t>(position)] == row.code, "a row names its residue");
  }
}

/// "convert-nef" reads as NEF, "convert" as what the content looks like. A section "sequence" is a FASTA or
/// .seq file beside it.
void convertShifts(const std::string& name, std::string_view input) {
  convert::Settings settings;
  if (name != kConverter) settings.format = name.substr(kConverter.size() + 1);
  const auto files = sections(input);
  const MemoryFile sequence(files.size() > 1 ? files[1].second : "");
  if (files.size() > 1) settings.sequenceFile = sequence.path();
  convert::Conversion conversion;
  bool ambiguous = false;
  tools::Log log("-");
  const bool ok = convert::convertText("-", files[0].second, settings, conversion, ambiguous, log);
  require(ok != log.failed(), "a failure says why, a success has no error");
  if (!ok) return;
  requireSound(conversion);
  const std::string path = scratchFolder() + "/converted.tab";
  require(convert::writeTable(conversion, log, path).empty(), "the table can be written");
  const GDB table(path);
  require(table.entries.size() == conversion.rows.size(), "the table holds every row");
  require(table.residList.size() == conversion.sequence.size(), "the table holds the whole sequence");
}

/// Writes the sections to the scratch folder, those of other names not at all.
void unpack(std::string_view input, std::initializer_list<std::string_view> names) {
  for (const std::string_view name : names) {
    std::filesystem::remove(scratchFolder() + "/" + std::string(name));
    for (const auto& [section, content] : sections(input)) {
      if (section == name) std::ofstream(scratchFolder() + "/" + section) << content;
    }
  }
}

void makeReport(const std::string&, std::string_view input) {
  unpack(input, {"pred.tab", "predSS.tab", "predS2.tab", "predChi1.tab", "predABP.tab", "predAdjCS.tab",
                 "predAll.tab", "run.log", "ref.pdb"});
  std::vector<std::string> words = {scratchFolder(), "-o", "-", "--json", "-", "--tsv", "-"};
  for (const auto& [option, name] : {std::pair{"--log", "/run.log"}, std::pair{"--ref", "/ref.pdb"}}) {
    if (std::filesystem::exists(scratchFolder() + name)) {
      words.insert(words.end(), {option, scratchFolder() + name});
    }
  }
  std::ostringstream out, err;
  report::runProgram(words, out, err);
}

void makeRestraints(const std::string&, std::string_view input) {
  unpack(input, {"pred.tab", "predChi1.tab", "atoms.pdb"});
  for (const char* format : {"xplor", "cyana", "nef", "gromacs", "amber"}) {
    std::vector<std::string> words = {scratchFolder() + "/pred.tab", "--format", format, "-o", "-"};
    if (std::filesystem::exists(scratchFolder() + "/predChi1.tab"))
      words.insert(words.end(), {"--chi1", scratchFolder() + "/predChi1.tab", "--chi1-probability", "0.4"});
    if (std::filesystem::exists(scratchFolder() + "/atoms.pdb"))
      words.insert(words.end(), {"--coordinates", scratchFolder() + "/atoms.pdb"});
    std::ostringstream out, err;
    const int status = restraints::runProgram(words, out, err);
    require(status == 0 || !err.str().empty(), "a failure says why");
    require(out.str().find("nan") == std::string::npos || status != 0, "no restraint is nan");
  }
}

void readCoordinates(const std::string&, std::string_view input) {
  static const std::string table =
      "%%% pred.tab\nDATA FIRST_RESID 1\nDATA SEQUENCE AGA\n"
      "VARS RESID RESNAME PHI PSI DPHI DPSI DIST S2 COUNT CS_COUNT CLASS\n"
      "FORMAT %4d %s %8.3f %8.3f %8.3f %8.3f %8.3f %5.3f %2d %2d %s\n\n"
      " 2 G -60.000 -40.000 5.000 5.000 0.300 0.900 25 18 Strong\n%%% atoms.pdb\n";
  makeRestraints("", table + std::string(input));
}

void readArguments(const std::string&, std::string_view input) {
  std::vector<std::string> words;
  std::istringstream lines{std::string(input)};
  for (std::string word; std::getline(lines, word);) words.push_back(word);
  const tools::Program program{
      "orbeln-x", "FILE", "", {{"--output", "-o", "FILE", ""}, {"--quiet", "-q", "", ""}}, ""};
  tools::parseArguments(program, words);
}

}  // namespace

std::vector<Harness> toolHarnesses() {
  std::vector<Harness> list = {{"report", makeReport},
                               {"restraints", makeRestraints},
                               {"coordinates", readCoordinates},
                               {"arguments", readArguments},
                               {std::string(kConverter), convertShifts}};
  for (const std::string& format : convert::formatNames()) {
    list.push_back({std::string(kConverter) + "-" + format, convertShifts});
  }
  return list;
}

}  // namespace fuzz
