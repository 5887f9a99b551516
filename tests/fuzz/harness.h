// One harness per reader: arbitrary bytes in, no crash, no hang, and what the reader promises about its
// result.
//
// `make fuzz` drives them with libFuzzer; the suite replays tests/fuzz/regressions through the same
// functions.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fuzz {

struct Harness {
  std::string name;  ///< folder of its regression inputs; value of ORBELN_FUZZ
  void (*run)(const std::string& name, std::string_view input);
};

/// All of them. The converter has one for each format that it knows.
std::vector<Harness> harnesses();
std::vector<Harness> coreHarnesses();
std::vector<Harness> toolHarnesses();

/// Ends the process as a crash, naming the broken promise.
void require(bool promise, const char* what);

/// A file in memory with a path that readers can open.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  std::string path() const;

 private:
  int descriptor_;
};

/// A scratch folder in memory, one per process, where harnesses write.
const std::string& scratchFolder();

/// Several files in one input: each begins behind a line "%%% NAME"; what stands before the first is named
/// "".
std::vector<std::pair<std::string, std::string>> sections(std::string_view input);

}  // namespace fuzz
