// Residue numbers of the converted chain, from the file or by a sequence given beside it.
#include "convert/number_residues.h"

#include <algorithm>
#include <map>
#include <optional>

#include "convert/names.h"

namespace convert {

namespace {

/// Author's numbers that only the shift rows tell.
void takeAuthorNumbersOfShifts(const Entry& entry, Chain& chain) {
  std::map<std::string, std::string> byKey;
  for (const Shift& shift : entry.shifts) {
    if (shift.chain == chain.id && !shift.author.empty()) byKey.emplace(shift.residue, shift.author);
  }
  for (Residue& residue : chain.residues) {
    const auto it = byKey.find(residue.key);
    if (residue.author.empty() && it != byKey.end()) residue.author = it->second;
  }
}

/// Number of the first residue by `text` of each residue, when they rise by one; empty texts do not count.
template <class Text>
std::optional<int> constantOffset(const Chain& chain, Text text) {
  std::optional<int> first;
  for (std::size_t i = 0; i < chain.residues.size(); ++i) {
    const std::string& number = text(chain.residues[i]);
    if (number.empty()) continue;
    const auto value = wholeInteger(number);
    if (!value) return std::nullopt;
    const int start = *value - static_cast<int>(i);
    if (first && *first != start) return std::nullopt;
    first = start;
  }
  return first;
}

/// "author 27-35 = 1-9, 35A = 10": runs of numbers that go together.
std::string authorMapping(const Chain& chain) {
  std::string text;
  const auto& residues = chain.residues;
  for (std::size_t i = 0; i < residues.size();) {
    std::size_t last = i;
    const auto start = wholeInteger(residues[i].author);
    while (start && last + 1 < residues.size() &&
           wholeInteger(residues[last + 1].author) == *start + static_cast<int>(last + 1 - i)) {
      ++last;
    }
    const bool run = last > i;
    if (!residues[i].author.empty()) {
      text += text.empty() ? "" : ", ";
      text += residues[i].author + (run ? "-" + residues[last].author : "") + " = " +
              std::to_string(residues[i].number) + (run ? "-" + std::to_string(residues[last].number) : "");
    }
    i = last + 1;
  }
  return text;
}

void numberFrom(Chain& chain, int first) {
  for (Residue& residue : chain.residues) residue.number = first++;
}

/// Agreement of a sequence laid from number `first` on with the residues of known type.
struct Fit {
  std::size_t agree = 0, differ = 0, outside = 0;
  const Residue* firstDifferent = nullptr;

  bool perfect() const { return differ == 0 && outside == 0; }
};

bool sameType(char a, char b) {
  return a == b || (a == 'c' && b == 'C') || (a == 'C' && b == 'c');
}

Fit fitAt(const Chain& chain, const std::vector<Residue>& letters, int first) {
  Fit fit;
  for (const Residue& residue : chain.residues) {
    if (residue.name.empty()) continue;
    const int at = residue.number - first;
    if (at < 0 || at >= static_cast<int>(letters.size())) {
      ++fit.outside;
    } else if (sameType(letters[static_cast<std::size_t>(at)].code, residue.code)) {
      ++fit.agree;
      continue;
    } else {
      ++fit.differ;
    }
    if (fit.firstDifferent == nullptr) fit.firstDifferent = &residue;
  }
  return fit;
}

struct Placement {
  const Chain* sequence = nullptr;
  int first = 1;
  Fit fit;
};

/// Numbers to try for the first residue, the likely ones first.
std::vector<int> startsToTry(const Chain& chain, const Chain& sequence, const Settings& settings) {
  if (const auto given = wholeInteger(settings.firstResid)) return {*given};
  if (const auto numbered = wholeInteger(sequence.residues.front().author)) return {*numbered};
  std::vector<int> starts = {1};
  if (chain.residues.empty()) return starts;
  const int low = chain.residues.front().number, high = chain.residues.back().number;
  starts.push_back(low);
  for (int start = high - static_cast<int>(sequence.residues.size()) + 1; start <= low; ++start) {
    starts.push_back(start);
  }
  return starts;
}

Placement bestPlacement(const Chain& chain, const std::vector<Chain>& sequences, const Settings& settings) {
  Placement best;
  for (const Chain& sequence : sequences) {
    for (const int start : startsToTry(chain, sequence, settings)) {
      const Fit fit = fitAt(chain, sequence.residues, start);
      const bool better =
          best.sequence == nullptr || fit.agree > best.fit.agree ||
          (fit.agree == best.fit.agree && fit.differ + fit.outside < best.fit.differ + best.fit.outside);
      if (better) best = {&sequence, start, fit};
    }
  }
  return best;
}

bool reportMisfit(const Placement& best, const Settings& settings, Log& log) {
  const Residue& residue = *best.fit.firstDifferent;
  const int at = residue.number - best.first;
  const auto& letters = best.sequence->residues;
  const bool inside = at >= 0 && at < static_cast<int>(letters.size());
  const std::string there = inside ? "is " + letters[static_cast<std::size_t>(at)].name +
                                         " in the sequence of " + settings.sequenceFile
                                   : "lies outside the sequence of " + settings.sequenceFile;
  return log.error(residue.line,
                   "residue " + std::to_string(residue.number) + " " + residue.name + " " + there +
                       " (first residue number " + std::to_string(best.first) + "); " +
                       std::to_string(best.fit.differ + best.fit.outside) +
                       " residues disagree; is it another protein, or is --first-resid needed?");
}

}  // namespace

bool numberResidues(const Entry& entry, Chain& chain, const Settings& settings,
                    std::vector<std::string>& remarks, Log& log) {
  takeAuthorNumbersOfShifts(entry, chain);
  std::optional<int> first =
      constantOffset(chain, [](const Residue& r) -> const std::string& { return r.author; });
  bool authors = false;
  for (const Residue& residue : chain.residues) authors = authors || !residue.author.empty();
  if (!authors) first = constantOffset(chain, [](const Residue& r) -> const std::string& { return r.key; });
  const bool mapped = !first;
  if (!settings.firstResid.empty() && settings.sequenceFile.empty()) {
    const auto given = wholeInteger(settings.firstResid);
    if (!given) return log.error(0, "--first-resid '" + settings.firstResid + "' is no integer");
    if (first && *first != *given) {
      remarks.push_back("Residue numbers are those of the file plus " + std::to_string(*given - *first));
    }
    first = given;
  }
  numberFrom(chain, first.value_or(1));
  if (mapped) {
    remarks.push_back("The residue numbers of the file do not rise by one; numbered from " +
                      std::to_string(chain.residues.front().number) + ": " + authorMapping(chain));
    log.warn(chain.residues.front().line, "the residue numbers do not rise by one; numbered from " +
                                              std::to_string(chain.residues.front().number) +
                                              " (mapping in the remarks)");
  }
  return true;
}

bool applySequence(const Entry& entry, Chain& chain, const std::vector<Chain>& sequences,
                   const Settings& settings, std::vector<std::string>& remarks, Log& log) {
  const Placement best = bestPlacement(chain, sequences, settings);
  const std::size_t known = best.fit.agree + best.fit.differ + best.fit.outside;
  // A few wrong types may be mutations or slips and are reported row by row; more are another protein.
  if (best.fit.outside > 0 || best.fit.differ > std::min<std::size_t>(4, known / 10)) {
    return reportMisfit(best, settings, log);
  }
  std::vector<Residue> residues = best.sequence->residues;
  int number = best.first;
  for (Residue& residue : residues) {
    residue.number = number++;
    residue.key = "#" + std::to_string(residue.number);  // no shift refers to it unless set below
    residue.author.clear();
  }
  for (const Residue& old : chain.residues) {
    const int at = old.number - best.first;
    if (at < 0 || at >= static_cast<int>(residues.size())) continue;
    residues[static_cast<std::size_t>(at)].key = old.key;
    if (old.code == 'c') residues[static_cast<std::size_t>(at)].code = 'c';
  }
  for (const Shift& shift : entry.shifts) {
    const auto old = wholeInteger(shift.residue);
    if (shift.chain != chain.id || !old || entry.findResidue(chain, shift.residue) == nullptr) continue;
    const bool placed = std::any_of(residues.begin(), residues.end(),
                                    [&](const Residue& r) { return r.key == shift.residue; });
    if (!placed) {
      return log.error(shift.line,
                       "residue " + shift.residue + " lies outside the sequence of " + settings.sequenceFile);
    }
  }
  chain.residues = std::move(residues);
  remarks.push_back("Sequence from " + settings.sequenceFile + ", first residue number " +
                    std::to_string(best.first));
  return true;
}

}  // namespace convert
