// The match lists of a residue, as both search passes fill them.
#pragma once

#include <map>
#include <string>

#include "driver/ORBEL.h"

inline constexpr std::size_t kMatchesKept = 25;
inline constexpr std::size_t kMatchesCut = 26;  ///< a longer list is cut to one more than is kept

/// Refills matchPhi, matchPsi, matchDistance and matchIndex of `resid` from the first 25 entries of `list` in
/// ascending key order. In verbose runs each match is one line on standard output, with the pre-screen score
/// or first-pass key `keyOf` holds for its entry and `lineEnd` behind the source name.
void fillMatchLists(ORBEL& run, int resid, const CandidateMap& list, const std::map<int, double>& keyOf,
                    const std::string& lineEnd);

/// Appends chi1 and key of the entries of `list`, ascending, whose chi1 is defined, to the emptied
/// sameTypeChi1 and sameTypeDistance of `resid`, at most `limit` of them; their entry indices by rank.
std::map<int, int> fillSameTypeLists(ORBEL& run, int resid, const CandidateMap& list, std::size_t limit);
