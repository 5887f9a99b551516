// The binary image beside the text tables of an installation: what its readers made of them, ready for use.
#include "tables/TableImage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tables/imageHash.h"

namespace image {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kMicrosecond = 1'000;
/// Archives write 1970 or 1980 where they keep no time: nothing before 1981 is taken for a date.
constexpr std::int64_t kFirstDate = 347'155'200 * kSecond;
constexpr std::size_t kLargeBulk = std::size_t{1} << 20;  ///< smaller ones are cheaper to copy than to watch

/// Memory that starts where a part of an image may start.
struct alignas(kAlignment) Line {
  std::byte bytes[kAlignment];
};

/// A text file opened as the readers of tables do.
class OpenText {
 public:
  explicit OpenText(const std::string& path)
      : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
    regular_ = descriptor_ >= 0 && fstat(descriptor_, &status_) == 0 && S_ISREG(status_.st_mode);
  }
  ~OpenText() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenText(const OpenText&) = delete;
  OpenText& operator=(const OpenText&) = delete;

  bool isRegular() const { return regular_; }
  std::uint64_t bytes() const { return static_cast<std::uint64_t>(status_.st_size); }
  std::int64_t modified() const {
    return static_cast<std::int64_t>(status_.st_mtim.tv_sec) * kSecond + status_.st_mtim.tv_nsec;
  }
  std::optional<std::uint64_t> hash() const {
    std::vector<std::byte> buffer(std::size_t{1} << 18);
    ImageHash hash;
    std::size_t filled = buffer.size();
    while (filled == buffer.size()) {
      filled = 0;
      while (filled < buffer.size()) {
        const ssize_t got = read(descriptor_, buffer.data() + filled, buffer.size() - filled);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        filled += static_cast<std::size_t>(got);
      }
      hash.add({buffer.data(), filled});
    }
    return hash.value();
  }

 private:
  int descriptor_;
  bool regular_ = false;
  struct stat status_ {};
};

/// Copies of a file keep its time to the second or microsecond only, as archives and installers store it.
bool isSameTime(std::int64_t recorded, std::int64_t found) {
  if (recorded < kFirstDate || found < kFirstDate) return false;
  const std::int64_t unit = found % kSecond == 0 ? kSecond : found % kMicrosecond == 0 ? kMicrosecond : 1;
  return recorded / unit == found / unit;
}

bool isTextOf(const TextIdentity& recorded, const std::string& path) {
  const OpenText text(path);
  if (!text.isRegular() || text.bytes() != recorded.bytes) return false;
  return isSameTime(recorded.modified, text.modified()) || text.hash() == recorded.hash;
}

bool liesIn(const Part& part, std::size_t fileBytes) {
  return part.offset % kAlignment == 0 && part.offset <= fileBytes && part.bytes <= fileBytes - part.offset;
}

/// A checked copy of a part.
std::shared_ptr<const void> copyOf(const MappedFile& file, const Part& part) {
  const auto bytes = static_cast<std::size_t>(part.bytes);
  const std::shared_ptr<Line[]> lines(new Line[bytes / sizeof(Line) + 1]);
  const std::span<std::byte> target(lines[0].bytes, bytes);
  if (!file.copy(static_cast<std::size_t>(part.offset), target)) return nullptr;
  return ImageHash::of(target) == part.hash ? lines : nullptr;
}

std::span<const std::byte> bytesOf(const std::shared_ptr<const void>& owner, const Part& part) {
  return {static_cast<const std::byte*>(owner.get()), static_cast<std::size_t>(part.bytes)};
}

bool readBulk(const std::shared_ptr<const MappedFile>& file, const Part& part, Bulk use, BulkPart& bulk) {
  if (use == Bulk::Copied || part.bytes < kLargeBulk) {
    bulk.owner = copyOf(*file, part);
    bulk.bytes = bytesOf(bulk.owner, part);
    return bulk.owner != nullptr;
  }
  bulk.file = file;
  bulk.owner = file;
  bulk.bytes =
      file->bytes().subspan(static_cast<std::size_t>(part.offset), static_cast<std::size_t>(part.bytes));
  file->expect(bulk.bytes);
  return ImageHash::of(bulk.bytes) == part.hash && bulk.intact();
}

}  // namespace

std::optional<TextIdentity> identify(const std::string& path) {
  const OpenText text(path);
  if (!text.isRegular()) return std::nullopt;
  const auto hash = text.hash();
  if (!hash) return std::nullopt;
  return TextIdentity{text.bytes(), text.modified(), *hash};
}

std::vector<TableEntry> readEntries(const MappedFile& file) {
  const std::size_t fileBytes = file.bytes().size();
  const auto bytesOfOne = [](auto& value) { return std::as_writable_bytes(std::span(&value, 1)); };
  Header header;
  if (fileBytes < sizeof header || !file.copy(0, bytesOfOne(header))) return {};
  if (header.magic != kMagic || header.byteOrder != kByteOrder || header.version != kVersion) return {};
  if (header.fileBytes != fileBytes || header.tables > kMostTables) return {};
  std::vector<TableEntry> entries(static_cast<std::size_t>(header.tables));
  const auto entryBytes = std::as_writable_bytes(std::span(entries));
  if (entryBytes.size() > fileBytes - sizeof header || !file.copy(sizeof header, entryBytes)) return {};
  const std::uint64_t recorded = header.headerHash;
  header.headerHash = 0;
  ImageHash hash;
  hash.add(bytesOfOne(header));
  hash.add(entryBytes);
  if (hash.value() != recorded) return {};
  const bool inside = std::all_of(entries.begin(), entries.end(), [&](const TableEntry& entry) {
    return liesIn(entry.guide, fileBytes) && liesIn(entry.bulk, fileBytes);
  });
  return inside ? entries : std::vector<TableEntry>();
}

}  // namespace image

TableImage::TableImage(const std::string& tablePath)
    : file_(MappedFile::open(tablePath.substr(0, tablePath.rfind('/') + 1) + image::kFileName)) {
  if (file_ != nullptr) entries_ = image::readEntries(*file_);
}

std::optional<image::ImagedTable> TableImage::find(const std::string& path, image::Kind kind,
                                                   image::Bulk use) const {
  const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
  const auto entry = std::find_if(entries_.begin(), entries_.end(), [&](const image::TableEntry& e) {
    return e.kind == kind && e.tableName() == name;
  });
  if (entry == entries_.end() || !image::isTextOf(entry->text, path)) return std::nullopt;
  image::ImagedTable table;
  table.guideOwner = image::copyOf(*file_, entry->guide);
  table.guide = image::bytesOf(table.guideOwner, entry->guide);
  if (table.guideOwner == nullptr || !image::readBulk(file_, entry->bulk, use, table.bulk))
    return std::nullopt;
  return table;
}
