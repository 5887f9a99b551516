// A file mapped for reading, whose pages all processes share, and that may change or shrink meanwhile.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>

/// The content can only be relied on while `intact` says so: a file that is written in place changes under
/// the mapping. Reading never ends the process: pages that the file has lost (it was truncated, the disk
/// failed) read as zeros from then on, and the mapping is not intact any more.
class MappedFile {
 public:
  /// Nothing when `path` is no regular file, cannot be read or mapped, or was changed a moment ago (another
  /// change could then go unnoticed, since clocks of file systems tick slowly).
  static std::shared_ptr<const MappedFile> open(const std::string& path);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  std::span<const std::byte> bytes() const { return content; }
  /// Whether the file is as it was when it was opened.
  bool intact() const;
  /// Copies a part straight from the file; false when it does not give all of it.
  bool copy(std::size_t offset, std::span<std::byte> target) const;
  /// Tells the system that a part is about to be read as a whole.
  void expect(std::span<const std::byte> part) const;

 private:
  MappedFile() = default;

  int descriptor = -1;
  struct stat status {};
  std::span<const std::byte> content;
  int slot = -1;  ///< of the guard
};
