// Columns by content: names that stay with their number, atoms that do not repeat within a residue, values in
// range.
#include <algorithm>
#include <map>
#include <set>

#include "convert/assignment.h"
#include "convert/columns.h"
#include "convert/names.h"
#include "tables/text.h"

namespace convert {

namespace {

constexpr double kNoColumn = -100.0;

/// Range of any atom of that element in a protein, ppm.
bool plausibleValue(const std::string& atom, double ppm) {
  const std::string backbone = backboneAtom('A', atom);
  if (!backbone.empty()) return plausibleShift(backbone, ppm);
  switch (atom.empty() ? ' ' : atom[0]) {
    case 'C':
      return ppm > 3.0 && ppm < 220.0;
    case 'N':
      return ppm > 5.0 && ppm < 350.0;
    default:
      return ppm > -6.0 && ppm < 25.0;
  }
}

class ContentChooser {
 public:
  ContentChooser(const Cells& cells, Columns& columns)
      : cells_(cells), columns_(columns), facts_(columnFacts(cells, columns)) {
    plain_.resize(columns.width);
    for (std::size_t c = 0; c < std::min(columns.width, columns.headings.size()); ++c) {
      plain_[c] = plainHeading(columns.headings[c]);
    }
    for (int column : columns.at) taken_.insert(column);
  }

  bool run(std::string& lacking) {
    pick(kChain, [&](std::size_t c) { return headedScore(kChain, c); });
    pick(kList, [&](std::size_t c) { return headedScore(kList, c); });
    pick(kAmbiguity, [&](std::size_t c) { return headedScore(kAmbiguity, c); });
    const bool long_ = columns_.atoms.empty() && pick(kAtom, [&](std::size_t c) { return atomScore(c); });
    if (!long_ && columns_.atoms.empty() && !labelsHoldAtoms()) findAtomColumns();
    const bool wide = !columns_.atoms.empty();
    pick(kName, [&](std::size_t c) { return nameScore(c); });
    const bool needsLabel = !long_ && !wide;
    if (!needsLabel) pick(kNumber, [&](std::size_t c) { return numberScore(c, wide); });
    if (!columns_.has(kNumber)) pick(kLabel, [&](std::size_t c) { return labelScore(c, needsLabel); });
    if (!wide) pick(kShift, [&](std::size_t c) { return shiftScore(c); });
    pick(kAuthor, [&](std::size_t c) { return headedScore(kAuthor, c); });
    guessChain(wide);
    if (!columns_.has(kNumber) && !columns_.has(kLabel)) lacking = "residue number";
    if (!wide && !columns_.has(kAtom) && !(columns_.has(kLabel) && labelsHoldAtoms())) lacking = "atom";
    if (!wide && !columns_.has(kShift) && lacking.empty()) lacking = "shift";
    if (!lacking.empty()) return false;
    describe(wide);
    return true;
  }

 private:
  const std::string& cell(std::size_t row, int column) const {
    static const std::string kNothing;
    const auto& cells = cells_.rows[row].cells;
    const auto at = static_cast<std::size_t>(column);
    return column < 0 || at >= cells.size() ? kNothing : cells[at];
  }

  std::size_t distinct(std::size_t c) const { return std::min<std::size_t>(facts_[c].distinct.size(), 10); }

  /// The best column for a role among those that have none yet.
  template <class Score>
  bool pick(Role role, Score score) {
    if (columns_.has(role)) return true;
    double best = 0.0;
    std::map<std::size_t, double> scores;
    for (std::size_t c = 0; c < columns_.width; ++c) {
      if (taken_.count(static_cast<int>(c)) > 0 || facts_[c].filled == 0) continue;
      const double value = score(c);
      scores[c] = value;
      if (value <= best) continue;
      best = value;
      columns_.at[role] = static_cast<int>(c);
    }
    if (!columns_.has(role)) return false;
    taken_.insert(columns_.at[role]);
    noteRivals(role, scores);
    return true;
  }

  /// Columns whose heading names the role as well as that of the chosen one, with other content.
  void noteRivals(Role role, const std::map<std::size_t, double>& scores) {
    const auto chosen = static_cast<std::size_t>(columns_.at[role]);
    const int fit = headingFit(role, plain_[chosen]);
    for (const auto& [c, score] : scores) {
      if (c == chosen || sameContent(c, chosen)) continue;
      const int other = headingFit(role, plain_[c]);
      const bool couldBe = score > 0.0 || (role == kNumber && other > 0);
      if (!couldBe || (columns_.headings.empty() && role != kNumber && role != kShift)) continue;
      if (role == kName || role == kLabel) continue;
      if (other == 0 && fit > 0) continue;
      (other >= fit ? doubtful_[role] : rivals_[role]) +=
          (other >= fit ? doubtful_ : rivals_)[role].empty()
              ? describeColumn(columns_, static_cast<int>(c))
              : ", " + describeColumn(columns_, static_cast<int>(c));
    }
  }

  bool sameContent(std::size_t a, std::size_t b) const {
    for (std::size_t r = columns_.firstRow; r < cells_.rows.size(); ++r) {
      if (cell(r, static_cast<int>(a)) != cell(r, static_cast<int>(b))) return false;
    }
    return true;
  }

  /// Roles that only a heading can give.
  double headedScore(Role role, std::size_t c) const {
    const int fit = headingFit(role, plain_[c]);
    if (fit == 0 || (role == kAuthor && !columns_.has(kNumber))) return kNoColumn;
    const bool fits = role == kChain
                          ? facts_[c].distinct.size() <= 26 && facts_[c].names < facts_[c].filled + 1
                          : facts_[c].mostly(facts_[c].integers) || role == kList;
    return fits && !(role == kChain && fit == 1 && facts_[c].distinct.size() < 2) ? fit : kNoColumn;
  }

  double atomScore(std::size_t c) const {
    const ColumnFacts& facts = facts_[c];
    const int fit = headingFit(kAtom, plain_[c]);
    if (!facts.mostly(facts.atoms, fit == 2) || facts.longNames * 2 > facts.filled) return kNoColumn;
    const bool elements = std::all_of(facts.distinct.begin(), facts.distinct.end(),
                                      [](const std::string& text) { return text.size() == 1; });
    // A heading of one atom above a column of the letters C, H and N holds residue types.
    if (!columns_.headings.empty() && fit == 0 && headingFit(kName, plain_[c]) > 0) return kNoColumn;
    return 1.0 + 2.0 * fit + 0.2 * static_cast<double>(distinct(c)) - (elements ? 1.5 : 0.0);
  }

  double nameScore(std::size_t c) const {
    const ColumnFacts& facts = facts_[c];
    const int fit = headingFit(kName, plain_[c]);
    const bool longNames = facts.mostly(facts.longNames, fit == 2);
    if (!longNames && !facts.mostly(facts.names, fit == 2)) return kNoColumn;
    const bool elements =
        std::all_of(facts.distinct.begin(), facts.distinct.end(), [](const std::string& text) {
          return text.size() == 1 && std::string_view("CHNOPS").find(text[0]) != std::string_view::npos;
        });
    if (elements && fit == 0) return kNoColumn;
    return 1.0 + 2.0 * fit + (longNames ? 2.0 : 0.0) + 0.1 * static_cast<double>(distinct(c));
  }

  double numberScore(std::size_t c, bool wide) const {
    const ColumnFacts& facts = facts_[c];
    const int fit = headingFit(kNumber, plain_[c]);
    if (!facts.mostly(facts.codes, fit == 2) || facts.integers * 5 < facts.filled) return kNoColumn;
    if (fit == 0 && isNeverShift(plain_[c])) return kNoColumn;
    std::map<std::string, std::map<std::string, std::size_t>> names;
    std::set<std::string> keys, numbers;
    std::size_t rows = 0, clashes = 0, conflicts = 0;
    for (std::size_t r = columns_.firstRow; r < cells_.rows.size(); ++r) {
      const std::string& number = cell(r, static_cast<int>(c));
      if (!residueNumber(number)) continue;
      ++rows;
      numbers.insert(number);
      const std::string where = cell(r, columns_.at[kChain]) + " " + number + " ";
      const std::string key = where + cell(r, columns_.at[kList]) + " " + cell(r, columns_.at[kAtom]);
      if (!keys.insert(key).second) ++clashes;
      if (const std::string& name = cell(r, columns_.at[kName]); !isMissing(name)) ++names[where][name];
    }
    for (const auto& [where, found] : names) {
      std::size_t all = 0, most = 0;
      for (const auto& [name, count] : found) {
        all += count;
        most = std::max(most, count);
      }
      conflicts += all - most;
    }
    const double share = 1.0 / static_cast<double>(std::max<std::size_t>(rows, 1));
    const double clash = static_cast<double>(clashes) * share,
                 conflict = static_cast<double>(conflicts) * share;
    if ((clash > 0.7 || conflict > 0.5) && fit < 2) return kNoColumn;
    const bool counter =
        !wide && rows >= 4 && numbers.size() == rows && facts_[atomColumn()].distinct.size() > 1;
    const int apart = std::abs(static_cast<int>(c) - std::max(columns_.at[kName], columns_.at[kAtom]));
    return 3.0 + 2.0 * fit - 4.0 * clash - 4.0 * conflict - (counter ? 2.5 : 0.0) + (apart == 1 ? 0.5 : 0.0);
  }

  std::size_t atomColumn() const {
    return columns_.has(kAtom) ? static_cast<std::size_t>(columns_.at[kAtom]) : 0;
  }

  double labelScore(std::size_t c, bool withAtom) const {
    const ColumnFacts& facts = facts_[c];
    if (!facts.mostly(facts.labels)) return kNoColumn;
    if (withAtom && facts.labelAtoms * 10 < facts.labels * 8) return kNoColumn;
    return 1.0 + headingFit(kLabel, plain_[c]);
  }

  bool labelsHoldAtoms() const {
    for (std::size_t c = 0; c < columns_.width; ++c) {
      if (labelScore(c, true) > 0.0) return true;
    }
    return false;
  }

  double shiftScore(std::size_t c) const {
    const ColumnFacts& facts = facts_[c];
    const int fit = headingFit(kShift, plain_[c]);
    if (facts.numbers * 2 < facts.filled || isNeverShift(plain_[c])) return kNoColumn;
    if (fit == 0 && facts.integers == facts.filled) return kNoColumn;
    std::size_t rows = 0, plausible = 0;
    for (std::size_t r = columns_.firstRow; r < cells_.rows.size(); ++r) {
      const auto value = wholeNumber(cell(r, static_cast<int>(c)));
      const std::string atom = atomOf(r);
      if (!value || *value == 0.0 || *value >= 999.0 || atom.empty()) continue;
      ++rows;
      plausible += plausibleValue(atom, *value) ? 1 : 0;
    }
    const double share = rows == 0 ? 0.0 : static_cast<double>(plausible) / static_cast<double>(rows);
    return fit == 0 && share < 0.7 ? kNoColumn : 0.5 + 2.0 * fit + 4.0 * share;
  }

  std::string atomOf(std::size_t row) const {
    if (columns_.has(kAtom)) return text::upper(cell(row, columns_.at[kAtom]));
    Assignment assignment;
    parseAssignment(cell(row, columns_.at[kLabel]), columns_.dashJoins, assignment);
    return assignment.atom;
  }

  /// A wide table: headings that name atoms above columns of numbers.
  void findAtomColumns() {
    for (std::size_t c = 0; c < std::min(columns_.width, columns_.headings.size()); ++c) {
      std::string atom = atomOfHeading(columns_.headings[c]);
      const ColumnFacts& facts = facts_[c];
      if (atom.empty() || (facts.filled > 0 && facts.numbers * 2 < facts.filled)) continue;
      // NH is the amide proton to some and the amide nitrogen to others: the values tell.
      if (atom == "NH") atom = median(c) > 40.0 ? "N" : "HN";
      columns_.atoms.emplace_back(static_cast<int>(c), atom);
      taken_.insert(static_cast<int>(c));
    }
  }

  double median(std::size_t c) const {
    std::vector<double> values;
    for (std::size_t r = columns_.firstRow; r < cells_.rows.size(); ++r) {
      const auto value = wholeNumber(cell(r, static_cast<int>(c)));
      if (value && *value != 0.0 && *value < 999.0) values.push_back(*value);
    }
    if (values.empty()) return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
  }

  /// Residue and atom repeat, and one column of few values keeps the repetitions apart: chains.
  void guessChain(bool wide) {
    if (columns_.has(kChain) || !columns_.headings.empty() || !columns_.has(kNumber) || wide) return;
    const auto repeats = [&](int column) {
      std::set<std::string> keys;
      std::size_t count = 0;
      for (std::size_t r = columns_.firstRow; r < cells_.rows.size(); ++r) {
        const std::string key =
            cell(r, columns_.at[kNumber]) + " " + cell(r, columns_.at[kAtom]) + " " + cell(r, column);
        count += keys.insert(key).second ? 0 : 1;
      }
      return count;
    };
    if (repeats(-1) * 10 < cells_.rows.size() - columns_.firstRow) return;
    for (std::size_t c = 0; c < columns_.width; ++c) {
      const std::size_t values = facts_[c].distinct.size();
      if (taken_.count(static_cast<int>(c)) > 0 || values < 2 || values > 12 ||
          repeats(static_cast<int>(c)) > 0)
        continue;
      columns_.at[kChain] = static_cast<int>(c);
      return;
    }
  }

  void describe(bool wide) {
    static constexpr std::pair<Role, const char*> kWords[] = {
        {kChain, "chain"},   {kList, "list"}, {kNumber, "residue number"},
        {kLabel, "residue"}, {kName, "type"}, {kAtom, "atom"},
        {kShift, "shift"}};
    std::string text;
    for (const auto& [role, word] : kWords) {
      if (!columns_.has(role)) continue;
      text += (text.empty() ? "" : ", ") + std::string(word) + " from " +
              describeColumn(columns_, columns_.at[role]);
      if (!rivals_[role].empty()) text += " (not from " + rivals_[role] + ")";
    }
    if (wide) text += ", shifts from" + atomColumns() + unusedColumns();
    columns_.said = "Columns: " + text;
    if (columns_.headings.empty()) {
      columns_.guess = "no header line names the columns; by their content: " + text;
    } else {
      for (const auto& [role, word] : kWords) describeGuess(role, word);
    }
  }

  std::string atomColumns() const {
    std::string text;
    for (const auto& [column, atom] : columns_.atoms) {
      text += (text.empty() ? " " : ", ") + atom + " " + describeColumn(columns_, column);
    }
    return text;
  }

  /// Columns of numbers whose headings name no atom: the shifts of another residue, errors, or a name nobody
  /// knows.
  std::string unusedColumns() const {
    std::string text;
    for (std::size_t c = 0; c < columns_.width; ++c) {
      if (taken_.count(static_cast<int>(c)) > 0 ||
          facts_[c].numbers * 2 < std::max<std::size_t>(facts_[c].filled, 1))
        continue;
      text += (text.empty() ? "; not used: " : ", ") + describeColumn(columns_, static_cast<int>(c));
    }
    return text;
  }

  void describeGuess(Role role, const char* word) {
    if (!columns_.has(role)) return;
    const bool headed = headingFit(role, plain_[static_cast<std::size_t>(columns_.at[role])]) > 0;
    if (headed && doubtful_[role].empty()) return;
    columns_.guess += (columns_.guess.empty() ? "the " : ", the ") + std::string(word) + " is taken from " +
                      describeColumn(columns_, columns_.at[role]) +
                      (doubtful_[role].empty() ? "" : " and not from " + doubtful_[role]) + " by the content";
  }

  const Cells& cells_;
  Columns& columns_;
  std::vector<ColumnFacts> facts_;
  std::vector<std::string> plain_;
  std::set<int> taken_;
  std::array<std::string, kRoles> rivals_, doubtful_;
};

}  // namespace

bool chooseByContent(const Cells& cells, Columns& columns, std::string& lacking) {
  return ContentChooser(cells, columns).run(lacking);
}

}  // namespace convert
