// Entry point of orbeln-report.
#include <iostream>
#include <string>
#include <vector>

#include "report/program.h"
#include "tables/programFrame.h"

int main(int argc, char** argv) {
  return runProgramFrame("orbeln-report", [&] {
    return report::runProgram(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
  });
}
