// The stages of one run inside one process, in processor time.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <map>

#include "ann/CHI1ANN.h"
#include "bench.h"
#include "driver/ORBEL.h"

namespace {

namespace fs = std::filesystem;

struct Stage {
  const char* name;
  void (ORBEL::*run)();
};

constexpr Stage kStages[] = {{"init", &ORBEL::init},
                             {"getResInfo", &ORBEL::getResInfo},
                             {"runABP_Prediction", &ORBEL::runABP_Prediction},
                             {"runSS_Prediction", &ORBEL::runSS_Prediction},
                             {"runS2_Prediction", &ORBEL::runS2_Prediction},
                             {"buildSearchPrior", &ORBEL::buildSearchPrior},
                             {"loadDatabase", &ORBEL::loadDatabase},
                             {"buildSourceIndex", &ORBEL::buildSourceIndex},
                             {"runFirstPass", &ORBEL::runFirstPass},
                             {"runSecondPass", &ORBEL::runSecondPass},
                             {"writeTorsionPredictions", &ORBEL::writeTorsionPredictions},
                             {"writeChi1Predictions", &ORBEL::writeChi1Predictions},
                             {"writePredAll", &ORBEL::writePredAll}};

/// Silences the program's output while it lives.
class Silence {
 public:
  Silence() {
    for (const int stream : {1, 2}) {
      std::fflush(nullptr);
      kept_[stream - 1] = dup(stream);
      const int nowhere = open("/dev/null", O_WRONLY);
      dup2(nowhere, stream);
      close(nowhere);
    }
  }
  ~Silence() {
    std::fflush(nullptr);
    std::cout.flush();
    for (const int stream : {1, 2}) {
      dup2(kept_[stream - 1], stream);
      close(kept_[stream - 1]);
    }
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  int kept_[2] = {-1, -1};
};

/// Processor seconds of every stage of a ubiquitin run, and a checksum of its matches.
struct Run {
  explicit Run(const std::string& installation) {
    const Silence silence;
    const fs::path home = fs::current_path();
    const fs::path work = fs::path(bench::fullSize()) / "stages";
    fs::create_directories(work);
    fs::current_path(work);
    ORBEL run;
    run.setArgs(
        {{"in", std::string(ORBELN_EXAMPLES) + "/ubiquitin/ubiquitin.tab"}, {"orbelDir", installation}});
    for (const Stage& stage : kStages) {
      const std::clock_t start = std::clock();
      (run.*stage.run)();
      seconds[stage.name] = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    }
    for (const auto& [resid, entries] : run.matchIndex) {
      for (const auto& [rank, entry] : entries) checksum.addNumber(entry);
    }
    fs::current_path(home);
  }
  std::map<std::string, double> seconds;
  bench::Checksum checksum;
};

void stage(benchmark::State& state, const char* name, bool full) {
  static const Run kFull(bench::fullSize());
  static const Run kShipped(ORBELN_INSTALL);
  const Run& run = full ? kFull : kShipped;
  for ([[maybe_unused]] auto _ : state) state.SetIterationTime(run.seconds.at(name));
  run.checksum.report(state);
}

[[maybe_unused]] const bool kRegistered = [] {
  for (const bool full : {true, false}) {
    for (const Stage& s : kStages) {
      const std::string name = std::string("stage/") + (full ? "fullSize/" : "shipped/") + s.name;
      benchmark::RegisterBenchmark(name.c_str(), stage, s.name, full)
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime()
          ->Iterations(1);
    }
  }
  return true;
}();

}  // namespace
