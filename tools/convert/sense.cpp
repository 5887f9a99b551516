// Do the values make sense where they stand? Units, exchanged atoms, a list moved against its sequence.
#include "convert/sense.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <unordered_map>
#include <vector>

#include "base/missing.h"
#include "convert/names.h"

namespace convert {

namespace {

constexpr int kFurthest = 5;        // residues that a list is moved by in trial
constexpr std::size_t kFewest = 5;  // values or residues below which nothing is said
constexpr double kWorstFit = -2.2;  // log likelihood a value; lists in their right place have about -1.5

struct AtomKind {
  const char* name;
  double median;  // ppm, over all residues
  double hertz;   // frequency of the nucleus over that of 1H
};

constexpr std::array<AtomKind, 6> kAtoms = {{{"N", 119.5, 0.10133},
                                             {"HN", 8.3, 1.0},
                                             {"HA", 4.4, 1.0},
                                             {"C", 176.0, 0.25145},
                                             {"CA", 57.0, 0.25145},
                                             {"CB", 33.0, 0.25145}}};

struct TypicalShift {
  char code;
  double ca, caSpread, cb, cbSpread, n,
      nSpread;  // ppm: median and half the central 68 %; cb 0: there is none
};

// From 2,100 re-referenced public entries; CB of cysteine is that of both oxidation states.
constexpr std::array<TypicalShift, 20> kTypical = {
    {{'A', 53.6, 2.1, 18.8, 1.5, 122.3, 3.2}, {'C', 57.6, 3.4, 33.0, 7.0, 119.1, 4.6},
     {'D', 54.6, 2.2, 41.0, 1.3, 119.9, 3.8}, {'E', 57.8, 2.3, 29.8, 1.4, 119.8, 3.4},
     {'F', 57.8, 2.8, 39.9, 1.9, 120.0, 4.2}, {'G', 45.4, 1.1, 0.0, 0.0, 108.7, 3.5},
     {'H', 56.2, 2.3, 30.3, 1.9, 118.8, 4.1}, {'I', 61.0, 2.9, 38.6, 1.8, 121.0, 4.2},
     {'K', 57.0, 2.4, 32.7, 1.4, 120.2, 3.6}, {'L', 55.6, 2.3, 42.2, 1.7, 121.1, 3.9},
     {'M', 55.9, 2.3, 32.9, 2.0, 119.3, 3.6}, {'N', 53.5, 1.9, 38.7, 1.5, 118.1, 3.9},
     {'P', 63.3, 1.4, 32.0, 0.7, 134.8, 6.5}, {'Q', 56.6, 2.3, 29.1, 1.6, 119.0, 3.4},
     {'R', 56.7, 2.5, 30.6, 1.6, 119.9, 3.6}, {'S', 58.5, 2.2, 63.8, 1.3, 115.6, 3.6},
     {'T', 61.8, 2.8, 69.8, 1.5, 115.0, 4.9}, {'V', 62.0, 3.1, 32.6, 1.8, 120.6, 4.4},
     {'W', 57.6, 2.6, 30.0, 1.8, 121.2, 4.1}, {'Y', 57.8, 2.6, 39.3, 2.1, 119.9, 4.3}}};

const TypicalShift* typicalOf(char code) {
  const char plain = code == 'c' ? 'C' : code;
  const auto it =
      std::find_if(kTypical.begin(), kTypical.end(), [&](const TypicalShift& t) { return t.code == plain; });
  return it == kTypical.end() ? nullptr : &*it;
}

/// What the list says of one residue, whatever the sequence says.
struct Observed {
  std::map<std::string, double> values;  // by backbone atom
  char named = 0;                        // type in the shift rows, 0 for none
  int line = 0;
};

double medianOf(std::vector<double> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

std::string rounded(double value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

std::string signedNumber(int value) {
  return (value > 0 ? "+" : "") + std::to_string(value);
}

class SenseCheck {
 public:
  SenseCheck(const Entry& entry, const Chain& chain, const std::string& list, Log& log)
      : chain_(chain), log_(log) {
    std::unordered_map<std::string, std::size_t> index;
    for (std::size_t i = 0; i < chain.residues.size(); ++i) index.emplace(chain.residues[i].key, i);
    for (const Shift& shift : entry.shifts) {
      const auto at = index.find(shift.residue);
      if (shift.chain != chain.id || shift.list != list || at == index.end()) continue;
      add(shift, at->second);
    }
  }

  bool run() {
    if (!checkUnits() || !checkKinds() || !checkTypes()) return false;
    checkProtons();
    if (!checkCarbons()) return false;
    checkPlace();
    return true;
  }

 private:
  char codeAt(std::ptrdiff_t index) const {
    return index < 0 || index >= static_cast<std::ptrdiff_t>(chain_.residues.size())
               ? 'X'
               : chain_.residues[static_cast<std::size_t>(index)].code;
  }

  void add(const Shift& shift, std::size_t index) {
    Observed& observed = observed_[index];
    if (observed.line == 0) observed.line = shift.line;
    if (!shift.name.empty()) observed.named = residueCode(shift.name);
    // Atoms by the names of any residue but glycine, whose alpha protons stand for HA.
    std::string atom = backboneAtom('A', shift.atom);
    if (atom.empty() && backboneAtom('G', shift.atom).starts_with("HA")) atom = "HA";
    const auto value = wholeNumber(shift.text);
    if (shift.missing || atom.empty() || !value || !std::isfinite(*value) || *value == 0.0) return;
    if (lines_.count(atom) == 0) lines_[atom] = shift.line;
    if (*value >= kMissingLimit) {
      large_[atom].push_back(*value);
      return;
    }
    byAtom_[atom].push_back(*value);
    observed.values.emplace(atom, *value);
  }

  /// Values of thousands that differ from each other are no marks of missing shifts.
  bool checkUnits() {
    std::string atoms;
    double frequency = 0.0;
    for (const AtomKind& kind : kAtoms) {
      std::vector<double> values = large_[kind.name];
      const std::size_t all = values.size() + byAtom_[kind.name].size();
      const double middle = medianOf(values);
      std::sort(values.begin(), values.end());
      values.erase(std::unique(values.begin(), values.end()), values.end());
      if (values.size() < 3 || values.size() * 2 < all) continue;
      const double proton = middle / kind.median / kind.hertz;
      if (proton < 150.0 || proton > 1600.0) continue;
      atoms += (atoms.empty() ? "" : ", ") + std::string(kind.name);
      if (frequency == 0.0) frequency = proton;
      if (line_ == 0) line_ = lines_[kind.name];
    }
    if (atoms.empty()) return true;
    return log_.error(
        line_, "the shifts of " + atoms + " look like Hz (of a spectrometer of about " +
                   rounded(frequency, 0) +
                   " MHz), not ppm; divide each by the frequency of its nucleus in MHz, or export ppm");
  }

  /// The atom whose values these would be, when next to none is possible for the atom they are named after.
  const AtomKind* looksLike(const AtomKind& kind) const {
    const auto it = byAtom_.find(kind.name);
    if (it == byAtom_.end() || it->second.size() < kFewest) return nullptr;
    const auto share = [&](const char* atom) {
      const auto count = std::count_if(it->second.begin(), it->second.end(),
                                       [&](double value) { return plausibleShift(atom, value); });
      return static_cast<double>(count) / static_cast<double>(it->second.size());
    };
    if (share(kind.name) > 0.2) return nullptr;
    const double middle = medianOf(it->second);
    const AtomKind* best = nullptr;
    for (const AtomKind& other : kAtoms) {
      if (share(other.name) < 0.8) continue;
      if (best == nullptr || std::abs(middle - other.median) < std::abs(middle - best->median)) best = &other;
    }
    return best;
  }

  bool checkKinds() {
    std::string text;
    int line = 0;
    for (const AtomKind& kind : kAtoms) {
      const AtomKind* other = looksLike(kind);
      if (other == nullptr) continue;
      text += (text.empty() ? "" : ", ") + std::string("those named ") + kind.name + " look like " +
              other->name + " (median " + rounded(medianOf(byAtom_[kind.name]), 2) + ")";
      if (line == 0) line = lines_[kind.name];
    }
    if (text.empty()) return true;
    return log_.error(line,
                      "the shifts stand under the wrong atoms: " + text +
                          "; are the columns in another order? Exchange the names in the file, or give the "
                          "columns of a table with --columns");
  }

  std::size_t agreeing(int offset, std::size_t& named) const {
    std::size_t agree = 0;
    named = 0;
    for (const auto& [index, observed] : observed_) {
      if (observed.named == 0 || observed.named == 'X') continue;
      ++named;
      const char code = codeAt(static_cast<std::ptrdiff_t>(index) + offset);
      const char plain = code == 'c' ? 'C' : code;
      agree += plain == (observed.named == 'c' ? 'C' : observed.named) ? 1 : 0;
    }
    return agree;
  }

  /// Types in the rows that are those of the sequence some residues further on.
  bool checkTypes() {
    if (!chain_.sequenceGiven) return true;
    std::size_t named = 0, best = 0;
    const std::size_t here = agreeing(0, named);
    int offset = 0;
    for (int k = -kFurthest; k <= kFurthest; ++k) {
      const std::size_t there = agreeing(k, named);
      if (there > best || (there == best && std::abs(k) < std::abs(offset))) {
        best = there;
        offset = k;
      }
    }
    if (named < kFewest || here * 10 >= named * 7 || best * 100 < named * 85 || offset == 0) return true;
    return log_.error(observed_.begin()->second.line,
                      "the residue types of the list agree with the sequence for " + std::to_string(here) +
                          " of " + std::to_string(named) + " residues, and for " + std::to_string(best) +
                          " when the list is moved by " + signedNumber(offset) + "; --list-offset " +
                          std::to_string(offset) + " does that, if another numbering is meant");
  }

  void checkProtons() {
    const auto& amide = byAtom_["HN"];
    const auto& alpha = byAtom_["HA"];
    if (amide.size() < kFewest || alpha.size() < kFewest) return;
    if (medianOf(amide) > 5.7 || medianOf(alpha) < 6.6) return;
    log_.warn(lines_["HN"], "HN and HA look exchanged (medians " + rounded(medianOf(amide), 2) + " and " +
                                rounded(medianOf(alpha), 2) + " ppm); exchange their names in the file");
  }

  bool checkCarbons() {
    std::size_t both = 0;
    std::vector<std::string> exchanged;
    for (const auto& [index, observed] : observed_) {
      const char code = chain_.residues[index].code;
      const TypicalShift* typical = typicalOf(code);
      const auto ca = observed.values.find("CA"), cb = observed.values.find("CB");
      // Serine and threonine have CB above CA by a few ppm: they prove nothing.
      if (typical == nullptr || typical->cb == 0.0 || code == 'S' || code == 'T') continue;
      if (ca == observed.values.end() || cb == observed.values.end()) continue;
      const auto cost = [&](double alpha, double beta) {
        return std::abs(alpha - typical->ca) / typical->caSpread +
               std::abs(beta - typical->cb) / typical->cbSpread;
      };
      ++both;
      const bool wrong = cost(ca->second, cb->second) > 10.0 && cost(cb->second, ca->second) < 5.0;
      if (wrong) exchanged.push_back(std::string(1, code) + std::to_string(chain_.residues[index].number));
      if (wrong && line_ == 0) line_ = observed.line;
    }
    if (exchanged.empty()) return true;
    std::string names;
    for (std::size_t i = 0; i < std::min<std::size_t>(exchanged.size(), 5); ++i)
      names += (i == 0 ? "" : ", ") + exchanged[i];
    if (exchanged.size() > 5) names += " ...";
    const std::string text = "CA and CB look exchanged in " + std::to_string(exchanged.size()) + " of " +
                             std::to_string(both) + " residues (" + names + "); ";
    if (both >= kFewest && exchanged.size() * 2 >= both) {
      return log_.error(line_, text + "exchange their names in the file, or the columns with --columns");
    }
    log_.warn(line_, text + "correct them in the file if they are");
    return true;
  }

  /// Log likelihood of the values, up to a constant, on a sequence moved by `offset`; each value counts 8 at
  /// most.
  double likelihood(int offset, std::size_t& values) const {
    double sum = 0.0;
    values = 0;
    for (const auto& [index, observed] : observed_) {
      const char code = codeAt(static_cast<std::ptrdiff_t>(index) + offset);
      const TypicalShift* typical = typicalOf(code);
      // A residue of unknown type, and one outside the sequence, tell nothing: the value of an average fit.
      const auto& found = observed.values;  // clang 14 captures no structured binding
      const auto term = [&](const char* atom, double mean, double spread) {
        const auto it = found.find(atom);
        if (it == found.end()) return;
        ++values;
        const double wide = spread * 1.3, z = wide > 0.0 ? (it->second - mean) / wide : 4.0;
        sum -= typical == nullptr ? 1.2 : std::min(0.5 * z * z + std::log(std::max(wide, 1.0)), 8.0);
      };
      term("CA", typical == nullptr ? 0.0 : typical->ca, typical == nullptr ? 0.0 : typical->caSpread);
      term("CB", typical == nullptr ? 0.0 : typical->cb, typical == nullptr ? 0.0 : typical->cbSpread);
      term("N", typical == nullptr ? 0.0 : typical->n, typical == nullptr ? 0.0 : typical->nSpread);
      if (code == 'P' && observed.values.count("HN") > 0) sum -= 6.0;
    }
    return sum;
  }

  void checkPlace() {
    std::size_t informative = 0;
    for (const auto& [index, observed] : observed_) {
      informative += observed.values.count("CB") + observed.values.count("CA") > 0 ? 1 : 0;
    }
    if (informative < 8) return;
    std::size_t values = 0;
    const double here = likelihood(0, values);
    double best = here;
    int offset = 0;
    for (int k = -kFurthest; k <= kFurthest; ++k) {
      const double there = likelihood(k, values);
      if (there <= best) continue;
      best = there;
      offset = k;
    }
    if (best - here < std::max(15.0, 0.4 * static_cast<double>(informative))) return;
    // A list that fits nowhere is another protein, or unusual; the least bad place tells nothing.
    if (best < kWorstFit * static_cast<double>(values)) return;
    log_.warn(observed_.begin()->second.line,
              "the values fit the sequence better when the list is moved by " + signedNumber(offset) +
                  " (log likelihood " + signedNumber(static_cast<int>(best - here)) + " over " +
                  std::to_string(informative) + " residues); check the numbering: --list-offset " +
                  std::to_string(offset) + " moves it");
  }

  const Chain& chain_;
  Log& log_;
  std::map<std::size_t, Observed> observed_;  // by position in the sequence
  std::map<std::string, std::vector<double>> byAtom_, large_;
  std::map<std::string, int> lines_;
  int line_ = 0;
};

}  // namespace

bool checkSense(const Entry& entry, const Chain& chain, const std::string& list, Log& log) {
  return SenseCheck(entry, chain, list, log).run();
}

bool moveList(Entry& entry, const Chain& chain, int offset, Log& log) {
  std::unordered_map<std::string, std::ptrdiff_t> index;
  for (std::size_t i = 0; i < chain.residues.size(); ++i)
    index.emplace(chain.residues[i].key, static_cast<std::ptrdiff_t>(i));
  std::size_t named = 0, agree = 0;
  const auto end = static_cast<std::ptrdiff_t>(chain.residues.size());
  for (Shift& shift : entry.shifts) {
    const auto at = index.find(shift.residue);
    if (shift.chain != chain.id || at == index.end()) continue;
    const Residue& old = chain.residues[static_cast<std::size_t>(at->second)];
    named += shift.name.empty() ? 0 : 1;
    agree += !shift.name.empty() && residueCode(shift.name) == residueCode(old.name) ? 1 : 0;
    const std::ptrdiff_t to = at->second + offset;
    if (to < 0 || to >= end) {
      if (shift.missing) continue;
      return log.error(shift.line, "residue " + std::to_string(old.number) + " moved by " +
                                       signedNumber(offset) + " lies outside the sequence");
    }
    shift.residue = chain.residues[static_cast<std::size_t>(to)].key;
    shift.author.clear();
  }
  // Types that fitted the old place came from there; those that did not move with the values.
  if (agree * 10 < named * 8) return true;
  for (Shift& shift : entry.shifts) {
    if (shift.chain == chain.id) shift.name.clear();
  }
  return true;
}

}  // namespace convert
