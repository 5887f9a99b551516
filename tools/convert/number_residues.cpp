// Residue numbers of the converted chain, from the file or by a sequence given beside it.
#include "convert/number_residues.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "convert/names.h"

namespace convert {

namespace {

constexpr int kLongestGap = 100;  // missing residues that are filled with X
constexpr int kClosedGap = 10;    // what is left of a longer gap: more than any window of the prediction
constexpr std::size_t kMostFilled = 2000;  // in one chain

/// Author's numbers that only the shift rows tell.
void takeAuthorNumbersOfShifts(const Entry& entry, Chain& chain) {
  std::unordered_map<std::string, std::string> byKey;
  for (const Shift& shift : entry.shifts) {
    if (shift.chain == chain.id && !shift.author.empty()) byKey.emplace(shift.residue, shift.author);
  }
  for (Residue& residue : chain.residues) {
    const auto it = byKey.find(residue.key);
    if (residue.author.empty() && it != byKey.end()) residue.author = it->second;
  }
}

/// What the numbers of the file allow.
struct Numbering {
  std::vector<std::optional<int>> numbers;  ///< of each residue, as in the file; filled in where it has none
  std::string complaint;                    ///< why they cannot be kept; empty when they can
  int line = 0;
};

/// Numbers between those that are known: on from the left neighbour, backwards before the first.
void fillIn(std::vector<std::optional<int>>& numbers) {
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    if (!numbers[i] && numbers[i - 1]) numbers[i] = *numbers[i - 1] + 1;
  }
  for (std::size_t i = numbers.size(); i-- > 1;) {
    if (!numbers[i - 1] && numbers[i]) numbers[i - 1] = *numbers[i] - 1;
  }
  if (!numbers.empty() && !numbers[0]) {
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i) + 1;
  }
}

template <class Text>
Numbering readNumbers(const Chain& chain, Text text) {
  Numbering numbering;
  for (const Residue& residue : chain.residues) {
    const std::string& given = text(residue);
    numbering.numbers.push_back(given.empty() ? std::nullopt : wholeInteger(given));
    if (!given.empty() && !numbering.numbers.back() && numbering.complaint.empty()) {
      numbering.complaint = "the residue number " + given + " carries an insertion code";
      numbering.line = residue.line;
    }
  }
  fillIn(numbering.numbers);
  for (std::size_t i = 1; i < numbering.numbers.size() && numbering.complaint.empty(); ++i) {
    if (*numbering.numbers[i] > *numbering.numbers[i - 1]) continue;
    numbering.complaint = "the residue numbers do not rise: " + std::to_string(*numbering.numbers[i - 1]) +
                          " is followed by " + std::to_string(*numbering.numbers[i]);
    numbering.line = chain.residues[i].line;
  }
  return numbering;
}

/// Residues that the numbers leave out before residue `i`.
int gapBefore(const Numbering& numbering, std::size_t i) {
  return i == 0 ? 0 : std::max(0, *numbering.numbers[i] - *numbering.numbers[i - 1] - 1);
}

/// A gap that is too long to be filled keeps the numbers from being kept.
void complainOfLongGaps(const Chain& chain, Numbering& numbering) {
  std::size_t filled = 0;
  for (std::size_t i = 1; i < numbering.numbers.size() && numbering.complaint.empty(); ++i) {
    const int gap = gapBefore(numbering, i);
    filled += static_cast<std::size_t>(gap);
    if (gap <= kLongestGap && filled <= kMostFilled) continue;
    numbering.complaint = "between residues " + std::to_string(*numbering.numbers[i - 1]) + " and " +
                          std::to_string(*numbering.numbers[i]) + " the numbers leave out more than " +
                          std::to_string(gap > kLongestGap ? kLongestGap : static_cast<int>(kMostFilled)) +
                          " residues";
    numbering.line = chain.residues[i].line;
  }
}

/// The gaps of a chain, so that no two residues become neighbours that are none.
struct Gaps {
  std::string named;  ///< "411-412, 500"
  std::size_t count = 0;
  int line = 0;
};

/// Puts X where the numbers leave residues out; where they cannot be kept, at most kClosedGap of them.
Gaps fillGaps(Chain& chain, const Numbering& numbering) {
  constexpr std::size_t kNamed = 10;
  Gaps gaps;
  std::vector<Residue> residues;
  residues.reserve(chain.residues.size());
  for (std::size_t i = 0; i < chain.residues.size(); ++i) {
    const int gap = gapBefore(numbering, i), first = i == 0 ? 0 : *numbering.numbers[i - 1] + 1;
    if (gap > 0 && gaps.count++ < kNamed) {
      gaps.named += (gaps.named.empty() ? "" : ", ") + std::to_string(first) +
                    (gap > 1 ? "-" + std::to_string(first + gap - 1) : "");
      if (gaps.line == 0) gaps.line = chain.residues[i].line;
    }
    const int kept = numbering.complaint.empty() ? gap : std::min(gap, kClosedGap);
    for (int k = 0; k < kept; ++k) {
      Residue unknown;
      unknown.line = chain.residues[i].line;
      if (numbering.complaint.empty()) unknown.author = std::to_string(first + k);
      residues.push_back(std::move(unknown));
    }
    residues.push_back(std::move(chain.residues[i]));
  }
  chain.residues = std::move(residues);
  if (gaps.count > kNamed) gaps.named += " and " + std::to_string(gaps.count - kNamed) + " more places";
  return gaps;
}

void numberFrom(Chain& chain, int first) {
  for (Residue& residue : chain.residues) residue.number = first++;
}

void reportNumbering(const Chain& chain, const Numbering& numbering, const Gaps& gaps,
                     std::vector<std::string>& remarks, Log& log) {
  const std::string first = std::to_string(chain.residues.front().number);
  if (!numbering.complaint.empty()) {
    const std::string text = numbering.complaint + "; numbered from " + first +
                             " (REMARK NUMBER lines of the table name the old numbers)" +
                             (gaps.count == 0 ? ""
                                              : "; residues left out are X, " + std::to_string(kClosedGap) +
                                                    " at most in one place: " + gaps.named);
    log.warn(numbering.line, text);
    remarks.push_back("Numbered from " + first + ", because " + numbering.complaint);
  } else if (gaps.count > 0) {
    log.warn(gaps.line, "the residue numbers leave out " + gaps.named + ": filled with X");
    remarks.push_back("Residues that the numbers leave out are X: " + gaps.named);
  }
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

bool numberResidues(const Entry& entry, Chain& chain, const Settings& settings, bool sequenceFollows,
                    std::vector<std::string>& remarks, Log& log) {
  takeAuthorNumbersOfShifts(entry, chain);
  const bool authors = std::any_of(chain.residues.begin(), chain.residues.end(),
                                   [](const Residue& r) { return !r.author.empty(); });
  for (Residue& residue : chain.residues) {
    if (!authors) residue.author = residue.key;
  }
  Numbering numbering = readNumbers(chain, [](const Residue& r) -> const std::string& { return r.author; });
  if (sequenceFollows && numbering.complaint.empty()) {
    for (std::size_t i = 0; i < chain.residues.size(); ++i) chain.residues[i].number = *numbering.numbers[i];
    return true;
  }
  complainOfLongGaps(chain, numbering);
  const int start = numbering.numbers.empty() ? 1 : *numbering.numbers.front();
  const Gaps gaps = fillGaps(chain, numbering);
  int first = numbering.complaint.empty() ? start : 1;
  if (!settings.firstResid.empty() && settings.sequenceFile.empty()) {
    const auto given = wholeInteger(settings.firstResid);
    if (!given) return log.error(0, "--first-resid '" + settings.firstResid + "' is no integer");
    if (numbering.complaint.empty() && start != *given) {
      remarks.push_back("Residue numbers are those of the file plus " + std::to_string(*given - start));
    }
    first = *given;
  }
  numberFrom(chain, first);
  reportNumbering(chain, numbering, gaps, remarks, log);
  return true;
}

bool applySequence(const Entry& entry, Chain& chain, const std::vector<Chain>& sequences,
                   const Settings& settings, std::vector<std::string>& remarks, Log& log) {
  const Placement best = bestPlacement(chain, sequences, settings);
  const std::size_t compared = best.fit.agree + best.fit.differ + best.fit.outside;
  // A few wrong types may be mutations or slips and are reported row by row; more are another protein.
  if (best.fit.outside > 0 || best.fit.differ > std::min<std::size_t>(4, compared / 10)) {
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
    residues[static_cast<std::size_t>(at)].author = old.author;
    if (old.name.size() > 1) residues[static_cast<std::size_t>(at)].name = old.name;
  }
  std::unordered_set<std::string> placed;
  for (const Residue& residue : residues) placed.insert(residue.key);
  std::unordered_set<std::string> known;
  for (const Residue& residue : chain.residues) known.insert(residue.key);
  for (const Shift& shift : entry.shifts) {
    if (shift.chain != chain.id || known.count(shift.residue) == 0) continue;
    if (placed.count(shift.residue) == 0) {
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
