// What the user sees of a run while it goes on: a running line on a terminal, plain ones elsewhere.
#include "run/progress.h"

#include <cstdio>

namespace run {

namespace {

constexpr const char* kClearLine = "\r\033[K";

}  // namespace

std::string Progress::head() const {
  return "[" + std::to_string(line_) + "/" + std::to_string(lines_) + "] " + title_;
}

double Progress::seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void Progress::begin(const std::string& title) {
  ++line_;
  title_ = printable(title);
  start_ = std::chrono::steady_clock::now();
  tick();
}

void Progress::end(const std::string& outcome) {
  std::printf("%s%s: %s (%.1f s)\n", terminal_ ? kClearLine : "", head().c_str(), outcome.c_str(), seconds());
  std::fflush(stdout);
}

void Progress::beginJob(const std::string& title) {
  if (batch_) begin(title);
}

void Progress::endJob(const std::string& outcome) {
  if (batch_) end(outcome);
}

void Progress::beginStep(const std::string& title) {
  if (batch_) {
    step_ = ": " + title;
    tick();
  } else {
    begin(title);
  }
}

void Progress::endStep(const std::string& outcome) {
  if (!batch_) end(outcome);
}

void Progress::tick() {
  if (!terminal_) return;
  std::printf("%s%s%s ... %.0f s", kClearLine, head().c_str(), step_.c_str(), seconds());
  std::fflush(stdout);
}

std::string printable(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    line += byte < ' ' || byte == 0x7F ? (c == '\t' ? ' ' : '?') : c;
  }
  return line;
}

}  // namespace run
