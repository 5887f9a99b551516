// The quality check's findings, read from a saved log or from the remarks of the adjusted-shift table.
#include "report/check_log.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include "common/numbers.h"
#include "tables/text.h"

namespace report {

namespace {

constexpr std::string_view kOutlierHeading = "Checking for Chemical Shift Outliers";
constexpr std::string_view kReferencingHeading = "Checking Chemical Shift Referencing";
constexpr std::string_view kEstimate = "Estimated Referencing Offset for ";

/// Number at the start of a word, a unit behind it allowed ("0.031ppm").
bool leadingNumber(std::string_view word, double& value) {
  const std::size_t end = word.find_first_not_of("+-.0123456789eE");
  return tools::parseNumber(word.substr(0, end), value);
}

/// "  12 K  CA Secondary Shift:  9.120    Limit:  6.000 !"
bool readOutlier(const std::vector<std::string_view>& words, Outlier& outlier) {
  if (words.size() < 8 || words[3] != "Secondary" || words[4] != "Shift:" || words[6] != "Limit:")
    return false;
  double resid = 0;
  if (!tools::parseNumber(words[0], resid) || !leadingNumber(words[5], outlier.shift) ||
      !leadingNumber(words[7], outlier.limit) || resid < -1e6 || resid > 1e6) {
    return false;
  }
  outlier.resid = static_cast<int>(resid);
  outlier.code = words[1];
  outlier.atom = words[2];
  outlier.extreme = words.size() > 8 && words[8] == "!";
  return true;
}

/// "1.234 +/- 0.056ppm Size: 64", the number of shifts being optional.
bool readEstimate(std::string_view rest, ReferencingOffset& offset) {
  const auto words = text::split_WhiteSpace(rest);
  if (words.size() < 3 || words[1] != "+/-") return false;
  double shifts = 0;
  if (!leadingNumber(words[0], offset.offset) || !leadingNumber(words[2], offset.error)) return false;
  if (words.size() >= 5 && tools::parseNumber(words[4], shifts) && shifts > 0 && shifts < 1e6) {
    offset.shifts = static_cast<int>(shifts);
  }
  return true;
}

/// Same nuclei once: what was applied stays marked, the estimate adds error and number of shifts.
void merge(CheckResult& result, const ReferencingOffset& offset) {
  for (ReferencingOffset& known : result.offsets) {
    if (known.nuclei != offset.nuclei) continue;
    known.applied = known.applied || offset.applied;
    known.offset = offset.offset;
    known.error = std::max(known.error, offset.error);
    known.shifts = std::max(known.shifts, offset.shifts);
    return;
  }
  result.offsets.push_back(offset);
}

void addNote(CheckResult& result, std::string_view line) {
  const std::string note = text::simplifyWhiteSpace(line);
  if (std::find(result.notes.begin(), result.notes.end(), note) == result.notes.end()) {
    result.notes.push_back(note);
  }
}

/// Reads a log line by line; an estimate may stand on the line after its heading.
class LogReader {
 public:
  explicit LogReader(CheckResult& target) : result(target) {}

  void read(std::string_view line) {
    const std::string_view trimmed = text::trim(line);
    if (trimmed.starts_with(kOutlierHeading) || trimmed.starts_with(kReferencingHeading)) found = true;
    Outlier outlier;
    if (readOutlier(text::split_WhiteSpace(line), outlier)) {
      result.outliers.push_back(outlier);
    } else if (trimmed.starts_with(kEstimate)) {
      const std::string_view rest = trimmed.substr(kEstimate.size());
      const std::size_t colon = rest.find(':');
      pending.nuclei = rest.substr(0, colon);
      expectEstimate = true;
      takeEstimate(colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1));
    } else if (expectEstimate) {
      takeEstimate(line);
      expectEstimate = false;
    } else if (trimmed.starts_with("No enough") || trimmed.starts_with("WARNING:") ||
               trimmed.starts_with("Format Errors:")) {
      addNote(result, trimmed);
    } else {
      readAppliedOffset(std::string(line), result);
    }
  }
  bool found = false;

 private:
  void takeEstimate(std::string_view rest) {
    if (!readEstimate(rest, pending)) return;
    merge(result, pending);
    pending = {};
    expectEstimate = false;
  }

  CheckResult& result;
  ReferencingOffset pending;
  bool expectEstimate = false;
};

}  // namespace

bool readCheckLog(const std::string& path, CheckResult& result, std::string& error) {
  std::error_code status;
  std::ifstream in;
  if (!std::filesystem::is_directory(path, status)) in.open(path, std::ios::binary);
  if (!in.is_open()) {
    error = path + ": cannot be opened";
    return false;
  }
  LogReader reader(result);
  for (std::string line; std::getline(in, line);) reader.read(line);
  if (!reader.found) {
    error = path + ": no output of the shift check in this file";
    return false;
  }
  result.fromLog = true;
  return true;
}

void readAppliedOffset(const std::string& remark, CheckResult& result) {
  static constexpr std::pair<std::string_view, std::string_view> kNuclei[] = {
      {"13Ca and 13Cb", "CA/CB"}, {"1Ha", "HA"}, {"13C'", "C'"}};
  const std::string_view line = text::trim(remark);
  const std::size_t phrase = line.find(" ppm referencing offset applied for ");
  if (phrase == std::string_view::npos) return;
  ReferencingOffset offset;
  offset.applied = true;
  if (!tools::parseNumber(text::trim(line.substr(0, phrase)), offset.offset)) return;
  for (const auto& [isotopes, nuclei] : kNuclei) {
    if (line.find(isotopes) == std::string_view::npos) continue;
    offset.nuclei = nuclei;
    return merge(result, offset);
  }
}

}  // namespace report
