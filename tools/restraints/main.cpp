// Entry point of orbeln-restraints.
#include <iostream>
#include <string>
#include <vector>

#include "restraints/program.h"

int main(int argc, char** argv) {
  return restraints::runProgram(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
