// The secondary structure of the runs of one protein, a row a run, as a picture.
#include <algorithm>
#include <cctype>

#include "report/svg.h"
#include "run/comparison.h"

namespace run {

namespace {

constexpr double kWidth = 920, kLabelWidth = 120, kRowHeight = 15, kBarHeight = 11, kHeadHeight = 20;
constexpr double kWidestCell = 12;
constexpr std::size_t kLongestLabel = 20;

/// Two runs are of one protein when at least this share of the residue numbers they have in common agree, and
/// they have at least half of the shorter one's in common.
constexpr double kAgreement = 0.9;

bool sameProtein(const Outcome& a, const Outcome& b) {
  std::size_t common = 0, equal = 0;
  for (const auto& [resid, code] : a.sequence) {
    const auto other = b.sequence.find(resid);
    if (other == b.sequence.end() || code == 'X' || other->second == 'X') continue;
    ++common;
    equal += std::toupper(code) == std::toupper(other->second) ? 1U : 0U;
  }
  const std::size_t shorter = std::min(a.sequence.size(), b.sequence.size());
  return common * 2 >= shorter && static_cast<double>(equal) >= kAgreement * static_cast<double>(common);
}

std::string structureName(char className) {
  std::string name;
  switch (std::toupper(className)) {
    case 'H':
      name = "helix";
      break;
    case 'E':
      name = "strand";
      break;
    case 'L':
    case 'C':
      name = "coil";
      break;
    default:
      return "no prediction";
  }
  return std::islower(className) != 0 ? name + " (from the sequence)" : name;
}

std::string structureStyle(char className) {
  const char capital = static_cast<char>(std::toupper(className));
  const std::string style = capital == 'H'   ? "ss-h"
                            : capital == 'E' ? "ss-e"
                            : capital == 'X' ? "p-x"
                                             : "p-l";
  return std::islower(className) != 0 && className != 'x' ? style + " p-seq" : style;
}

class Picture {
 public:
  Picture(const std::vector<Compared>& runs, const std::vector<std::size_t>& group)
      : runs_(runs), group_(group) {
    low_ = runs[group.front()].outcome->sequence.begin()->first;
    high_ = low_;
    for (const std::size_t k : group) {
      low_ = std::min(low_, runs[k].outcome->sequence.begin()->first);
      high_ = std::max(high_, runs[k].outcome->sequence.rbegin()->first);
    }
    cell_ = std::min(kWidestCell, (kWidth - kLabelWidth) / (high_ - low_ + 1));
  }

  std::string draw() {
    const double height = kHeadHeight + kRowHeight * static_cast<double>(group_.size());
    report::Svg svg(kLabelWidth + cell_ * (high_ - low_ + 1) + 4, height, "strip",
                    "Secondary structure by residue, one row a run");
    drawNumbers(svg);
    for (std::size_t row = 0; row < group_.size(); ++row) drawRow(svg, row);
    return svg.finish();
  }

 private:
  double left(int resid) const { return kLabelWidth + cell_ * (resid - low_); }

  void drawNumbers(report::Svg& svg) const {
    const int step = cell_ * 10 >= 24 ? 10 : cell_ * 20 >= 24 ? 20 : 50;
    for (int resid = low_; resid <= high_; ++resid) {
      if (resid % step != 0) continue;
      svg.text(left(resid) + cell_ / 2, kHeadHeight - 7, std::to_string(resid), "num", "middle");
    }
  }

  /// Neighbours of one class become one bar.
  void drawRow(report::Svg& svg, std::size_t row) const {
    const Compared& run = runs_[group_[row]];
    const double top = kHeadHeight + kRowHeight * static_cast<double>(row);
    std::string label = run.folder;
    if (label.size() > kLongestLabel) label = label.substr(0, kLongestLabel - 2) + "..";
    svg.text(0, top + kBarHeight - 1.5, label, "num", "start");
    const auto& structure = run.outcome->structure;
    for (auto first = structure.begin(); first != structure.end();) {
      auto last = first;
      while (std::next(last) != structure.end() && std::next(last)->second == first->second &&
             std::next(last)->first == last->first + 1) {
        ++last;
      }
      const std::string tip = run.folder + ", " + std::to_string(first->first) + " to " +
                              std::to_string(last->first) + ": " + structureName(first->second);
      svg.rect(left(first->first), top, cell_ * (last->first - first->first + 1), kBarHeight,
               structureStyle(first->second), tip);
      first = std::next(last);
    }
  }

  const std::vector<Compared>& runs_;
  const std::vector<std::size_t>& group_;
  int low_ = 0, high_ = 0;
  double cell_ = 0;
};

}  // namespace

std::vector<std::vector<std::size_t>> sameProteins(const std::vector<Compared>& runs) {
  std::vector<std::vector<std::size_t>> groups;
  for (std::size_t k = 0; k < runs.size(); ++k) {
    if (!runs[k].outcome || runs[k].outcome->sequence.empty()) continue;
    const auto group = std::find_if(groups.begin(), groups.end(), [&](const std::vector<std::size_t>& known) {
      return sameProtein(*runs[known.front()].outcome, *runs[k].outcome);
    });
    if (group == groups.end()) {
      groups.push_back({k});
    } else {
      group->push_back(k);
    }
  }
  return groups;
}

std::string structurePicture(const std::vector<Compared>& runs, const std::vector<std::size_t>& group) {
  return Picture(runs, group).draw();
}

}  // namespace run
