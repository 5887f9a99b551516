// The binary image beside the text tables of an installation: what its readers made of them, ready for use.
#pragma once

#include <ctime>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tables/MappedFile.h"
#include "tables/imageFormat.h"

namespace image {

/// How a reader holds the bulk of a table: large ones in place, shared with other processes, or always as a
/// copy that nothing can change any more.
enum class Bulk { InPlace, Copied };

/// Plain numbers of a table. Memory stays valid while the object or a copy of it lives.
struct BulkPart {
  std::span<const std::byte> bytes;
  std::shared_ptr<const void> owner;
  std::shared_ptr<const MappedFile> file;  ///< null for a copy

  /// Whether everything that was read from `bytes` so far is what the text says. When it is not, what was
  /// computed from it must be thrown away and computed anew from the text.
  bool intact() const { return file == nullptr || file->intact(); }
};

/// The parts of one table, checked against their checksums. The guide is a copy.
struct ImagedTable {
  std::span<const std::byte> guide;
  std::shared_ptr<const void> guideOwner;
  BulkPart bulk;
};

/// Identity of a text table; nothing when it is no regular file that can be read.
std::optional<TextIdentity> identify(const std::string& path);

/// The table entries of an image, of any content. Empty for anything but a whole header of this version and
/// byte order whose entries lie inside the file.
std::vector<TableEntry> readEntries(const MappedFile& file);

}  // namespace image

/// Every fault of the image makes it look as if it had no such table; the caller then reads the text.
class TableImage {
 public:
  /// The image in the folder of the table `tablePath`.
  explicit TableImage(const std::string& tablePath);

  /// What was made of the text table `path`, in the same folder. Nothing unless the text is the one that the
  /// image was made from (same size, and same time of change or else same content) and the parts are whole.
  std::optional<image::ImagedTable> find(const std::string& path, image::Kind kind,
                                         image::Bulk use = image::Bulk::InPlace) const;

 private:
  std::shared_ptr<const MappedFile> file_;
  std::vector<image::TableEntry> entries_;
};
