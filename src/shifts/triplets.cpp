// Triplet averaging: estimates of a residue's secondary shifts from the closest triplets of a library.
#include <algorithm>
#include <array>

#include "base/atoms.h"
#include "base/maps.h"
#include "base/missing.h"
#include "driver/ORBEL.h"
#include "shifts/triplet_distance.h"
#include "shifts/triplet_image.h"
#include "tables/output_text.h"
#include "tables/text.h"

/// Reads orbel_obsCS.tab; rows of an excluded source keep their centre shifts but match nothing.
void ORBEL::loadTripletLibrary() {
  const std::string file = tabDir + pathSeparator + "orbel_obsCS.tab";
  std::optional<TripletLibrary> imaged = loadTripletImage(file);
  auto library =
      std::make_shared<TripletLibrary>(imaged ? std::move(*imaged) : readTripletLibrary(file, atomNames));
  excludeSources(*library, exclusionList);
  tripletLibrary = std::move(library);
}

namespace {

/// SHIFT of the adjusted row of residue and atom, 0 outside the range. The rows of the range stand in order,
/// one per atom of each residue, so the place tells which they are, whatever their name (an amide proton may
/// be named H).
double adjustedShift(const ORBEL& run, int resid, int position) {
  if (resid < run.firstResidOption || resid > run.lastResidOption) return 0.0;
  const auto row = run.adjustedShiftTable.entries.find(
      (resid - run.firstResidOption) * static_cast<int>(kAtoms) + position);
  return row == run.adjustedShiftTable.entries.end() ? 0.0 : text::toDouble(GDB::cell(row->second, "SHIFT"));
}

}  // namespace

/// The record of residues resid - 1, resid, resid + 1; a residue or atom without a row reads 0.
Triplet ORBEL::getTriplet(int resid) const {
  Triplet triplet;
  for (int p = 1; p <= 3; ++p) {
    const int q = resid - 2 + p;
    triplet[tripletKey("RESID", p)] = cellText(q);
    triplet[tripletKey("RESNAME", p)] = valueOr(sequence, q);
    for (const auto& [position, atom] : atomNames) {
      double shift = adjustedShift(*this, q, position);
      if (clipOn) shift = clipSShift(q, shift, atom);
      if (noProton && isProton(atom)) shift = kMissingValue;
      triplet[tripletKey(atom, p)] = cellText(shift);
    }
  }
  return triplet;
}

/// At most one of the three residues may lack more than 3 shifts (4 without protons), and all three must lie
/// among the residues with shifts.
bool ORBEL::testTriplet(Triplet triplet) const {
  const int limit = noProton ? 4 : 3;
  int poor = 0;
  for (int p = 1; p <= 3; ++p) {
    if (valueOr(missingCount, text::toInt(triplet[tripletKey("RESID", p)])) > limit) ++poor;
  }
  return poor <= 1 && text::toInt(triplet["RESID_R1"]) >= shiftFirstResid &&
         text::toInt(triplet["RESID_R3"]) <= shiftLastResid;
}

namespace {

TripletQuery makeQuery(const ORBEL& run, const Triplet& triplet) {
  TripletQuery query;
  for (int p = 1; p <= 3; ++p) {
    const auto i = static_cast<std::size_t>(p - 1);
    for (const auto& [position, atom] : run.atomNames) {
      query.shifts[i * kAtoms + static_cast<std::size_t>(position - 1)] =
          static_cast<float>(text::toDouble(valueOr(triplet, tripletKey(atom, p))));
    }
    const auto* row = findValue(run.homologyByName, valueOr(triplet, tripletKey("RESNAME", p)));
    for (const std::string& name : run.tripletLibrary->names) {
      query.homology[i].push_back(row == nullptr ? 0.0 : valueOr(*row, name));
    }
  }
  return query;
}

struct Nearest {
  float distance;
  int row;
};

/// The at most `count` smallest distinct distances below the limit, ascending, each with its last row.
std::vector<Nearest> nearestRows(const std::vector<float>& distances, std::size_t count) {
  constexpr float kLargestDistance = 200.0F;  // given
  std::vector<Nearest> nearest;
  float limit = kLargestDistance;  // exclusive until the list is full, then its largest distance, inclusive
  for (std::size_t row = 0; row < distances.size(); ++row) {
    const float distance = distances[row];
    if (!(distance < kLargestDistance) || distance > limit) continue;
    const auto place = std::lower_bound(nearest.begin(), nearest.end(), distance,
                                        [](const Nearest& n, float d) { return n.distance < d; });
    if (place != nearest.end() && place->distance == distance) {
      place->row = static_cast<int>(row);
      continue;
    }
    nearest.insert(place, {distance, static_cast<int>(row)});
    if (nearest.size() > count) nearest.pop_back();
    if (nearest.size() == count) limit = nearest.empty() ? limit : nearest.back().distance;
  }
  return nearest;
}

}  // namespace

/// `averaged` gets the mean centre shift per atom of the closest library triplets (0 when none has the atom).
/// False, and `averaged` unchanged, for residues at the edge of the range or in sparse surroundings.
bool ORBEL::calcAverageCS_orig(int resid, std::map<std::string, double>& averaged) const {
  if (!(firstResidOption < resid && resid < lastResidOption)) return false;
  const Triplet triplet = getTriplet(resid);
  if (!testTriplet(triplet)) return false;

  const TripletQuery query = makeQuery(*this, triplet);
  const std::vector<float> distances =
      tripletDistances(*tripletLibrary, query, ringWeights, atomWeights, ringScale);

  ShiftRow sums{};
  std::array<int, kAtoms> counts{};
  for (const auto& [distance, row] :
       nearestRows(distances, static_cast<std::size_t>(std::max(topCount, 0)))) {
    for (std::size_t atom = 0; atom < kAtoms; ++atom) {
      const double shift = tripletLibrary->centre[atom][static_cast<std::size_t>(row)];
      if (!isPresent(shift)) continue;
      sums[atom] += shift;
      ++counts[atom];
    }
  }
  for (const auto& [position, atom] : atomNames) {
    const auto i = static_cast<std::size_t>(position - 1);
    averaged[atom] = counts[i] == 0 ? 0.0 : sums[i] / counts[i];
  }
  return true;
}
