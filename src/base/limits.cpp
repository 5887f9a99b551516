// What no protein exceeds: larger numbers are mistakes in the input and end the run.
#include "base/limits.h"

#include <cstdlib>
#include <iostream>

void refuse(const std::string& message) {
  std::cerr << message << std::endl;
  std::exit(255);
}

void requireChainLength(std::size_t residues, const std::string& source) {
  if (residues <= static_cast<std::size_t>(kLongestChain)) return;
  refuse(" The sequence in " + source + " is too long for a protein: more than " +
         std::to_string(kLongestChain) + " residues, exit ...");
}

void requireResid(int resid, const std::string& file) {
  if (resid >= -kLargestResid && resid <= kLargestResid) return;
  refuse(" Residue number " + std::to_string(resid) + " in file " + file +
         " is out of range, check the RESID column and DATA FIRST_RESID, exit ...");
}
