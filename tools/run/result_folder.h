// The folder that a run leaves its results in: never half of them, never in place of anything that is not its
// own.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "run/manifest.h"

namespace run {

inline constexpr const char* kWorkName = ".orbeln-run.work";

/// Made and locked by open(); everything is put together in work() and moved into place by publish(). What is
/// left in work() goes with the object, and so do folders made for nothing.
class ResultFolder {
 public:
  explicit ResultFolder(std::filesystem::path folder);
  ~ResultFolder();
  ResultFolder(const ResultFolder&) = delete;
  ResultFolder& operator=(const ResultFolder&) = delete;

  /// Empty text, or why this run cannot work in the folder.
  std::string open();
  const std::filesystem::path& work() const { return work_; }
  /// True when an earlier run left something here.
  bool holdsResults() const { return !manifest_.empty(); }

  /// Why files of these names must not be written here; empty when they may. `inputs`: files that the run
  /// reads.
  std::string conflict(const std::vector<std::string>& names, const std::vector<std::string>& inputs) const;
  /// Moves these files of work() into place and removes what else the earlier run left. Empty text, or what
  /// went wrong.
  std::string publish(const std::vector<std::string>& names, const std::vector<std::string>& inputs,
                      const std::vector<std::string>& comments);

 private:
  std::string make();
  std::string lock();
  void unlock();

  std::filesystem::path folder_, work_;
  std::vector<std::filesystem::path> made_;  ///< folders that open() had to make, outermost first
  Manifest manifest_;
  int lock_ = -1;
};

}  // namespace run
