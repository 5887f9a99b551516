// Entry points of libFuzzer: ORBELN_FUZZ names the harness; "list" prints all names.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "fuzz/harness.h"

namespace {
fuzz::Harness chosen{};
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* wanted = std::getenv("ORBELN_FUZZ");
  for (const fuzz::Harness& harness : fuzz::harnesses()) {
    if (wanted != nullptr && std::strcmp(wanted, "list") == 0) std::puts(harness.name.c_str());
    if (wanted != nullptr && harness.name == wanted) chosen = harness;
  }
  if (chosen.run == nullptr) {
    const bool listed = wanted != nullptr && std::strcmp(wanted, "list") == 0;
    if (!listed) std::fputs("ORBELN_FUZZ names no harness\n", stderr);
    std::fflush(nullptr);
    std::_Exit(listed ? 0 : 2);
  }
  std::cout.rdbuf(nullptr);  // what readers say is not looked at
  std::cerr.rdbuf(nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    chosen.run(chosen.name, {reinterpret_cast<const char*>(data), size});
  } catch (const fuzz::Exit&) {  // a reader ended the process
  }
  return 0;
}
