// Included before every source of the fuzzing build. Readers that end the process throw instead, so that
// the fuzzer goes on with the next input and nothing they hold is lost.
#pragma once

#include <cstdlib>

namespace fuzz {
struct Exit {
  int status;
};
}  // namespace fuzz

namespace std {
[[noreturn]] inline void orbeln_exit(int status) {
  throw fuzz::Exit{status};
}
}  // namespace std

#define exit orbeln_exit
