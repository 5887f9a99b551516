// Loading time of every table of an installation.
#include "table_times.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <vector>

#include "ann/SSANN.h"
#include "shifts/triplet_library.h"
#include "tables/DB.h"
#include "tables/GDB.h"

namespace {

namespace fs = std::filesystem;
constexpr int kReadings = 3;

}  // namespace

TableShape shapeOfTable(const std::string& file) {
  std::ifstream in(file);
  TableShape shape;
  for (std::string line; std::getline(in, line);) {
    std::string word;
    std::istringstream words(line);
    if (!(words >> word) || word == "REMARK" || word == "FORMAT" || word == "DATA" || word[0] == '#')
      continue;
    if (word == "VARS") {
      while (words >> word) shape.inputs += word.find_first_not_of("0123456789") == std::string::npos ? 1 : 0;
    } else {
      ++shape.rows;
    }
  }
  return shape;
}

namespace {

/// What the program does with a table of this name.
std::function<void()> reader(const fs::path& path, const TableShape& shape,
                             const std::map<int, std::string>& atomNames) {
  const std::string file = path.string();
  const std::string name = path.filename().string();
  if (name == "orbel.tab") {
    return [file] { DB().loadDB(file); };
  }
  if (name == "orbel_obsCS.tab") {
    return [file, &atomNames] { readTripletLibrary(file, atomNames); };
  }
  const int inputs = shape.inputs;
  if (name.starts_with("seqSS15.")) {
    return [file, rows = shape.rows / 5, inputs] {
      ANN::Layer layer;
      SSANN::loadWeightBias5(file, layer, rows, inputs);
    };
  }
  if (name.find(".level") != std::string::npos) {
    return [file, rows = shape.rows / 3, inputs] {
      ANN::Layer layer;
      ANN::loadWeightBias3(file, layer, rows, inputs);
    };
  }
  return [file] { const GDB table(file); };
}

double fastest(const std::function<void()>& read) {
  using Clock = std::chrono::steady_clock;
  double best = 1e9;
  for (int k = 0; k < kReadings; ++k) {
    const auto start = Clock::now();
    read();
    best = std::min(best, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
  }
  return best;
}

}  // namespace

bool reportTableTimes(const std::string& folder, const std::map<int, std::string>& atomNames) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() == ".tab") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const fs::path& file : files) {
    const TableShape shape = shapeOfTable(file);
    const double milliseconds = fastest(reader(file, shape, atomNames));
    std::printf("%s\t%ju\t%d\t%.2f\n", file.filename().c_str(), fs::file_size(file, error), shape.rows,
                milliseconds);
  }
  return !files.empty();
}
