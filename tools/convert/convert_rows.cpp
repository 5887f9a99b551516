// Shifts of one chain and one list to rows of the input table.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <unordered_map>

#include "common/residue_variants.h"
#include "convert/cells.h"
#include "convert/conversion.h"
#include "convert/names.h"

namespace convert {

namespace {

constexpr double kMissing = 999.0;
constexpr std::size_t kMostMismatches = 4;  // residues of another type; more mean another chain
constexpr std::size_t kNamedExamples = 5;

/// Rows of one kind of doubt, reported together.
struct Doubts {
  int line = 0;
  std::vector<std::string> examples;
  std::size_t count = 0;

  void add(int where, const std::string& example) {
    if (count++ == 0) line = where;
    if (examples.size() < kNamedExamples)
      examples.push_back(example + " (line " + std::to_string(where) + ")");
  }
  std::string list() const {
    std::string text;
    for (const std::string& example : examples) text += (text.empty() ? "" : ", ") + example;
    if (count > examples.size()) text += " and " + std::to_string(count - examples.size()) + " more";
    return text;
  }
};

/// Order of the atoms inside a residue.
std::size_t atomRank(const std::string& atom) {
  constexpr const char* kOrder[] = {"N", "HN", "HA", "HA2", "HA3", "C", "CA", "CB"};
  std::size_t rank = 0;
  while (rank < std::size(kOrder) && atom != kOrder[rank]) ++rank;
  return rank;
}

/// Residues that are X, whose shifts are not taken: reported together.
struct UnknownResidues {
  std::map<int, std::string> names;
  std::size_t shifts = 0;

  void add(const Residue& residue) {
    names.emplace(residue.number, residue.name.empty() ? "(unknown)" : residue.name);
    ++shifts;
  }
  std::string list() const {
    std::string text;
    std::size_t count = 0;
    for (const auto& [number, name] : names) {
      if (count++ < kNamedExamples) text += (text.empty() ? "" : ", ") + std::to_string(number) + " " + name;
    }
    return text + (count > kNamedExamples ? " and " + std::to_string(count - kNamedExamples) + " more" : "");
  }
};

struct Candidate {
  TableRow row;        ///< its atom still by the name of backboneAtom()
  std::string source;  ///< atom name in the file
};

class RowConverter {
 public:
  RowConverter(const Entry& entry, const Chain& chain, const Settings& settings, Conversion& conversion,
               Log& log)
      : entry_(entry), chain_(chain), settings_(settings), conversion_(conversion), log_(log) {
    for (const Residue& residue : chain.residues) {
      if (!residue.key.empty()) byKey_.emplace(residue.key, &residue);
    }
  }

  bool run(const std::string& list) {
    for (const Shift& shift : entry_.shifts) {
      if (shift.chain != chain_.id) {
        conversion_.skip("of another chain");
      } else if (shift.list != list) {
        conversion_.skip("of another shift list");
      } else if (!takeShift(shift)) {
        return false;
      }
    }
    if (unknown_.shifts > 0) {
      conversion_.skip("of residues that are X in the sequence: " + unknown_.list(), unknown_.shifts);
    }
    if (!reportMismatches() || !reportImplausible()) return false;
    reportOthers();
    for (auto& [number, candidates] : byResidue_) {
      if (!finishResidue(candidates)) return false;
    }
    if (conversion_.rows.empty()) return log_.error(0, "no backbone shift is left to convert");
    return true;
  }

 private:
  static std::string label(const Residue& residue, const std::string& atom) {
    return residue.name + std::to_string(residue.number) + " " + atom;
  }

  bool takeShift(const Shift& shift) {
    const auto found = byKey_.find(shift.residue);
    if (found == byKey_.end() && !shift.name.empty() && parentCode(shift.name) == 'X') {
      conversion_.skip("of molecules that are no part of the sequence (" + shift.name + ")");
      return true;
    }
    if (found == byKey_.end()) {
      return log_.error(shift.line, "residue " + shift.residue + " " + shift.name +
                                        " is not in the sequence of chain " + chain_.id);
    }
    const Residue& residue = *found->second;
    const char code = codeOf(residue, settings_);
    const std::string atom = backboneAtom(code, shift.atom);
    const auto value = wholeNumber(shift.text);
    const bool missing = shift.missing || isMissing(shift.text);
    if (!missing && !value) {
      return log_.error(shift.line, "the shift '" + shift.text + "' of " + label(residue, shift.atom) +
                                        " is no number; are the columns in another order?");
    }
    if (!isStandard(code)) {
      unknown_.add(residue);
      return true;
    }
    if (!sameResidue(shift, residue, code)) return true;
    if (atom.empty()) {
      conversion_.skip(code == 'P' && (shift.atom == "H" || shift.atom == "HN")
                           ? "of amide protons of proline"
                           : "of other atoms");
      return true;
    }
    if (missing || !std::isfinite(*value) || *value >= kMissing || (*value == 0.0 && entry_.zeroIsMissing)) {
      conversion_.skip("without a value");
      return true;
    }
    const tools::ResidueVariant* variant = tools::findResidueVariant(residue.name);
    if (variant != nullptr && variant->parent == code && !variant->shiftsLikeParent(atom)) {
      conversion_.skip("that the modification of their residue changes (" + residue.name + ")");
      return true;
    }
    return takeValue(shift, residue, code, atom, *value);
  }

  bool takeValue(const Shift& shift, const Residue& residue, char code, const std::string& atom,
                 double value) {
    if (value == 0.0) {
      zeros_.add(shift.line, label(residue, shift.atom));
      conversion_.skip("with the value 0");
      return true;
    }
    const bool ambiguous = shift.ambiguity >= 4 && shift.ambiguity <= 9;
    if (ambiguous) ambiguous_.add(shift.line, label(residue, shift.atom));
    if (ambiguous && settings_.skipAmbiguous) {
      conversion_.skip("with an ambiguous assignment (code 4, 5, 6 or 9)");
      return true;
    }
    if (!plausibleShift(atom, value))
      implausible_.add(shift.line, label(residue, shift.atom) + " " + shift.text);
    ++values_;
    byResidue_[residue.number].push_back(
        {{residue.number, code, atom, value, shift.text, shift.line}, shift.atom});
    return true;
  }

  bool sameResidue(const Shift& shift, const Residue& residue, char code) {
    if (shift.name.empty()) return true;
    const auto reduced = [](char c) { return c == 'c' ? 'C' : c; };
    // An author may call a modified residue by the plain name, and a plain one by that of a state of it.
    if (reduced(parentCode(shift.name)) == reduced(code) || shift.name == residue.name) return true;
    const std::string example = "residue " + std::to_string(residue.number) + " is " + residue.name +
                                " in the sequence, " + shift.name + " in the shift list";
    if (mismatched_.insert(residue.number).second) mismatches_.add(shift.line, example);
    conversion_.skip("of residues whose type differs from the sequence");
    return false;
  }

  bool reportMismatches() {
    if (mismatches_.count == 0) return true;
    const std::string text = "residue types differ from the sequence: " + mismatches_.list();
    if (mismatches_.count > kMostMismatches || byResidue_.size() <= mismatches_.count) {
      return log_.error(mismatches_.line, text + "; another chain or another numbering?");
    }
    log_.warn(mismatches_.line, text + "; their shifts are skipped");
    return true;
  }

  bool reportImplausible() {
    if (implausible_.count == 0) return true;
    const std::string text = "no protein has such shifts: " + implausible_.list();
    const bool many = implausible_.count >= 3 && implausible_.count * 10 > values_;
    if (many || implausible_.count == values_) {
      return log_.error(implausible_.line, text + "; are the columns in another order?");
    }
    log_.warn(implausible_.line, text + "; kept for the check of the prediction");
    return true;
  }

  void reportOthers() {
    if (zeros_.count > 0) log_.warn(zeros_.line, "a shift of 0 is taken as missing: " + zeros_.list());
    if (ambiguous_.count > 0) {
      log_.warn(ambiguous_.line,
                std::to_string(ambiguous_.count) +
                    " backbone assignments are ambiguous (code 4, 5, 6 or 9): " + ambiguous_.list() +
                    (settings_.skipAmbiguous ? "; skipped" : "; --skip-ambiguous leaves them out"));
    }
  }

  /// Glycine: HA1/HA2 is an older naming of HA2/HA3; one value for both protons becomes HA2.
  void nameGlycineProtons(std::vector<Candidate>& candidates) {
    const auto has = [&](const char* atom) {
      return std::any_of(candidates.begin(), candidates.end(),
                         [&](const Candidate& c) { return c.row.atom == atom; });
    };
    const bool old = has("HA1"), separate = old || has("HA2") || has("HA3");
    for (Candidate& candidate : candidates) {
      std::string& atom = candidate.row.atom;
      if (old && atom == "HA2") {
        atom = "HA3";
      } else if (atom == "HA1") {
        atom = "HA2";
      } else if (atom == "HA*") {
        atom = separate ? "" : "HA2";
      }
    }
    const auto extra = [](const Candidate& c) { return c.row.atom.empty(); };
    const auto count = static_cast<std::size_t>(std::count_if(candidates.begin(), candidates.end(), extra));
    if (count > 0) conversion_.skip("of glycine HA beside HA2 or HA3", count);
    std::erase_if(candidates, extra);
  }

  bool finishResidue(std::vector<Candidate>& candidates) {
    if (!candidates.empty() && candidates.front().row.code == 'G') nameGlycineProtons(candidates);
    std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
      return atomRank(a.row.atom) < atomRank(b.row.atom);
    });
    for (const Candidate& candidate : candidates) {
      const TableRow& row = candidate.row;
      const bool repeated = !conversion_.rows.empty() && conversion_.rows.back().resid == row.resid &&
                            conversion_.rows.back().atom == row.atom;
      if (repeated) {
        if (!keepOneOf(conversion_.rows.back(), row)) return false;
        continue;
      }
      conversion_.rows.push_back(row);
      ++conversion_.taken[row.atom];
      if (candidate.source != row.atom) ++conversion_.renamed[candidate.source + " to " + row.atom];
    }
    return true;
  }

  bool keepOneOf(const TableRow& first, const TableRow& second) {
    const std::string what = std::string(1, first.code) + std::to_string(first.resid) + " " + first.atom;
    const std::string where = what + " stands at line " + std::to_string(first.line) + " (" + first.text +
                              ") and at line " + std::to_string(second.line) + " (" + second.text + ")";
    if (first.value != second.value && !settings_.keepFirst) {
      return log_.error(second.line, where + "; --keep-first takes the first value");
    }
    log_.warn(second.line, where + "; the first one is taken");
    conversion_.skip("that repeat an atom");
    return true;
  }

  const Entry& entry_;
  const Chain& chain_;
  const Settings& settings_;
  Conversion& conversion_;
  Log& log_;
  std::unordered_map<std::string, const Residue*> byKey_;
  std::map<int, std::vector<Candidate>> byResidue_;
  std::set<int> mismatched_;
  UnknownResidues unknown_;
  std::size_t values_ = 0;
  Doubts mismatches_, implausible_, zeros_, ambiguous_;
};

}  // namespace

char codeOf(const Residue& residue, const Settings& settings) {
  if (residue.code != 'X') return residue.code;
  return settings.modifiedAsParent ? parentCode(residue.name) : residueCode(residue.name, settings.mseAsMet);
}

void Conversion::skip(const std::string& reason, std::size_t count) {
  for (auto& [known, number] : skipped) {
    if (known == reason) {
      number += count;
      return;
    }
  }
  skipped.emplace_back(reason, count);
}

void setSequence(const Chain& chain, const Settings& settings, Conversion& conversion) {
  conversion.firstResid = chain.residues.front().number;
  for (const Residue& residue : chain.residues) {
    conversion.sequence += codeOf(residue, settings);
  }
}

bool convertRows(const Entry& entry, const Chain& chain, const std::string& list, const Settings& settings,
                 Conversion& conversion, Log& log) {
  setSequence(chain, settings, conversion);
  if (!entry.others.empty()) {
    std::string names;
    std::size_t total = 0;
    for (const auto& [name, count] : entry.others) {
      names += (names.empty() ? "" : ", ") + tools::shortened(name, 20) + " " + std::to_string(count);
      total += count;
    }
    conversion.skip("of molecules that are no part of a protein chain: " + tools::shortened(names, 200),
                    total);
  }
  if (entry.unassigned > 0) conversion.skip("of unassigned resonances", entry.unassigned);
  return RowConverter(entry, chain, settings, conversion, log).run(list);
}

}  // namespace convert
