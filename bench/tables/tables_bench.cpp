// Readers: text tables, weight tables, the fragment database against a line-by-line sscanf.
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "bench.h"
#include "driver/ORBEL.h"
#include "tables/DB.h"
#include "tables/FieldFormat.h"
#include "tables/GDB.h"
#include "tables/GDB2.h"
#include "tables/imageHash.h"
#include "tables/output_text.h"

namespace {

std::string table(const char* name) {
  return std::string(bench::fullSize()) + "/tab/" + name;
}

void reportBytes(benchmark::State& state, const std::string& file) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(file)));
}

void textTable(benchmark::State& state) {
  const std::string file = table("orbel_obsCS.tab");
  std::size_t rows = 0;
  bench::Checksum checksum;
  for ([[maybe_unused]] auto _ : state) {
    const GDB read(file);
    rows = read.entries.size();
    checksum = {};
    checksum.addText(read.entries.rbegin()->second.at("CA_R2"));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rows));
  reportBytes(state, file);
  checksum.report(state);
}
BENCHMARK(textTable)->Unit(benchmark::kMillisecond);

void weightTable(benchmark::State& state) {
  const std::string file = table("surf20.level2.WI.tab");
  std::int64_t cells = 0;
  bench::Checksum checksum;
  for ([[maybe_unused]] auto _ : state) {
    const GDB2 read(file);
    cells = static_cast<std::int64_t>(read.lineCount) * read.varCount;
    checksum = {};
    checksum.addNumber(read.getFloatNodeVal(read.lineCount, "1"));
  }
  state.SetItemsProcessed(state.iterations() * cells);
  reportBytes(state, file);
  checksum.report(state);
}
BENCHMARK(weightTable)->Unit(benchmark::kMillisecond);

void databaseLoad(benchmark::State& state) {
  const std::string file = table("orbel.tab");
  std::int64_t records = 0;
  bench::Checksum checksum;
  for ([[maybe_unused]] auto _ : state) {
    DB db;
    db.setMaxDBSize(2330110);
    db.loadDB(file);
    state.PauseTiming();
    records = db.entryCount;
    checksum = {};
    checksum.add(db.dbShifts.get(), sizeof(float) * 12 * static_cast<std::size_t>(records));
    checksum.add(db.dbAngles.get(), sizeof(float) * 3 * static_cast<std::size_t>(records));
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * records);
  reportBytes(state, file);
  checksum.report(state);
}
BENCHMARK(databaseLoad)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(4);

/// The same records by std::getline and one sscanf a line; the checksum must agree with databaseLoad.
void databaseLoadPlain(benchmark::State& state) {
  const std::string file = table("orbel.tab");
  std::int64_t records = 0;
  bench::Checksum checksum;
  for ([[maybe_unused]] auto _ : state) {
    std::ifstream in(file);
    std::vector<float> shifts;
    std::vector<float> angles;
    std::vector<std::string> sources;
    for (std::string line; std::getline(in, line);) {
      std::array<char, 64> source{};
      char code = 'X';
      unsigned resid = 0;
      unsigned box = 0;
      std::array<float, 3> a{};
      std::array<float, 12> s{};
      std::sscanf(line.c_str(), "%39s %c %u %f %f %f %u %f %f %f %f %f %f %f %f %f %f %f %f", source.data(),
                  &code, &resid, &a[0], &a[1], &a[2], &box, &s[0], &s[1], &s[2], &s[3], &s[4], &s[5], &s[6],
                  &s[7], &s[8], &s[9], &s[10], &s[11]);
      sources.emplace_back(source.data());
      angles.insert(angles.end(), a.begin(), a.end());
      shifts.insert(shifts.end(), s.begin(), s.end());
    }
    state.PauseTiming();
    records = static_cast<std::int64_t>(sources.size());
    checksum = {};
    checksum.add(shifts.data(), sizeof(float) * shifts.size());
    checksum.add(angles.data(), sizeof(float) * angles.size());
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * records);
  reportBytes(state, file);
  checksum.report(state);
}
BENCHMARK(databaseLoadPlain)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(2);

/// Reading of memory that is at hand, by the checksum of the table image.
void memoryRead(benchmark::State& state) {
  const std::vector<std::byte> bytes(std::size_t{1} << 26, std::byte{3});
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(ImageHash::of(bytes));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(memoryRead)->Unit(benchmark::kMillisecond);

/// One cell of an output table: a number as text, and the text as a column.
void numberCell(benchmark::State& state) {
  const FieldFormat format(" %6.1f");
  std::string out;
  double value = -170.0;
  for ([[maybe_unused]] auto _ : state) {
    out.clear();
    format.append(out, cellText(value));
    value = value > 170.0 ? -170.0 : value + 0.7;
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(numberCell)->Unit(benchmark::kNanosecond);

}  // namespace
