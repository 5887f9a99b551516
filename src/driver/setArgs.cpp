// Option map -> run settings.
#include <cstdlib>
#include <iostream>

#include "base/maps.h"
#include "driver/ORBEL.h"
#include "tables/text.h"

namespace {

/// Reads options by name; an option written with nothing after it counts as absent for values.
class OptionReader {
 public:
  explicit OptionReader(const OptionMap& options) : options_(options) {}

  bool has(const std::string& name) const { return options_.contains(name); }
  bool hasValue(const std::string& name) const { return !value(name).empty(); }
  std::string value(const std::string& name) const { return valueOr(options_, name); }
  std::string value(const std::string& name, const std::string& fallback) const {
    const std::string given = value(name);
    return given.empty() ? fallback : given;
  }
  void readInt(const std::string& name, int& setting) const {
    if (hasValue(name)) setting = text::toInt(value(name));
  }

 private:
  const OptionMap& options_;
};

void setDirectories(ORBEL& run, const OptionReader& options) {
  run.installDir =
      options.value("orbelDir", options.value("orbelNDir", options.value("orbelnDir", run.installDir)));
  run.tabDir = options.value("tabDir", run.installDir + run.pathSeparator + "tab");
  run.predDir = options.value("predDir", run.predDir);
}

void setInput(ORBEL& run, const OptionReader& options) {
  run.inputFile = options.value("in");
  run.inputTitle = run.inputFile;
  run.inputFile = options.value("star", run.inputFile);
  run.inputTitle = options.value("inTitle", run.inputTitle);
  if (run.inputTitle.empty()) run.inputTitle = "None";
}

void setReference(ORBEL& run, const OptionReader& options) {
  run.referenceFile = options.value("ref", options.value("pdb"));
  if (run.referenceFile == "None" || run.referenceFile == "none") run.referenceFile.clear();
  if (!run.referenceFile.empty()) {
    run.referenceStructure = std::make_unique<PDB>(run.referenceFile);
    if (run.referenceStructure->isNull() || run.referenceStructure->atomTable.empty()) {
      std::cerr << "\tNo reference structure loaded!\n";
      run.referenceStructure.reset();
    }
  }
  run.referenceTitle = options.value("refTitle", run.referenceFile);
  if (run.referenceTitle.empty()) run.referenceTitle = "None";
}

/// The path without the ending of its file name; a dot in a folder's name is none.
std::string outputPrefix(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::size_t dot = path.rfind('.');
  const bool hasEnding = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  return hasEnding ? path.substr(0, dot) : path;
}

void setFileNames(ORBEL& run, const OptionReader& options) {
  const std::string tables = run.tabDir + run.pathSeparator;
  run.databaseFile = options.value("db", tables + "orbel.tab");
  run.weightFile = options.value("w", tables + "weight.tab");
  run.homologyFile = options.value("homo", tables + "homology.tab");
  run.predFile = options.value("sum", options.value("out", run.predFile));
  run.predPrefix = outputPrefix(run.predFile);
  run.predAllFile = options.value("all", run.predPrefix + "All.tab");
  run.randomCoilFile = options.value("rand", tables + "randcoil.tab");
  run.rcAdjFile = options.value("adj", tables + "rcadj.tab");
  run.rcPrevFile = options.value("prev", tables + "rcprev.tab");
  run.rcNextFile = options.value("next", tables + "rcnext.tab");
  run.ssLimitFile = options.value("limits", tables + "sslimit.tab");
  run.isotopeFile = tables + "isoadj.tab";
  run.exclusionList = options.value("excl");
  run.blastCheckFile = options.value("blast_check");
}

/// The search holds position weights for three residues on each side and needs two: 5 to 8 residues.
void checkAlignLength(int alignLength) {
  constexpr int kShortest = 5;
  constexpr int kLongest = 8;
  if (alignLength >= kShortest && alignLength <= kLongest) return;
  std::cerr << " Invalid fragment length " << alignLength << " for -alignLen: " << kShortest << " to "
            << kLongest << " residues are supported, exit ...\n";
  std::exit(255);
}

void setNumbers(ORBEL& run, const OptionReader& options) {
  options.readInt("first", run.firstResidOption);
  options.readInt("last", run.lastResidOption);
  if (options.hasValue("thresh")) {
    run.seqSSThreshold = text::toDouble(options.value("thresh"));
    if (run.seqSSThreshold == 0.0) run.seqSSThreshold = 200.0;
  }
  options.readInt("count", run.topCount);
  if (run.topCount == 0) run.topCount = 10;
  if (options.hasValue("s2Thresh")) {
    run.s2Cutoff = 1.0 - text::toDouble(options.value("s2Thresh"));
    if (!(run.s2Cutoff >= 0.0 && run.s2Cutoff <= 1.0)) run.s2Cutoff = 0.4;
  }
  options.readInt("len", run.alignLength);
  options.readInt("alignLen", run.alignLength);
  checkAlignLength(run.alignLength);
}

void setFlags(ORBEL& run, const OptionReader& options) {
  run.clipOn = !options.has("noclip");
  run.isotopeOn = options.has("iso");
  run.quiet = !options.has("verb");
  run.hidePaths = options.has("nopath") || !options.has("path");
  run.checkOnly = options.has("check");
  run.applyOffsets = options.has("offset");
  run.noProton = options.has("noproton");
  run.noOxiCysCheck = options.has("noOxiCysCheck") && !options.has("OxiCysCheck");
}

}  // namespace

/// Sets every run setting; `-help` ends the process with the usage text. Loads the reference structure.
void ORBEL::setArgs(const OptionMap& options) {
  const OptionReader reader(options);
  if (reader.has("help")) printSyntax();
  reader.readInt("np", threadCount);
  setDirectories(*this, reader);
  setInput(*this, reader);
  setReference(*this, reader);
  setFileNames(*this, reader);
  setNumbers(*this, reader);
  setFlags(*this, reader);
}
