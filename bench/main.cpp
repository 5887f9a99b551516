// Writes the full-size synthetic installation when it is missing, then runs the benchmarks.
#include <cstdio>
#include <cstdlib>

#include "bench.h"
#include "full_size.h"

int main(int argc, char** argv) {
  if (!bench::writeInstallation(bench::fullSize(), ORBELN_INSTALL "/tab", bench::Size{})) return 1;
  if (std::system("'" ORBELN_DUMP "' image '" ORBELN_FULL_SIZE "' >/dev/null") != 0) return 1;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
