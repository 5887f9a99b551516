// The stages of one run inside one process, in processor time.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <map>

#include "ann/CHI1ANN.h"
#include "ann/SURFANN.h"
#include "bench.h"
#include "driver/ORBEL.h"
#include "full_size.h"

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
    countWork(run);
    for (const auto& [resid, entries] : run.matchIndex) {
      for (const auto& [rank, entry] : entries) checksum.addNumber(entry);
    }
    fs::current_path(home);
  }

  /// Units of work that a stage cannot do without: what scripts/performance.py makes bounds of.
  void countWork(const ORBEL& run) {
    const auto residues = static_cast<double>(run.annResidueInputs.size());
    SURFANN full(160, 180, 324, 1620, 360, 324, run.tabDir, "surf20");
    SURFANN hybrid(160, 180, 324, 1620, 360, 324, run.tabDir, "surf20_hyb");
    hybrid.setHybrid(1);
    for (SURFANN* network : {&full, &hybrid}) {
      network->loadWeights();
      needed["runABP_Prediction"] += residues * weightsOf(*network);
    }
    if (run.fragmentDatabase->screenKeys != nullptr)
      needed["loadDatabase"] = static_cast<double>(run.fragmentDatabase->imaged.bytes.size());
    for (const auto* lists : {&run.firstPassMatches, &run.firstPassSameType}) {
      for (const auto& [resid, list] : *lists) needed["runFirstPass"] += static_cast<double>(list.size());
    }
    constexpr double kNumbersPerRow = 34.0;
    for (const auto& [resid, entries] : run.matchIndex)
      needed["writePredAll"] += kNumbersPerRow * static_cast<double>(entries.size());
  }
  static double weightsOf(const ANN& network) {
    double sum = 0.0;
    for (const ANN::Layer& layer : network.layers) {
      for (const ANN::LayerMember& member : layer) {
        if (!member.weights.tileStart.empty()) sum += static_cast<double>(member.weights.tileStart.back());
      }
    }
    return sum;
  }

  std::map<std::string, double> seconds, needed;
  bench::Checksum checksum;
};

const Run& runOf(const std::string& installation) {
  static const std::map<std::string, Run> kRuns = [] {
    std::map<std::string, Run> runs;
    runs.try_emplace("fullSize", bench::fullSize());
    runs.try_emplace("shipped", ORBELN_INSTALL);
    runs.try_emplace("shippedText", bench::withoutImage(ORBELN_INSTALL));
    return runs;
  }();
  return kRuns.at(installation);
}

void stage(benchmark::State& state, const char* name, const std::string& installation) {
  const Run& run = runOf(installation);
  for ([[maybe_unused]] auto _ : state) state.SetIterationTime(run.seconds.at(name));
  if (const auto work = run.needed.find(name); work != run.needed.end())
    state.counters["work"] = work->second;
  run.checksum.report(state);
}

[[maybe_unused]] const bool kRegistered = [] {
  for (const std::string installation : {"fullSize", "shipped", "shippedText"}) {
    for (const Stage& s : kStages) {
      const std::string name = "stage/" + installation + "/" + s.name;
      benchmark::RegisterBenchmark(name.c_str(), stage, s.name, installation)
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime()
          ->Iterations(1);
    }
  }
  return true;
}();

}  // namespace
