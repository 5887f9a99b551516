// A complete but tiny installation whose predictions can be worked out by hand, and a query to go with it.
//
// Every network is constant or has one switch, so outputs are known numbers:
//  - phi/psi (surf20 and surf20_hyb): a 3 x 3 box bump around -63/-42, for glycine around 57/47 instead. The
//    weighted value of box 96 (the helix centre) is 0.90 from surf20_hyb and 0.88 from surf20.
//  - ss 0.7 0.2 0.1, ss.center 0.1 0.8 0.1, ss.prev 0.2 0.2 0.6, ss.next 0.8 0.1 0.1, ss5 0.5 0.1 0.4 and
//    seqSS 0.2 0.2 0.6 (helix, strand, coil), everywhere.
//  - seqSS15 0.05 0.75 0.20, but 0.85 0.10 0.05 where the profile holds tryptophan.
//  - chi1: about 0.55 + 0.4 sin(chi1) of the fragment centre: 0.21 for g-, 0.55 for t.
// The fragment database (writeDatabase) holds 25 helical fragments of seven alanines, one fragment a source.
// Its shifts are those of the query plus 1 ppm with scale 1; CB has scale 0.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "support/process.h"

namespace support {

/// Writes all tables below `directory`/tab.
void writeInstallation(const std::filesystem::path& directory);

/// The shared installation of this build with the tables in `leftOut` missing: links in `dir`/install/tab.
std::filesystem::path linkInstallation(const TempDir& dir, const std::set<std::string>& leftOut);

/// A shift table under construction.
struct Query {
  int firstResid = 1;
  std::string sequence;
  std::map<std::pair<int, std::string>, double> shifts;  ///< (residue, atom) -> ppm

  void removeResidue(int resid);
  /// The table, with one-letter or three-letter residue names in the rows.
  std::string table(bool threeLetterNames = false) const;
};

/// 26 residues: alanines with leucine 12, glycine 18 and tryptophan 22 (counted from 1), all shifts present
/// and equal. An alanine between alanines has the secondary shifts N -2, HA -0.3, C 2, CA 2.4, CB -0.4,
/// HN -0.2.
Query helixQuery(int firstResid = 1);

}  // namespace support
