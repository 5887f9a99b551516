// Entry point: banner, command line, one run, processor time.
#include <ctime>
#include <iostream>
#include <memory>

#include "driver/ORBEL.h"
#include "driver/command_line.h"
#include "tables/programFrame.h"

namespace {

int runOrbel(int argc, char** argv) {
  auto driver = std::make_unique<ORBEL>();
  ORBEL::printInfo();
  if (argc < 2) ORBEL::printSyntax();
  const CommandLine commandLine = parseCommandLine(argc, argv, driver->acceptedOptions);

  const std::clock_t start = std::clock();
  driver->setArgs(commandLine.options);
  driver->warnOfDamagedTables();
  if (commandLine.sequenceOnly) {
    driver->runSeqSS_Prediction();
  } else {
    driver->orbelPredict();
  }
  const float seconds = static_cast<float>(std::clock() - start) / 1000000.0F;
  std::cout << " Running time: " << seconds << " seconds" << std::endl;
  return driver->outputsWhole ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  return runProgramFrame("orbeln", [&] { return runOrbel(argc, argv); });
}
