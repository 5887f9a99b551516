// The list of files that orbeln-run made in a folder. Only what stands there unchanged may be replaced.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace run {

inline constexpr const char* kManifestName = "orbeln-run.list";

/// Size and hash of a file's bytes.
struct Fingerprint {
  std::uintmax_t size = 0;
  std::uint64_t hash = 0;  ///< FNV-1a: tells edits, not forgeries

  bool operator==(const Fingerprint&) const = default;
};

/// False when `file` is no readable regular file; links count as none.
bool fingerprint(const std::filesystem::path& file, Fingerprint& result);

class Manifest {
 public:
  /// Reads the list of `folder`, empty when there is none. False when a file of that name is no such list.
  bool read(const std::filesystem::path& folder);
  /// Writes it, with `comments` on top. Empty text, or what went wrong.
  std::string write(const std::filesystem::path& folder, const std::vector<std::string>& comments) const;

  void add(const std::string& name, const Fingerprint& print) { files_[name].push_back(print); }
  bool empty() const { return files_.empty(); }
  std::vector<std::string> names() const;
  /// True when the file of that name in `folder` is one that was listed, byte for byte.
  bool made(const std::filesystem::path& folder, const std::string& name) const;

 private:
  // While results are moved into place both the old and the new file of a name are listed.
  std::map<std::string, std::vector<Fingerprint>> files_;
};

}  // namespace run
