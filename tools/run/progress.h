// What the user sees of a run while it goes on: a running line on a terminal, plain ones elsewhere.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace run {

/// A single run has a line per step; in a batch a whole run has one line.
class Progress {
 public:
  Progress(std::size_t lines, bool terminal, bool batch)
      : lines_(lines), terminal_(terminal), batch_(batch) {}

  /// In a batch: the run that begins now.
  void beginJob(const std::string& title);
  void beginStep(const std::string& title);
  void tick();
  /// Ends the step's line with how it went ("done", "failed") and the time it took.
  void endStep(const std::string& outcome);
  /// Ends the line of a run in a batch.
  void endJob(const std::string& outcome);
  bool batch() const { return batch_; }

 private:
  void begin(const std::string& title);
  std::string head() const;
  double seconds() const;
  void end(const std::string& outcome);

  std::size_t lines_, line_ = 0;
  bool terminal_, batch_;
  std::string title_, step_;
  std::chrono::steady_clock::time_point start_;
};

/// `text` as one line without control characters, which may come from a user's file and must not reach a
/// terminal.
std::string printable(const std::string& text);

}  // namespace run
