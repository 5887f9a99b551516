// Orders of the nuclei, the box grid, names of residues.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "base/atoms.h"
#include "base/boxes.h"
#include "base/residues.h"

namespace {

TEST(Atoms, OrdersHoldEveryNucleusOnce) {
  for (const AtomOrder& order : {kAtomOrder, kInputOrder, kCoilOrder}) {
    for (const Atom atom : kAtomOrder) EXPECT_EQ(std::ranges::count(order, atom), 1) << atomName(atom);
  }
  for (const Atom atom : kAtomOrder) EXPECT_EQ(kAtomOrder[column(atom)], atom);
  const std::vector<ShiftRow> rows(2);
  EXPECT_EQ((ShiftRows{rows, 5, 9}.find(6)), &rows[1]);
  EXPECT_EQ((ShiftRows{rows, 5, 9}.find(7)), nullptr);  // inside the range, but no row
  EXPECT_EQ((ShiftRows{rows, 5, 9}.find(4)), nullptr);
}

TEST(Boxes, IndicesAndTheShorterWayRound) {
  for (int box = 0; box < kPhiPsiBoxes; ++box) {
    EXPECT_EQ(boxAt(phiIndexOf(box), psiIndexOf(box)), box);
    EXPECT_EQ(static_cast<int>(axisPosition(lowerEdge(psiIndexOf(box)))), psiIndexOf(box));
  }
  EXPECT_EQ(axisDistance(0, kBoxesPerAxis - 1), 1);
  EXPECT_EQ(axisDistance(2, 2 + kBoxesPerAxis / 2), kBoxesPerAxis / 2);
}

TEST(Residues, NamesAndCodesBelongTogether) {
  for (const char code : kAminoAcids) EXPECT_EQ(oneLetterCode(threeLetterName(code)), code);
  EXPECT_EQ(threeLetterName('c'), "CYS");
  EXPECT_EQ(threeLetterName('X'), "");
}

}  // namespace
