// Entry point of orbeln-restraints.
#include <iostream>
#include <string>
#include <vector>

#include "restraints/program.h"
#include "tables/programFrame.h"

int main(int argc, char** argv) {
  return runProgramFrame("orbeln-restraints", [&] {
    return restraints::runProgram(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
  });
}
