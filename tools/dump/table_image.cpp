// Making and checking of the binary image of an installation's tables (docs/IMAGE.md).
#include "table_image.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <optional>
#include <thread>

#include "ann/SSANN.h"
#include "ann/weight_image.h"
#include "common/sha256.h"
#include "driver/ORBEL.h"
#include "search/database_image.h"
#include "shifts/triplet_image.h"
#include "table_times.h"
#include "tables/OutputFile.h"
#include "tables/imageHash.h"
#include "tables/wholeFile.h"

namespace {

namespace fs = std::filesystem;
constexpr std::size_t kPage = 4096;

std::optional<image::Parts> layerParts(const fs::path& file) {
  const TableShape shape = shapeOfTable(file);
  const bool five = file.filename().string().starts_with("seqSS15.");
  LayerShape layerShape;
  layerShape.members = five ? 5 : 3;
  layerShape.units = shape.rows / static_cast<int>(layerShape.members);
  layerShape.inputs = shape.inputs;
  if (layerShape.units < 1 || layerShape.inputs < 1) return std::nullopt;
  ANN::Layer layer;
  (five ? SSANN::loadWeightBias5 : ANN::loadWeightBias3)(file.string(), layer, layerShape.units,
                                                         layerShape.inputs);
  return encodeLayer(layer, layerShape);
}

std::optional<image::Parts> databaseParts(const fs::path& file) {
  ORBEL run;
  run.fragmentDatabase = std::make_unique<DB>();
  run.fragmentDatabase->loadDB(file.string());
  run.buildSourceIndex();
  const DB& db = *run.fragmentDatabase;
  if (db.entryCount < 1 || db.entryCount >= db.maxDBSize) return std::nullopt;
  return encodeDatabase(db, ScreenIndex(db, run.sourceRanges()));
}

std::optional<image::Parts> tripletParts(const fs::path& file) {
  return encodeTriplets(readTripletLibrary(file.string(), ORBEL().atomNames));
}

struct Imaged {
  image::TableEntry entry;
  image::Parts parts;
};

/// What becomes of the table `file`; nothing for tables that are read as text always.
std::optional<image::Kind> kindOf(const fs::path& file) {
  const std::string name = file.filename().string();
  if (file.extension() != ".tab") return std::nullopt;
  if (name == "orbel.tab") return image::Kind::Database;
  if (name == "orbel_obsCS.tab") return image::Kind::Triplets;
  if (name.find(".level") != std::string::npos) return image::Kind::Weights;
  return std::nullopt;
}

std::array<std::uint8_t, 32> digest(const std::string& bytes) {
  const std::string text = tools::sha256(bytes);
  std::array<std::uint8_t, 32> result{};
  for (std::size_t i = 0; i < result.size(); ++i)
    result[i] = static_cast<std::uint8_t>(std::stoi(text.substr(2 * i, 2), nullptr, 16));
  return result;
}

bool isSame(const std::optional<image::TextIdentity>& a, const std::optional<image::TextIdentity>& b) {
  return a && b && a->bytes == b->bytes && a->modified == b->modified && a->hash == b->hash;
}

std::optional<Imaged> makeTable(const fs::path& file, image::Kind kind, std::vector<std::string>& faults) {
  const auto before = image::identify(file.string());
  Imaged made;
  if (!before || file.filename().string().size() >= made.entry.name.size()) {
    faults.push_back("Table " + file.string() + " cannot be read, or has too long a name");
    return std::nullopt;
  }
  auto parts = kind == image::Kind::Weights    ? layerParts(file)
               : kind == image::Kind::Database ? databaseParts(file)
                                               : tripletParts(file);
  const std::string bytes = readWholeFile(file.string()).bytes;
  if (!isSame(before, image::identify(file.string()))) {
    faults.push_back("Table " + file.string() + " changed while it was read");
    return std::nullopt;
  }
  if (!parts) {
    faults.push_back("Table " + file.string() + " is incomplete and stays out of the image");
    return std::nullopt;
  }
  made.parts = std::move(*parts);
  made.entry.kind = kind;
  made.entry.text = *before;
  made.entry.sha256 = digest(bytes);
  const std::string name = file.filename().string();
  std::copy(name.begin(), name.end(), made.entry.name.begin());
  return made;
}

/// Puts `bytes` at the next multiple of `alignment`.
image::Part place(std::string& file, const std::string& bytes, std::size_t alignment) {
  if (bytes.empty()) return {0, 0, ImageHash::of({})};
  file.resize((file.size() + alignment - 1) / alignment * alignment, '\0');
  const image::Part part{file.size(), bytes.size(), ImageHash::of(std::as_bytes(std::span(bytes)))};
  file += bytes;
  return part;
}

std::string fileOf(std::vector<Imaged>& tables) {
  image::Header header;
  const std::size_t entryBytes = tables.size() * sizeof(image::TableEntry);
  std::string file(sizeof header + entryBytes, '\0');
  for (Imaged& table : tables) {
    table.entry.guide = place(file, table.parts.guide, image::kAlignment);
    table.entry.bulk = place(file, table.parts.bulk, kPage);
    table.parts = {};
  }
  header.tables = tables.size();
  header.fileBytes = file.size();
  std::memcpy(file.data(), &header, sizeof header);
  for (std::size_t i = 0; i < tables.size(); ++i) {
    std::memcpy(file.data() + sizeof header + i * sizeof(image::TableEntry), &tables[i].entry,
                sizeof(image::TableEntry));
  }
  header.headerHash = ImageHash::of(std::as_bytes(std::span(file.data(), sizeof header + entryBytes)));
  std::memcpy(file.data(), &header, sizeof header);
  return file;
}

std::string imagePath(const std::string& folder) {
  return (fs::path(folder) / image::kFileName).string();
}

std::vector<fs::path> filesIn(const std::string& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

void verifyPart(const MappedFile& file, const image::Part& part, const std::string& name,
                ImageReport& report) {
  const auto bytes =
      file.bytes().subspan(static_cast<std::size_t>(part.offset), static_cast<std::size_t>(part.bytes));
  if (ImageHash::of(bytes) != part.hash)
    report.faults.push_back("The image of " + name + " is damaged: its checksum is not the recorded one");
}

}  // namespace

ImageReport writeTableImage(const std::string& folder) {
  ImageReport report;
  // A table that changes twice within a tick of the file system's clock keeps its time: let the clock move
  // on.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  std::vector<Imaged> tables;
  for (const fs::path& file : filesIn(folder)) {
    const auto kind = kindOf(file);
    if (!kind) continue;
    if (auto made = makeTable(file, *kind, report.faults)) tables.push_back(std::move(*made));
  }
  report.tables = tables.size();
  if (tables.empty()) {
    report.faults.push_back("No tables to make an image of in " + folder);
    return report;
  }
  const WriteOutcome outcome = writeWholeFile(imagePath(folder), fileOf(tables));
  if (outcome.state != WriteOutcome::State::Whole)
    report.faults.push_back("Can't write " + imagePath(folder) + ": " + outcome.reason);
  return report;
}

ImageReport verifyTableImage(const std::string& folder) {
  ImageReport report;
  const auto file = MappedFile::open(imagePath(folder));
  if (file == nullptr) {
    report.faults.push_back("No image can be read in " + folder);
    return report;
  }
  const std::vector<image::TableEntry> entries = image::readEntries(*file);
  if (entries.empty())
    report.faults.push_back(imagePath(folder) + " is damaged, cut off, or of another version or byte order");
  report.tables = entries.size();
  for (const image::TableEntry& entry : entries) {
    const std::string name(entry.tableName());
    verifyPart(*file, entry.guide, name, report);
    verifyPart(*file, entry.bulk, name, report);
    const FileBytes text = readWholeFile((fs::path(folder) / name).string());
    if (!text.ok) {
      report.faults.push_back("Table " + name + " cannot be read: " + text.error);
    } else if (digest(text.bytes) != entry.sha256) {
      report.faults.push_back("Table " + name + " is not the one that the image was made from");
    }
  }
  if (!file->intact()) report.faults.push_back(imagePath(folder) + " changed while it was read");
  return report;
}
