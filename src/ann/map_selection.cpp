// Which network's phi/psi map stands for a residue.
#include "ann/map_selection.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr int kSparseWindow =
    25;  // missing shifts of five residues that leave nothing to predict from; given
constexpr int kToleratedMissing = 4;  // of each residue, for the two-level network; one more without protons

}  // namespace

BoxMap selectMap(const MapSelection& input) {
  const int resid = input.resid;
  const auto& [first, last, shiftFirst, shiftLast] = input.span;
  const bool sparse = std::accumulate(input.missing.begin(), input.missing.end(), 0) >= kSparseWindow;
  // Beside a cut end the two-level network would see the cut as the end of the chain.
  const bool besideCutStart = resid == first + 1 && first != shiftFirst;
  const bool besideCutEnd = resid == last - 1 && last != input.sequenceLast;
  if ((besideCutStart || besideCutEnd) && !sparse) return BoxMap::Hybrid;

  const bool outside = resid < first || resid > last;
  const bool cutStart = resid == first && resid != shiftFirst;
  const bool cutEnd = resid == last && resid != input.sequenceLast;
  if (outside || cutStart || cutEnd) return BoxMap::None;

  const int limit = kToleratedMissing + (input.noProton ? 1 : 0);
  if (std::ranges::all_of(input.missing, [&](int count) { return count <= limit; })) return BoxMap::Full;
  return sparse ? BoxMap::None : BoxMap::Hybrid;
}
