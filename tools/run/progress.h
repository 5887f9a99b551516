// One line per step: a running one on a terminal, a plain one elsewhere.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace run {

class Progress {
 public:
  Progress(std::size_t steps, bool terminal) : steps_(steps), terminal_(terminal) {}

  void begin(const std::string& title);
  void tick();
  /// Ends the step's line with how it went ("done", "failed") and the time it took.
  void end(const std::string& outcome);

 private:
  std::string head() const;
  double seconds() const;

  std::size_t steps_, step_ = 0;
  bool terminal_;
  std::string title_;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace run
