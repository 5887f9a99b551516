// The image of the tables: used when it fits the text to the last bit, and never when it does not.
#include "tables/TableImage.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <random>
#include <thread>

#include "ann/weight_image.h"
#include "driver/ORBEL.h"
#include "search/database_image.h"
#include "shifts/triplet_image.h"
#include "support/process.h"
#include "tables/imageHash.h"

namespace {

namespace fs = std::filesystem;
using image::Kind;

const fs::path kTables = fs::path(ORBELN_GOLDEN) / "installation/tab";

/// Two tables of the golden installation with its image, to be spoiled.
class Image : public testing::Test {
 protected:
  Image() : bytes(support::readFile(kTables / image::kFileName)) {
    for (const char* name : {"orbel.tab", "ss.level1.WI.tab"}) {
      fs::copy_file(kTables / name, folder / name);
      fs::last_write_time(folder / name, fs::last_write_time(kTables / name));
    }
    write(bytes);
  }
  /// An image that was changed a moment ago is not used: waits until it is older.
  void write(const std::string& content) const {
    support::writeFile(folder / image::kFileName, content);
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
  }
  bool fits(const std::string& name, Kind kind) const {
    const std::string path = (folder / name).string();
    return TableImage(path).find(path, kind).has_value();
  }
  image::TableEntry entry(const std::string& name) const {
    image::TableEntry found;
    for (std::size_t at = sizeof(image::Header); found.tableName() != name; at += sizeof found)
      std::memcpy(&found, bytes.data() + at, sizeof found);
    return found;
  }

  const support::TempDir folder;
  const std::string bytes;
};

TEST_F(Image, NoByteOfAUsedPartMayDiffer) {
  ASSERT_TRUE(fits("orbel.tab", Kind::Database));
  ASSERT_TRUE(fits("ss.level1.WI.tab", Kind::Weights));
  EXPECT_FALSE(fits("orbel.tab", Kind::Weights));
  std::vector<std::size_t> places = {0, 8, 12, 16, 24, 32, 40, 63, sizeof(image::Header), 300};
  for (const char* name : {"orbel.tab", "ss.level1.WI.tab"}) {
    const image::TableEntry e = entry(name);
    for (const image::Part& part : {e.guide, e.bulk}) {
      for (const std::uint64_t at : {std::uint64_t{0}, part.bytes / 2, part.bytes - 1})
        places.push_back(part.offset + at);
    }
  }
  for (std::size_t i = 0; i < places.size(); ++i) {
    std::string changed = bytes;
    changed[places[i]] = static_cast<char>(changed[places[i]] ^ (i % 2 == 0 ? 1 : 0x80));
    write(changed);
    const bool inWeights = i + 6 >= places.size(), inDatabase = !inWeights && i + 12 >= places.size();
    EXPECT_EQ(fits("orbel.tab", Kind::Database), inWeights) << places[i];
    EXPECT_EQ(fits("ss.level1.WI.tab", Kind::Weights), inDatabase) << places[i];
  }
  for (const std::size_t length : {std::size_t{0}, std::size_t{63}, std::size_t{5000}, bytes.size() - 1}) {
    write(bytes.substr(0, length));
    EXPECT_FALSE(fits("orbel.tab", Kind::Database)) << length;
  }
  write(bytes + '\0');
  EXPECT_FALSE(fits("orbel.tab", Kind::Database)) << "longer than it says";
}

TEST_F(Image, OtherVersionsAndByteOrdersAreLeftAlone) {
  const auto resealed = [&](const std::function<void(image::Header&)>& change) {
    std::string file = bytes;
    image::Header header;
    std::memcpy(&header, file.data(), sizeof header);
    const std::size_t length = sizeof header + header.tables * sizeof(image::TableEntry);
    change(header);
    header.headerHash = 0;
    std::memcpy(file.data(), &header, sizeof header);
    header.headerHash = ImageHash::of(std::as_bytes(std::span(file.data(), length)));
    std::memcpy(file.data(), &header, sizeof header);
    return file;
  };
  write(resealed([](image::Header&) {}));
  EXPECT_TRUE(fits("orbel.tab", Kind::Database));
  for (const auto& change : std::vector<std::function<void(image::Header&)>>{
           [](image::Header& h) { h.version = image::kVersion - 1; },
           [](image::Header& h) { h.byteOrder = 0x04030201; }, [](image::Header& h) { h.magic[0] = 'o'; },
           [](image::Header& h) { h.tables = image::kMostTables + 1; }}) {
    write(resealed(change));
    EXPECT_FALSE(fits("orbel.tab", Kind::Database));
  }
}

TEST_F(Image, TheTextDecides) {
  const fs::path table = folder / "orbel.tab";
  const auto time = fs::last_write_time(table);
  using std::chrono::seconds;
  fs::last_write_time(table, std::chrono::floor<seconds>(time));
  EXPECT_TRUE(fits("orbel.tab", Kind::Database)) << "an archive kept the time to the second";
  fs::last_write_time(table, time + seconds(9));
  EXPECT_TRUE(fits("orbel.tab", Kind::Database)) << "another time, the same content";
  std::string text = support::readFile(table);
  text[text.size() / 2] = text[text.size() / 2] == '1' ? '2' : '1';
  support::writeFile(table, text);
  const auto noDate = fs::file_time_type::clock::from_sys(std::chrono::sys_seconds(seconds(0)));
  for (const fs::file_time_type when : std::vector<fs::file_time_type>{time + seconds(9), noDate}) {
    fs::last_write_time(table, when);
    EXPECT_FALSE(fits("orbel.tab", Kind::Database)) << "same size, another content";
  }
  support::writeFile(table, text + "\n");
  fs::last_write_time(table, time);
  EXPECT_FALSE(fits("orbel.tab", Kind::Database)) << "another size";
  fs::remove(table);
  fs::create_directory(table);
  EXPECT_FALSE(fits("orbel.tab", Kind::Database)) << "a folder";
}

TEST_F(Image, AMappingOutlivesWhatHappensToTheFile) {
  const std::string path = (folder / image::kFileName).string();
  const auto replaced = MappedFile::open(path), cutOff = MappedFile::open(path);
  ASSERT_TRUE(replaced != nullptr && cutOff != nullptr && cutOff->intact());
  support::writeFile(folder / "new", "short");
  fs::rename(folder / "new", folder / image::kFileName);
  EXPECT_EQ(std::memcmp(replaced->bytes().data(), bytes.data(), bytes.size()), 0) << "the old file lives on";

  write(bytes);
  const auto shrunk = MappedFile::open(path);
  ASSERT_NE(shrunk, nullptr);
  fs::resize_file(path, 4096);
  EXPECT_EQ(shrunk->bytes().back(), std::byte{0});  // a page that is gone
  EXPECT_FALSE(shrunk->intact());
  std::ofstream(path, std::ios::in | std::ios::binary) << 'x';
  EXPECT_EQ(MappedFile::open(path), nullptr) << "changed a moment ago";
}

/// A search on the image, one on the text, and one on an image that is cut off under it.
TEST(ImagedSearch, IsRepeatedWhenTheImageIsLost) {
  const support::TempDir folder;
  fs::copy(kTables, folder / "tab");
  for (const auto& file : fs::directory_iterator(kTables))
    fs::last_write_time(folder / "tab" / file.path().filename().string(), file.last_write_time());
  std::this_thread::sleep_for(std::chrono::milliseconds(25));
  ORBEL run;
  run.setArgs({{"in", (kTables.parent_path() / "in/q76.tab").string()},
               {"orbelnDir", folder.path.string()},
               {"sum", (folder / "pred.tab").string()}});
  run.init();
  run.getResInfo();
  run.runABP_Prediction();
  run.buildSearchPrior();
  const auto search = [&] {
    run.buildSourceIndex();
    run.runFirstPass();
    run.runSecondPass();
  };
  run.loadDatabase();
  ASSERT_TRUE(run.fragmentDatabase->screenKeys != nullptr) << "not loaded from the image";
  search();
  EXPECT_TRUE(run.fragmentDatabase->intact());
  const auto index = run.matchIndex, sameType = run.sameTypeIndex;
  const auto phi = run.predPhi;
  const auto scores = run.chi1RotamerScores;
  const auto expectTheSame = [&] {
    EXPECT_EQ(run.fragmentDatabase->screenKeys, nullptr) << "the text";
    EXPECT_EQ(run.matchIndex, index);
    EXPECT_EQ(run.sameTypeIndex, sameType);
    EXPECT_EQ(run.predPhi, phi);
    EXPECT_EQ(run.chi1RotamerScores, scores);
  };
  run.searchAgain();
  expectTheSame();
  run.loadDatabase();
  ASSERT_TRUE(run.fragmentDatabase->screenKeys != nullptr);
  fs::resize_file(folder / "tab/TABLES.image", 4096);
  search();
  EXPECT_FALSE(run.fragmentDatabase->intact());
  run.searchAgain();
  expectTheSame();
}

/// Changes bytes of the parts at random, as if the checksums had been made to fit.
template <class Use>
void mutate(const std::string& name, Kind kind, Use use) {
  const std::string path = (kTables / name).string();
  const auto table = TableImage(path).find(path, kind, image::Bulk::Copied);
  ASSERT_TRUE(table.has_value());
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    // In whole lines, as parts are aligned; cut to size so that a sanitizer sees the end.
    std::vector<std::byte> guide(table->guide.begin(), table->guide.end());
    const std::size_t reach = round % 3 == 0 ? 64 : round % 3 == 1 ? 4096 : guide.size();
    for (int change = 0; change <= round % 4; ++change) {
      auto& byte = guide[random() % std::min(reach, guide.size())];
      byte = static_cast<std::byte>(round % 2 == 0 ? random()
                                                   : static_cast<unsigned>(byte) ^ 1U << random() % 8);
    }
    if (round % 5 == 0) guide.resize(random() % guide.size());
    void* const lines = ::operator new (guide.size() + 1, std::align_val_t{image::kAlignment});
    std::memcpy(lines, guide.data(), guide.size());
    image::ImagedTable changed = *table;
    changed.guide = {static_cast<const std::byte*>(lines), guide.size()};
    changed.guideOwner = std::shared_ptr<void>(
        lines, [](void* p) { ::operator delete (p, std::align_val_t{image::kAlignment}); });
    use(changed);
  }
}

TEST(ImageParts, ForgedPartsNeverLeadOutside) {
  int layers = 0;
  mutate("ss.level1.WI.tab", Kind::Weights, [&](const image::ImagedTable& table) {
    ANN::Layer layer;
    if (!decodeLayer(table, {3, 96, 96}, layer)) return;
    ++layers;
    const std::vector<std::vector<double>> x(1, std::vector<double>(96, 0.5));
    for (std::size_t k = 0; k < 3; ++k) {
      std::vector<std::vector<double>> y(1);
      evaluateLayer(layer[k].weights, layer[k].bias, x, y, kTanh);
    }
  });
  EXPECT_GT(layers, 0) << "biases may be anything";
  mutate("orbel.tab", Kind::Database, [](const image::ImagedTable& table) {
    ORBEL run;
    run.fragmentDatabase = std::make_unique<DB>();
    DB& db = *run.fragmentDatabase;
    if (!decodeDatabase(table, db)) return;
    run.buildSourceIndex();
    const ScreenIndex index(db, run.sourceRanges());
    for (const int i : {0, 1, 2, db.entryCount / 2, db.entryCount - 3, db.entryCount - 1}) {
      const int reach = ScreenIndex::reach(index.keys[static_cast<std::size_t>(i)]);
      EXPECT_TRUE(i - reach >= 0 && i + reach < db.entryCount);
      EXPECT_LE(db.source(i).size() + index.codes.size(), 1000000U);
    }
  });
  mutate("orbel_obsCS.tab", Kind::Triplets, [](const image::ImagedTable& table) {
    const auto library = decodeTriplets(table);
    if (!library) return;
    for (const auto& ids : library->nameIds) {
      for (const int id : ids) EXPECT_LT(static_cast<std::size_t>(id), library->names.size());
    }
  });
}

TEST(ImageHash, SeesEveryChange) {
  std::vector<std::byte> text(200, std::byte{7});
  const std::uint64_t good = ImageHash::of(text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    for (const unsigned bit : {0U, 7U}) {
      text[i] ^= std::byte{1} << bit;
      EXPECT_NE(ImageHash::of(text), good) << i;
      text[i] ^= std::byte{1} << bit;
    }
  }
  EXPECT_NE(ImageHash::of(std::span(text).first(199)), good);
  text.push_back(std::byte{0});
  EXPECT_NE(ImageHash::of(text), good);
  ImageHash inPieces;
  inPieces.add(std::span(text).first(128));
  inPieces.add(std::span(text).subspan(128));
  EXPECT_EQ(inPieces.value(), ImageHash::of(text));
}

}  // namespace
