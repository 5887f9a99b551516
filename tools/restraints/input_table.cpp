// The input table of the run: what the conversion noted about the residues, and the shifts themselves.
#include "restraints/input_table.h"

#include <filesystem>
#include <utility>

#include "predictions/table_file.h"

namespace restraints {

namespace fs = std::filesystem;

namespace {

using predictions::TableFile;

/// `value` is the column of the observed shifts.
std::optional<InputTable> readTable(const std::string& file, const std::string& value,
                                    const std::map<int, char>& sequence, std::string& error) {
  const auto source = TableFile::load(file, {"RESID", "RESNAME", "ATOMNAME", value}, error);
  if (!source) return std::nullopt;
  for (const auto& [resid, code] : source->table.residList) {
    const auto predicted = sequence.find(resid);
    if (predicted != sequence.end() && predicted->second == code[0]) continue;
    error = file + ": residue " + std::to_string(resid) + " is " + code + ", not as in the prediction";
    return std::nullopt;
  }
  InputTable input{file, {}, predictions::readInputNotes(source->table.remarks), {}};
  for (const auto& [number, cells] : source->table.entries) {
    predictions::RowReader row(*source, number, cells, error);
    const int resid = row.integer("RESID");
    if (!error.empty()) return std::nullopt;
    const auto known = sequence.find(resid);
    if (known == sequence.end()) continue;
    input.shifts.push_back({resid, known->second, row.text("ATOMNAME"), row.text(value)});
  }
  return input;
}

}  // namespace

std::optional<InputTable> loadInputTable(const Options& options, const std::map<int, char>& sequence,
                                         std::string& error) {
  if (!options.inputTable.empty()) return readTable(options.inputTable, "SHIFT", sequence, error);
  const fs::path prediction(options.predictionFile);
  const std::pair<fs::path, const char*> beside[] = {
      {prediction.parent_path() / "input.tab", "SHIFT"},
      {prediction.parent_path() / (prediction.stem().string() + "AdjCS.tab"), "CS_OBS"}};
  std::string problem;  // a table of another run may well lie there
  for (const auto& [file, value] : beside) {
    std::error_code status;
    std::string fault;
    if (!fs::is_regular_file(file, status)) continue;
    if (auto input = readTable(file.string(), value, sequence, fault)) {
      input->problem = problem;
      return input;
    }
    if (problem.empty()) problem = fault;
  }
  return InputTable{{}, problem, {}, {}};
}

Labels labelsFrom(const InputTable& input, const Options& options) {
  Labels labels;
  labels.names = input.notes.names;
  labels.chain = !options.chain.empty() ? options.chain : input.notes.chain.empty() ? "A" : input.notes.chain;
  if (!options.tableNumbers) labels.numbers = input.notes.numbers;
  labels.source = "the shift file, as " + fs::path(input.file).filename().string() + " notes them";
  return labels;
}

}  // namespace restraints
