// The program orbeln-report: output tables in, page and exports out.
#include "report/program.h"

#include <ostream>
#include <utility>

#include "common/files.h"
#include "report/exports.h"
#include "report/load.h"
#include "report/options.h"
#include "report/page.h"

namespace report {

namespace {

int fail(std::ostream& err, const std::string& message) {
  err << program().name << ": " << message << "\n";
  return 1;
}

/// Every output is ready in memory before the first is written.
bool writeOutputs(const ReportData& data, const Options& options, std::ostream& out, std::string& error) {
  std::vector<std::pair<std::string, std::string>> files;
  if (!options.htmlFile.empty()) files.emplace_back(options.htmlFile, htmlPage(data));
  if (!options.jsonFile.empty()) files.emplace_back(options.jsonFile, jsonExport(data));
  if (!options.tsvFile.empty()) files.emplace_back(options.tsvFile, tsvExport(data));
  for (const auto& [file, content] : files) {
    if (file == "-") {
      out << content;
    } else if (const std::string problem = tools::writeTextFile(file, content); !problem.empty()) {
      error = "cannot write " + file + ": " + problem;
      return false;
    }
  }
  return true;
}

}  // namespace

int runProgram(const std::vector<std::string>& words, std::ostream& out, std::ostream& err) {
  const tools::Arguments arguments = tools::parseArguments(program(), words);
  if (tools::answerHelp(program(), arguments, out)) return 0;
  Options options;
  std::string error = readOptions(arguments, options);
  if (!error.empty()) return tools::usageError(program(), error, err);
  const auto data = loadReport(options, error);
  if (!data) return fail(err, error);
  if (!writeOutputs(*data, options, out, error)) return fail(err, error);
  if (!data->referenceProblem.empty()) {
    err << program().name << ": warning: " << data->referenceProblem << ": no comparison\n";
  }
  if (!options.quiet) {
    for (const std::string& name : data->missing) err << name << " not found: left out\n";
  }
  return 0;
}

}  // namespace report
