// Whole runs of the program: by residues, by database records, on the shipped installation.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "bench.h"
#include "full_size.h"

namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

/// What one process used.
struct Usage {
  double peak = 0.0;       ///< memory, MB
  double own = 0.0;        ///< most of it that no other process shares, MB, looked at every millisecond
  double processor = 0.0;  ///< user and system time, ms
};

/// Anonymous memory of a process, MB.
double ownMemory(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  double kilobytes = 0.0;
  for (std::string word; status >> word;) {
    if (word == "RssAnon:") status >> kilobytes;
  }
  return kilobytes / 1024.0;
}

/// Runs a shell command; its exit status.
int runShell(const std::string& command, Usage& used) {
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = -1;
  rusage usage{};
  if (child < 0) return -1;
  pid_t ended = 0;
  while ((ended = wait4(child, &status, WNOHANG, &usage)) == 0) {
    used.own = std::max(used.own, ownMemory(child));
    usleep(1000);
  }
  if (ended != child) return -1;
  used.peak = static_cast<double>(usage.ru_maxrss) / 1024.0;
  used.processor = 1e3 * static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                   1e-3 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Runs orbeln in `directory`; the benchmark's time is wall time.
void runProgram(benchmark::State& state, const fs::path& directory, const std::string& installation,
                const std::string& options) {
  const std::string command = "cd '" + directory.string() + "' && ORBELN_DIR='" + installation + "' exec '" +
                              ORBELN_BINARY + "' " + options + " >/dev/null 2>&1";
  Usage used;
  for ([[maybe_unused]] auto _ : state) {
    if (runShell(command, used) != 0) state.SkipWithError("orbeln failed");
  }
  bench::Checksum checksum;
  for (const char* file : {"pred.tab", "predAll.tab", "predChi1.tab", "predABP.tab", "predSS.tab"}) {
    checksum.addText(contents(directory / file));
  }
  checksum.report(state);
  state.counters["peak_MB"] = used.peak;
  state.counters["own_MB"] = used.own;
  state.counters["processor_ms"] = used.processor;
}

fs::path workDirectory() {
  const fs::path directory = fs::path(bench::fullSize()) / "runs";
  fs::create_directories(directory);
  return directory;
}

void runUbiquitin(benchmark::State& state, const std::string& installation) {
  const fs::path directory = workDirectory();
  fs::copy_file(fs::path(ORBELN_EXAMPLES) / "ubiquitin/ubiquitin.tab", directory / "ubiquitin.tab",
                fs::copy_options::overwrite_existing);
  runProgram(state, directory, installation, "-in ubiquitin.tab");
}

void shipped(benchmark::State& state) {
  runUbiquitin(state, ORBELN_INSTALL);
}
BENCHMARK(shipped)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(5);

void fullSize(benchmark::State& state) {
  runUbiquitin(state, bench::fullSize());
}
BENCHMARK(fullSize)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(5);

void shippedText(benchmark::State& state) {
  runUbiquitin(state, bench::withoutImage(ORBELN_INSTALL));
}
BENCHMARK(shippedText)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(5);

void fullSizeText(benchmark::State& state) {
  runUbiquitin(state, bench::withoutImage(bench::fullSize()));
}
BENCHMARK(fullSizeText)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(3);

void byResidues(benchmark::State& state) {
  const auto residues = static_cast<int>(state.range(0));
  const fs::path directory = workDirectory();
  const std::string name = "r" + std::to_string(residues) + ".tab";
  bench::writeInput((directory / name).string(), residues, 5);
  runProgram(state, directory, bench::fullSize(), "-in " + name);
}
BENCHMARK(byResidues)
    ->Arg(76)
    ->Arg(150)
    ->Arg(300)
    ->Arg(600)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

void byRecords(benchmark::State& state) {
  const auto records = static_cast<int>(state.range(0));
  const fs::path directory = workDirectory();
  const std::string name = "db" + std::to_string(records) + ".tab";
  if (!fs::exists(directory / name)) bench::writeDatabase((directory / name).string(), records, 9);
  bench::writeInput((directory / "r76.tab").string(), 76, 5);
  runProgram(state, directory, bench::fullSize(), "-in r76.tab -db " + name);
}
BENCHMARK(byRecords)
    ->Arg(250000)
    ->Arg(500000)
    ->Arg(1000000)
    ->Arg(2330110)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

}  // namespace
