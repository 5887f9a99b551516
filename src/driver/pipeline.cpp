// The prediction run: stage order, search prior, database and its source index, the two search passes.
#include <iostream>

#include "base/angles.h"
#include "base/boxes.h"
#include "base/maps.h"
#include "base/residue_range.h"
#include "driver/ORBEL.h"
#include "search/database_image.h"
#include "search/screen_index.h"

namespace {

/// Largest share of the first cluster's seed at which a residue counts as ambiguous; given.
constexpr double kAmbiguousShare = 0.6;
constexpr double kAmbiguousShareLeft = 0.65;  ///< of seeds with phi from 0 and psi from -40 to 140 degrees
constexpr double kHighestPrior = 0.98;        ///< given
constexpr double kPenalty = -9.99;            ///< given: no sum of priors makes up for one such box

/// Two clusters of similar height leave the residue ambiguous: the map must not guide the search there.
bool isAmbiguous(const ClusterData& clusters, double topShare) {
  if (clusters.clusterCount < 2) return false;
  const int phi = lowerEdge(phiIndexOf(clusters.seed(1)));
  const int psi = lowerEdge(psiIndexOf(clusters.seed(1)));
  return topShare < (phi >= 0 && psi >= -40 && psi <= 120 ? kAmbiguousShareLeft : kAmbiguousShare);
}

/// Weight of box `i`: its value up to a limit, a strong penalty outside the clusters and below mean + 1 sd.
double priorWeight(const ClusterData& clusters, std::size_t i) {
  const double value = clusters.values[i];
  if (clusters.boxCluster[i] == 0) return kPenalty;
  if ((value - clusters.mean) / clusters.standardDeviation < 1.0) return kPenalty;
  return value > kHighestPrior ? kHighestPrior : value;
}

}  // namespace

void ORBEL::orbelPredict() {
  init();
  if (hidePaths) {
    std::cout << "Analyzing Chemical Shifts ..." << std::endl;
  } else {
    std::cout << "Analyzing " << inputFile << " ..." << std::endl;
  }
  getResInfo();
  runABP_Prediction();
  runSS_Prediction();
  runS2_Prediction();
  buildSearchPrior();
  loadDatabase();
  std::cout << "Searching database ..." << std::endl;
  buildSourceIndex();
  runFirstPass();
  if (quiet) {
    std::cerr << std::endl;
  } else {
    std::cout << "Searching database using predicted angles ..." << std::endl;
  }
  runSecondPass();
  if (!fragmentDatabase->intact()) searchAgain();
  writeResults();
  if (fragmentDatabase->intact()) return;
  searchAgain();
  writeResults();
}

void ORBEL::writeResults() {
  writeTorsionPredictions();
  writeChi1Predictions();
  writePredAll();
}

/// The table image was written to during the search: nothing that was read from it counts.
void ORBEL::searchAgain() {
  for (auto* lists : {&firstPassMatches, &firstPassSameType}) lists->clear();
  for (auto* lists : {&matchIndex, &sameTypeIndex}) lists->clear();
  for (auto* lists :
       {&matchPhi, &matchPsi, &matchDistance, &sameTypeChi1, &sameTypeDistance, &matchInCluster}) {
    lists->clear();
  }
  for (auto* values : {&predPhi, &predPsi, &predPhiSD, &predPsiSD}) values->clear();
  chi1RotamerScores.clear();
  predCount.clear();
  fragmentDatabase->loadDB(databaseFile);
  buildSourceIndex();
  runFirstPass();
  runSecondPass();
}

/// phiPsiBoxProb, clusterInfo, topClusterFraction -> searchPrior. An ambiguous residue gets no entries, so
/// every look-up in it gives 0.
void ORBEL::buildSearchPrior() {
  for (const auto& [resid, boxes] : phiPsiBoxProb) {
    const ClusterData* clusters = findValue(clusterInfo, resid);
    if (clusters == nullptr) continue;
    auto& prior = searchPrior[resid];
    const bool flat = clusters->mean == 0.0;
    if (!flat && isAmbiguous(*clusters, valueOr(topClusterFraction, resid))) continue;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
      prior[static_cast<int>(i)] = flat ? 0.0 : priorWeight(*clusters, i);
    }
  }
  reportClipping = true;
}

void ORBEL::loadDatabase() {
  if (!hidePaths) std::cout << "Reading " << databaseFile << ", " << std::flush;
  fragmentDatabase = std::make_unique<DB>();
  fragmentDatabase->setMaxDBSize(kDatabaseCapacity);
  // With -verb the entries that match are printed during the search, which then cannot be repeated.
  const image::Bulk use = quiet ? image::Bulk::InPlace : image::Bulk::Copied;
  if (!loadDatabaseImage(*fragmentDatabase, databaseFile, use)) fragmentDatabase->loadDB(databaseFile);
  if (hidePaths) return;
  std::cout << fragmentDatabase->entryCount << " Residues Read" << std::endl;
  if (fragmentDatabase->incompleteRecords > 0) {
    std::cerr << "Warning:: Database " << databaseFile << ": " << fragmentDatabase->incompleteRecords
              << " incomplete records (first: line " << fragmentDatabase->firstIncompleteLine
              << "), their missing fields are left out of the search" << std::endl;
  }
}

/// Source number -> first and last entry. Number 0 is a placeholder; the search walks 1 to sourceCount - 1,
/// the last source of the file included.
void ORBEL::buildSourceIndex() {
  sourceStart.clear();
  sourceEnd.clear();
  sourceStart[0] = 0;
  sourceEnd[0] = -1;
  sourceCount = 1;
  const std::vector<DB::Source>& sources = fragmentDatabase->dbSource;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const bool isLast = i + 1 == sources.size();
    sourceStart[sourceCount] = sources[i].first;
    sourceEnd[sourceCount] = (isLast ? fragmentDatabase->entryCount : sources[i + 1].first) - 1;
    ++sourceCount;
  }
}

SourceRanges ORBEL::sourceRanges() const {
  return {sourceCount, sourceStart, sourceEnd};
}

/// Chain ends are never predicted; elsewhere the residue must lie among those with shifts.
bool ORBEL::isSearchable(int resid) const {
  return resid >= shiftFirstResid && resid <= shiftLastResid && resid != sequenceStart &&
         resid != sequenceStart + sequenceLength - 1;
}

namespace {

void reportResidue(const ORBEL& run, int resid) {
  if (run.quiet) return;
  std::cout << "\nResidue (center) " << valueOr(run.sequence, resid) << " " << resid << " of "
            << run.shiftFirstResid << " to " << run.shiftLastResid << std::endl;
}

}  // namespace

void ORBEL::storeConsensus(int resid) {
  static const ClusterData kNoClusters;
  const ClusterData* clusters = findValue(clusterInfo, resid);
  std::vector<double>& phi = matchPhi[resid];
  std::vector<double>& psi = matchPsi[resid];
  classifyMatchCluster(phi, psi, predCount[resid], matchInCluster[resid],
                       clusters == nullptr ? kNoClusters : *clusters);
  predPhi[resid] = circularMean(phi);
  predPsi[resid] = circularMean(psi);
  predPhiSD[resid] = circularSpread(phi);
  predPsiSD[resid] = circularSpread(psi);
}

/// The whole database under the network's phi/psi maps.
void ORBEL::runFirstPass() {
  screenIndex = std::make_shared<ScreenIndex>(*fragmentDatabase, sourceRanges());
  for (const int resid : residueRange(firstResidOption, lastResidOption)) {
    if (!isSearchable(resid)) continue;
    reportResidue(*this, resid);
    if (!checkCSCompleteness(resid)) continue;
    CandidateMap matches;
    CandidateMap sameType;
    searchDB(resid, matches, sameType);
    firstPassMatches[resid] = std::move(matches);
    firstPassSameType[resid] = std::move(sameType);
    storeConsensus(resid);
  }
  screenIndex.reset();
}

/// The candidates of the first pass under the neighbours' predicted angles, which are read as they stand:
/// residues before this one already carry their second-pass values.
void ORBEL::refineResidue(int resid) {
  searchDB2(resid, firstPassMatches[resid], firstPassSameType[resid]);
  if (valueOr(predCount, resid) < topCount) storeConsensus(resid);
}

void ORBEL::runSecondPass() {
  for (const int resid : residueRange(firstResidOption, lastResidOption)) {
    if (!isSearchable(resid)) continue;
    reportResidue(*this, resid);
    if (checkCSCompleteness(resid)) refineResidue(resid);
  }
}
