#include "fuzz/harness.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace fuzz {

std::vector<Harness> harnesses() {
  std::vector<Harness> all = coreHarnesses();
  for (Harness& harness : toolHarnesses()) all.push_back(std::move(harness));
  return all;
}

void require(bool promise, const char* what) {
  if (promise) return;
  std::fprintf(stderr, "broken promise: %s\n", what);
  std::abort();
}

MemoryFile::MemoryFile(std::string_view content) : descriptor_(memfd_create("input", 0)) {
  while (!content.empty()) {
    const ssize_t written = write(descriptor_, content.data(), content.size());
    require(written > 0, "the input fits into memory");
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

MemoryFile::~MemoryFile() {
  close(descriptor_);
}

std::string MemoryFile::path() const {
  return "/proc/self/fd/" + std::to_string(descriptor_);
}

const std::string& scratchFolder() {
  struct Folder {
    Folder() : path("/dev/shm/orbelnfuzz" + std::to_string(getpid())) {
      std::filesystem::create_directories(path);
    }
    ~Folder() {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    }
    std::string path;
  };
  static const Folder folder;
  return folder.path;
}

std::vector<std::pair<std::string, std::string>> sections(std::string_view input) {
  constexpr std::string_view kMark = "%%% ";
  std::vector<std::pair<std::string, std::string>> files(1);
  while (!input.empty()) {
    const std::size_t end = input.find('\n');
    const std::string_view line = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    if (line.starts_with(kMark)) {
      files.emplace_back(line.substr(kMark.size()), "");
    } else {
      files.back().second += std::string(line) + (end == std::string_view::npos ? "" : "\n");
    }
  }
  return files;
}

}  // namespace fuzz
