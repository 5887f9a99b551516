// Build step of the tests: writes the synthetic installation into the directory given as argument.
#include "support/synthetic.h"

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  support::writeInstallation(argv[1]);
  return 0;
}
