// Pre-screen of the first pass: how well a database fragment's phi/psi boxes fit the query's predicted maps.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "search/candidates.h"
#include "search/fragment_reach.h"
#include "search/screen_index.h"
#include "search/top_scores.h"

/// The query of a pre-screen: what is known of the residues around its centre `resid`.
struct ScreenQuery {
  int resid;
  int halfWidth;                                             ///< 1 to kMaxHalfWidth
  const std::map<int, char>& codes;                          ///< residue -> code
  const std::map<int, std::map<int, double>>& prior;         ///< residue -> box -> weight, absent = 0
  const std::map<char, std::map<char, double>>& similarity;  ///< BLOSUM62: query -> database code
};

/// Collects the 1000 best-scoring fragment centres for one query residue, and the 1000 best of the same
/// residue type.
///
/// The score of a fragment is accumulated in single precision over its residues: the position weight times
/// the search prior of the query residue for the database residue's box, and a tenth of a negative BLOSUM62
/// similarity of the two residue types. Of fragments with equal scores the last one of the database stands
/// for all, but for the lowest score of a full list: that one no longer changes once the list holds its 1000
/// scores and a lower one has been met, source by source.
class Prescreen {
 public:
  explicit Prescreen(const ScreenQuery& query);

  /// Scores every fragment of the database; `index` must be made from it.
  void scan(const DB& db, const ScreenIndex& index);

  CandidateMap matches;   ///< score -> centre entry
  CandidateMap sameType;  ///< the same for centres of the query's type; empty for A, G and P

 private:
  static constexpr std::size_t kPositions = 2 * kMaxHalfWidth + 1;
  static constexpr std::size_t kBoxes = ScreenIndex::kBoxMask + 1;
  static constexpr std::size_t kCodes = 256;
  static constexpr std::uint8_t kMatch = 1, kSameType = 2;  ///< lists that a centre may enter, as bits

  int halfWidth_;
  char centreCode_;  ///< folded
  bool prolineFollows_;
  bool wantSameType_;
  std::array<bool, kPositions> hasPrior_{};                       ///< false: every prior of the position is 0
  std::array<std::array<double, kBoxes>, kPositions> prior_{};    ///< [k + h][box]: weight * prior
  std::array<std::array<double, kCodes>, kPositions> penalty_{};  ///< [k + h][code]: negative similarity / 10
  std::array<std::uint8_t, kCodes> centreCodes_{};  ///< [code]: lists for which a centre has the right type
  /// [k + h][code number]: at least the penalty of every code with that number.
  std::array<std::array<double, ScreenIndex::kCodeNumbers>, kPositions> numberPenalty_{};
  std::array<double, kPositions + 1>
      restHighest_{};    ///< [i]: most that the positions from the i-th outwards add
  double margin_ = 0.0;  ///< covers the rounding of the single-precision sum

  TopScores topMatches_, topSameType_;
  std::vector<int> centres_;  ///< of the block being scanned
  std::vector<float> scores_;

  void fillPosition(const ScreenQuery& query, int k);
  void fillCentre(const ScreenQuery& query);
  void fillBounds();
  void fillNumberPenalties(const ScreenIndex& index);
  std::vector<std::size_t> boxesByPrior() const;
  std::uint8_t listsWithin(std::size_t box) const;
  double lowestLimit(std::uint8_t lists, int judged) const;
  std::uint8_t listsOfNumber(const ScreenIndex& index, std::size_t number) const;
  template <int h>
  void scanWith(const DB& db, const ScreenIndex& index);
  template <int h>
  std::size_t scanGroup(const DB& db, const ScreenIndex& index, std::size_t box, std::size_t number,
                        std::size_t count);
  template <int h>
  std::size_t collect(std::span<const ScreenIndex::Place> group, double ownTerms, double limit,
                      std::size_t entries, std::size_t count);
  template <int h>
  void scanBlock(const DB& db, const ScreenIndex& index, std::size_t count);
  template <int h>
  std::size_t keepPossible(const DB& db, const ScreenIndex& index, std::size_t count);
  void offerScores(const DB& db, std::size_t count);
  template <int h>
  float score(const DB& db, const ScreenIndex& index, int centre) const;
  template <int h>
  CandidateMap candidates(const DB& db, const ScreenIndex& index, const TopScores& top,
                          std::uint8_t list) const;
  template <int h>
  int entryOfLowest(const DB& db, const ScreenIndex& index, const std::vector<TopScores::Score>& scores,
                    std::uint8_t list) const;
  bool isCentre(const DB& db, const ScreenIndex& index, int entry, std::uint8_t list) const;
};
