// Companion of the training kit: writes the network inputs that the program itself prepares, so that training
// and prediction can never differ.
//
//   orbeln-dump inputs LIST   residue vectors of the phi/psi and secondary-structure networks
//   orbeln-dump chi1 LIST     fragments handed to the chi1 networks by the second search pass
//   orbeln-dump times         loading time of every table of the installation
//   orbeln-dump verify [DIR]  compares every table with the list that the installation carries
//   orbeln-dump image [DIR]   makes the binary image of the tables, which runs start from when it fits them
//   orbeln-dump image --verify [DIR]  compares the image with its checksums and with every table
//   orbeln-dump identity [DIR]  the short name of the installation DIR, as orbeln-run prints it
//
// LIST holds one job a line: INPUT.tab OUTPUT.tsv [options as for orbeln]. The installation is found as by
// orbeln (ORBELN_DIR or -orbelnDir); the triplet library is read once.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>

#include "base/maps.h"
#include "common/installation.h"
#include "driver/ORBEL.h"
#include "driver/command_line.h"
#include "table_image.h"
#include "table_times.h"
#include "tables/OutputFile.h"
#include "tables/output_text.h"
#include "tables/programFrame.h"
#include "tables/text.h"
#include "tables/wholeFile.h"

namespace {

struct Job {
  std::string input, output;
  std::vector<std::string> options;
};

std::vector<Job> readJobs(const char* path) {
  FileBytes file = readWholeFile(path);
  if (!file.ok) {
    std::cerr << "orbeln-dump: can't open job list " << path << ": " << file.error << "\n";
    std::exit(1);
  }
  std::istringstream list(std::move(file.bytes));
  std::vector<Job> jobs;
  std::string line;
  for (int number = 1; std::getline(list, line); ++number) {
    std::istringstream words(line);
    Job job;
    if (!(words >> job.input)) continue;
    if (!(words >> job.output)) {
      std::cerr << "orbeln-dump: " << path << ":" << number << ": expected INPUT OUTPUT [options]\n";
      std::exit(1);
    }
    for (std::string word; words >> word;) job.options.push_back(word);
    jobs.push_back(std::move(job));
  }
  return jobs;
}

std::unique_ptr<ORBEL> configure(const Job& job) {
  auto run = std::make_unique<ORBEL>();
  std::vector<std::string> words = {"orbeln-dump"};
  words.insert(words.end(), job.options.begin(), job.options.end());
  std::vector<char*> argv;
  argv.reserve(words.size());
  for (std::string& word : words) argv.push_back(word.data());
  run->setArgs(parseCommandLine(static_cast<int>(argv.size()), argv.data(), run->acceptedOptions).options);
  run->inputFile = job.input;  // not through -in: paths may hold hyphens
  run->predPrefix = job.output + ".";
  return run;
}

/// Stages up to the residue vectors.
void prepare(ORBEL& run, std::shared_ptr<const TripletLibrary>& library) {
  run.init();
  run.getResInfo();
  std::remove((run.predPrefix + "AdjCS.tab").c_str());
  if (library == nullptr) {
    library = std::make_shared<TripletLibrary>(
        readTripletLibrary(run.tabDir + run.pathSeparator + "orbel_obsCS.tab", run.atomNames));
  }
  if (run.exclusionList.empty()) {
    run.tripletLibrary = library;
  } else {
    auto reduced = std::make_shared<TripletLibrary>(*library);
    excludeSources(*reduced, run.exclusionList);
    run.tripletLibrary = std::move(reduced);
  }
}

void appendNumbers(std::string& line, const double* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) line += '\t' + cellText(values[i]);
}

void dumpInputs(ORBEL& run, std::ostream& out) {
  run.prepareResidueInputs();
  for (const auto& [resid, inputs] : run.annResidueInputs) {
    std::string line = std::to_string(resid) + '\t' + valueOr(run.sequence, resid) + '\t' +
                       std::to_string(valueOr(run.missingCount, resid));
    appendNumbers(line, inputs.data(), inputs.size());
    const auto& shifts = run.secondaryShift[static_cast<std::size_t>(resid - run.firstResidOption)];
    appendNumbers(line, shifts.data(), shifts.size());
    out << line << '\n';
  }
}

void dumpFragments(const ORBEL& run, int resid, std::ostream& out) {
  CandidateMap fragments = valueOr(run.firstPassSameType, resid);
  run.selectChi1Fragments(resid, fragments);
  int rank = 0;
  for (const auto& [key, entry] : fragments) {
    std::string line = std::to_string(resid) + '\t' + valueOr(run.sequence, resid) + '\t' +
                       std::to_string(++rank) + '\t' + std::to_string(entry) + '\t' +
                       run.fragmentDatabase->source(entry) + '\t' +
                       cellText(static_cast<double>(run.fragmentDatabase->angles(entry)[2]));
    const std::vector<double> input = run.chi1NetworkInput(resid, entry);
    appendNumbers(line, input.data(), input.size());
    out << line << '\n';
  }
}

/// Both search passes; a residue's fragments are taken just before its own second pass, as the pass does.
void dumpChi1(ORBEL& run, std::ostream& out) {
  run.runABP_Prediction();
  std::remove((run.predPrefix + "ABP.tab").c_str());
  run.buildSearchPrior();
  run.loadDatabase();
  run.buildSourceIndex();
  run.runFirstPass();
  for (int resid = run.firstResidOption; resid <= run.lastResidOption; ++resid) {
    if (!run.isSearchable(resid) || !run.checkCSCompleteness(resid)) continue;
    dumpFragments(run, resid, out);
    run.refineResidue(resid);
  }
  if (run.fragmentDatabase->intact()) return;
  std::cerr << "orbeln-dump: the image of " << run.databaseFile << " was written to during the search\n";
  std::exit(1);
}

int noList(const std::string& folder) {
  std::cerr << "orbeln-dump: " << folder << " carries no list of its tables (tab/TABLES.sha256)\n";
  return 1;
}

int identify(const std::string& folder) {
  const std::string identity = tools::installationIdentity(folder);
  if (identity.empty()) return noList(folder);
  std::cout << identity << '\n';
  return 0;
}

int verify(const std::string& folder) {
  const tools::Verification found = tools::verifyInstallation(folder);
  if (!found.listed) return noList(folder);
  for (const std::string& fault : found.faults) std::cerr << "orbeln-dump: " << fault << "\n";
  std::cout << "Installation " << tools::installationIdentity(folder) << ": " << found.tables << " tables, "
            << (found.faults.empty() ? "all as listed" : std::to_string(found.faults.size()) + " faults")
            << '\n';
  return found.faults.empty() ? 0 : 1;
}

/// Makes or checks the image of an installation, given as its folder or the folder of its tables.
int runImage(std::vector<std::string> words) {
  const bool check = !words.empty() && words[0] == "--verify";
  if (check) words.erase(words.begin());
  if (words.size() > 1 || (words.size() == 1 && words[0].starts_with("-"))) {
    std::cerr << "Usage: orbeln-dump image [--verify] [DIR]\n";
    return 1;
  }
  const std::string folder = tools::tableFolder(words.empty() ? configure({})->installDir : words[0]);
  const ImageReport report = check ? verifyTableImage(folder) : writeTableImage(folder);
  for (const std::string& fault : report.faults) std::cerr << "orbeln-dump: " << fault << "\n";
  if (!report.faults.empty()) return 1;
  std::cout << report.tables << (check ? " tables agree with their image\n" : " tables in the image\n");
  return 0;
}

int runDump(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "times") {
    const auto run = configure({});
    if (reportTableTimes(run->tabDir, run->atomNames)) return 0;
    std::cerr << "orbeln-dump: no tables in " << run->tabDir << ": set ORBELN_DIR to an installation\n";
    return 1;
  }
  if (argc >= 2 && std::string_view(argv[1]) == "image") return runImage({argv + 2, argv + argc});
  const std::string mode = argc >= 2 && argc <= 3 ? argv[1] : "";
  if (mode == "verify" || mode == "identity") {
    const std::string folder = argc == 3 ? argv[2] : configure({})->installDir;
    return mode == "verify" ? verify(folder) : identify(folder);
  }
  if (argc != 3 || (mode != "inputs" && mode != "chi1")) {
    std::cerr << "Usage: orbeln-dump inputs|chi1 LIST\n"
                 "       orbeln-dump times\n"
                 "       orbeln-dump verify|identity [DIR]\n"
                 "       orbeln-dump image [--verify] [DIR]\n"
                 "LIST: one job a line, INPUT.tab OUTPUT.tsv [options as for orbeln]\n";
    return 1;
  }
  // The stages report on standard output; the dump goes to files.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  std::shared_ptr<const TripletLibrary> library;
  for (const Job& job : readJobs(argv[2])) {
    const auto run = configure(job);
    if (library == nullptr) run->warnOfDamagedTables();
    prepare(*run, library);
    std::ostringstream out;
    if (mode == "inputs") {
      dumpInputs(*run, out);
    } else {
      dumpChi1(*run, out);
    }
    const WriteOutcome outcome = writeWholeFile(job.output, std::move(out).str());
    if (outcome.state != WriteOutcome::State::Whole) {
      std::cerr << "orbeln-dump: can't write " << job.output << ": " << outcome.reason << "\n";
      return 1;
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return runProgramFrame("orbeln-dump", [&] { return runDump(argc, argv); });
}
