// A full-size synthetic installation for the benchmarks.
#include "full_size.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

#include "base/angles.h"
#include "base/boxes.h"
#include "base/missing.h"
#include "base/residues.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

/// A file that is written under a temporary name and renamed when it is complete.
class Output {
 public:
  explicit Output(std::string path)
      : path_(std::move(path)), file_(std::fopen((path_ + ".part").c_str(), "w")) {}
  ~Output() {
    if (file_ != nullptr) std::fclose(file_);
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  template <class... Values>
  void print(const char* format, Values... values) {
    if (file_ != nullptr) std::fprintf(file_, format, values...);
  }
  bool finish() {
    const bool written = file_ != nullptr && std::fclose(file_) == 0;
    file_ = nullptr;
    std::error_code error;
    if (written) fs::rename(path_ + ".part", path_, error);
    if (written && !error) return true;
    std::fprintf(stderr, "bench: can't write %s\n", path_.c_str());
    return false;
  }

 private:
  std::string path_;
  std::FILE* file_;
};

/// Residues of alternating helix, strand and turn segments with their shifts.
class Chain {
 public:
  explicit Chain(std::uint32_t seed) : random_(seed) {}

  struct Residue {
    char code = 'A';
    double phi = 0, psi = 0, chi1 = 0;
    std::array<double, 6> shifts{};  ///< secondary shifts N HA C CA CB HN, ppm
  };

  Residue next() {
    if (left_-- == 0) {
      segment_ = below(3);
      left_ = 4 + below(10);
    }
    static constexpr std::array<std::array<double, 2>, 3> kCentre = {{{-63, -42}, {-118, 132}, {-80, 0}}};
    static constexpr std::array<std::array<double, 6>, 3> kShift = {
        {{-1.2, -0.33, 1.7, 2.9, -0.8, -0.1}, {2.3, 0.5, -1.5, -1.1, 1.7, 0.4}, {-0.5, 0, -0.2, 0.3, 0, 0}}};
    static constexpr std::array<double, 6> kSpread = {2.2, 0.2, 0.9, 0.8, 0.85, 0.4};
    Residue r;
    r.code = kAminoAcids[static_cast<std::size_t>(below(20))];
    r.phi = wrapOnce(kCentre[static_cast<std::size_t>(segment_)][0] + 15 * normal_(random_));
    r.psi = wrapOnce(kCentre[static_cast<std::size_t>(segment_)][1] + 15 * normal_(random_));
    r.chi1 = r.code == 'A' || r.code == 'G' ? kMissingValue
                                            : 120.0 * below(3) - 60.0 - (below(3) == 2 ? 0.5 : 0.0);
    if (isPresent(r.chi1)) r.chi1 = wrapOnce(r.chi1);
    for (std::size_t a = 0; a < 6; ++a) {
      r.shifts[a] = kShift[static_cast<std::size_t>(segment_)][a] + kSpread[a] * normal_(random_);
    }
    return r;
  }
  int below(int n) { return static_cast<int>(random_() % static_cast<std::uint32_t>(n)); }
  double symmetric() { return 2.0 * (static_cast<double>(random_()) / 4294967296.0) - 1.0; }

 private:
  std::mt19937 random_;
  std::normal_distribution<double> normal_{0.0, 1.0};
  int segment_ = 0;
  int left_ = 0;
};

bool writeTriplets(const std::string& path, int rows, std::uint32_t seed) {
  constexpr std::array<const char*, 6> kAtoms = {"N", "HA", "C", "CA", "CB", "HN"};
  Output out(path);
  out.print("%s", "VARS SOURCE");
  for (int p = 1; p <= 3; ++p) {
    out.print(" RESNAME_R%d", p);
    for (const char* atom : kAtoms) out.print(" %s_R%d", atom, p);
  }
  out.print("%s", "\nFORMAT %s");
  for (int p = 1; p <= 3; ++p) out.print("%s", " %s %8.3f %8.3f %8.3f %8.3f %8.3f %8.3f");
  out.print("%s", "\n\n");
  Chain chain(seed);
  for (int row = 0; row < rows; ++row) {
    out.print("P%04d", row / 250);
    for (int p = 1; p <= 3; ++p) {
      const Chain::Residue r = chain.next();
      out.print(" %c", r.code);
      for (const double shift : r.shifts) out.print(" %.3f", chain.below(5) == 0 ? kMissingValue : shift);
    }
    out.print("%s", "\n");
  }
  return out.finish();
}

/// Small random weights, three members of `units` rows.
bool writeWeights(const std::string& path, int units, int inputs, int members, std::uint32_t seed) {
  Output out(path);
  out.print("%s", "VARS");
  for (int i = 1; i <= inputs; ++i) out.print(" %d", i);
  out.print("%s", " b\nFORMAT");
  for (int i = 0; i <= inputs; ++i) out.print("%s", " %8.4f");
  out.print("%s", "\n\n");
  Chain chain(seed);
  const double scale = 1.0 / (1.0 + 0.05 * inputs);
  for (int row = 0; row < units * members; ++row) {
    std::string line;
    std::array<char, 16> cell{};
    for (int i = 0; i <= inputs; ++i) {
      std::snprintf(cell.data(), cell.size(), " %.4f", scale * chain.symmetric());
      line += cell.data();
    }
    out.print("%s\n", line.c_str());
  }
  return out.finish();
}

struct Network {
  const char* name;
  std::array<int, 6> sizes;
  int members;
  bool twoLevels;
};

bool writeNetwork(const std::string& tab, const Network& n, std::uint32_t seed) {
  constexpr std::array<const char*, 6> kSuffix = {".level1.WI.tab", ".level1.WL1.tab", ".level1.WL2.tab",
                                                  ".level2.WI.tab", ".level2.WL1.tab", ".level2.WL2.tab"};
  for (std::size_t layer = 0; layer < (n.twoLevels ? 6U : 3U); ++layer) {
    const int inputs = layer % 3 == 0 ? n.sizes[layer] : n.sizes[layer - 1];
    if (!writeWeights(tab + n.name + kSuffix[layer], n.sizes[layer], inputs, n.members,
                      seed + static_cast<std::uint32_t>(layer))) {
      return false;
    }
  }
  return true;
}

bool writeNetworks(const std::string& tab, std::uint32_t seed) {
  std::vector<Network> networks = {
      {"surf20", {160, 180, kPhiPsiBoxes, 5 * kPhiPsiBoxes, 360, kPhiPsiBoxes}, 3, true},
      {"surf20_hyb", {160, 180, kPhiPsiBoxes, 0, 0, 0}, 3, false},
      {"ss", {96, 20, 3, 9, 6, 3}, 3, true},
      {"ss.center", {84, 20, 3, 9, 6, 3}, 3, true},
      {"ss.prev", {84, 20, 3, 9, 6, 3}, 3, true},
      {"ss.next", {84, 20, 3, 9, 6, 3}, 3, true},
      {"ss5", {164, 40, 3, 19, 6, 3}, 3, true},
      {"seqSS", {272, 60, 3, 51, 15, 3}, 3, true}};
  for (const Network& network : networks) {
    if (!writeNetwork(tab, network, seed += 10)) return false;
  }
  for (const char code : std::string_view("CDEFHIKLMNQRSTVWY")) {
    const std::string name = std::string("chi1_") + code;
    if (!writeNetwork(tab, {name.c_str(), {39, 15, 1, 0, 0, 0}, 3, false}, seed += 10)) return false;
  }
  return true;
}

bool copyReferenceTables(const std::string& from, const std::string& to) {
  for (const char* name : {"randcoil.tab", "rcadj.tab", "rcprev.tab", "rcnext.tab", "isoadj.tab",
                           "sslimit.tab", "homology.tab", "weight.tab", "BLOSUM62.tab", "chi1.tab"}) {
    std::error_code error;
    fs::copy_file(fs::path(from) / name, fs::path(to) / name, fs::copy_options::overwrite_existing, error);
    if (!error) continue;
    std::fprintf(stderr, "bench: can't copy %s from %s: %s\n", name, from.c_str(), error.message().c_str());
    return false;
  }
  return true;
}

}  // namespace

std::string withoutImage(const std::string& installation) {
  const fs::path folder = fs::path(ORBELN_FULL_SIZE) / "text" / std::to_string(fs::hash_value(installation));
  fs::remove_all(folder);
  fs::create_directories(folder / "tab");
  for (const auto& entry : fs::directory_iterator(fs::path(installation) / "tab")) {
    if (entry.path().extension() == ".tab")
      fs::create_symlink(fs::absolute(entry.path()), folder / "tab" / entry.path().filename());
  }
  return folder.string();
}

bool writeDatabase(const std::string& path, int records, std::uint32_t seed) {
  constexpr std::array<double, 6> kScale = {2.3, 0.23, 1.0, 0.95, 1.1, 0.45};
  Output out(path);
  Chain chain(seed);
  int source = 0;
  int resid = 0;
  int left = 0;
  for (int i = 0; i < records; ++i) {
    if (left-- == 0) {
      ++source;
      resid = chain.below(5);
      left = 100 + chain.below(290);
    }
    resid += chain.below(60) == 0 ? 4 : 1;  // gaps
    const Chain::Residue r = chain.next();
    const int box = boxAt(psiIndexOf(static_cast<int>(axisPosition(r.phi))),
                          psiIndexOf(static_cast<int>(axisPosition(r.psi))));
    std::string line;
    std::array<char, 160> text{};
    std::snprintf(text.data(), text.size(), "S%05d %c %d %.1f %.1f %.1f %d", source, r.code, resid, r.phi,
                  r.psi, r.chi1, box);
    line = text.data();
    for (std::size_t a = 0; a < 6; ++a) {
      std::snprintf(text.data(), text.size(), " %.2f %.2f", r.shifts[a], kScale[a]);
      line += text.data();
    }
    out.print("%s\n", line.c_str());
  }
  return out.finish();
}

bool writeInput(const std::string& path, int residues, std::uint32_t seed) {
  constexpr std::array<const char*, 6> kAtoms = {"N", "HA", "C", "CA", "CB", "HN"};
  constexpr std::array<double, 6> kCoil = {120.0, 4.35, 176.0, 56.5, 33.0, 8.3};
  Chain chain(seed);
  std::string sequence;
  std::string rows;
  for (int resid = 1; resid <= residues; ++resid) {
    const Chain::Residue r = chain.next();
    sequence += r.code;
    for (std::size_t a = 0; a < 6; ++a) {
      std::array<char, 64> row{};
      std::snprintf(row.data(), row.size(), "%4d %c %4s %8.3f\n", resid, r.code, kAtoms[a],
                    kCoil[a] + r.shifts[a]);
      rows += row.data();
    }
  }
  Output out(path);
  out.print("DATA FIRST_RESID 1\nDATA SEQUENCE %s\n\nVARS RESID RESNAME ATOMNAME SHIFT\n", sequence.c_str());
  out.print("%s", "FORMAT %4d %1s %4s %8.3f\n\n");
  out.print("%s", rows.c_str());
  return out.finish();
}

bool writeInstallation(const std::string& directory, const std::string& referenceTables, const Size& size) {
  const std::string tab = directory + "/tab/";
  const std::string stamp =
      tab + "complete-" + std::to_string(size.records) + "-" + std::to_string(size.seed);
  if (fs::exists(stamp)) return true;
  std::error_code error;
  fs::create_directories(tab, error);
  if (!copyReferenceTables(referenceTables, tab)) return false;
  return writeTriplets(tab + "orbel_obsCS.tab", size.triplets, size.seed) &&
         writeNetworks(tab, size.seed + 1) && writeDatabase(tab + "orbel.tab", size.records, size.seed + 2) &&
         Output(stamp).finish();
}

}  // namespace bench
