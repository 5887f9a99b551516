// One line per step: a running one on a terminal, a plain one elsewhere.
#include "run/progress.h"

#include <cstdio>

namespace run {

namespace {

constexpr const char* kClearLine = "\r\033[K";

}  // namespace

std::string Progress::head() const {
  return "[" + std::to_string(step_) + "/" + std::to_string(steps_) + "] " + title_;
}

double Progress::seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void Progress::begin(const std::string& title) {
  ++step_;
  title_ = title;
  start_ = std::chrono::steady_clock::now();
  tick();
}

void Progress::tick() {
  if (!terminal_) return;
  std::printf("%s%s ... %.0f s", kClearLine, head().c_str(), seconds());
  std::fflush(stdout);
}

void Progress::end(const std::string& outcome) {
  std::printf("%s%s: %s (%.1f s)\n", terminal_ ? kClearLine : "", head().c_str(), outcome.c_str(), seconds());
  std::fflush(stdout);
}

}  // namespace run
