// The sequence-only mode on checkpoint profiles made here.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "support/output_table.h"
#include "support/process.h"
#include "support/synthetic.h"

namespace {

using support::OutputTable;
using support::runOrbeln;
using support::TempDir;

template <class T>
void append(std::string& bytes, T value) {
  char raw[sizeof value];
  std::memcpy(raw, &value, sizeof value);
  bytes.append(raw, sizeof value);
}

/// A checkpoint whose profile is certain of every letter, cut after `rows` rows and `extra` bytes.
std::string checkpoint(const std::string& sequence, std::size_t rows, std::size_t extra = 0) {
  const std::string order = "ARNDCQEGHILKMFPSTWYV";
  std::string bytes;
  append(bytes, static_cast<std::int32_t>(sequence.size()));
  bytes += sequence;
  for (std::size_t i = 0; i < rows; ++i)
    for (const char code : order) append(bytes, code == sequence[i] ? 1.0 : 0.0);
  return bytes + std::string(extra, '\0');
}

TEST(SequenceOnly, ReadsProfilesInTheirOwnOrder) {
  const TempDir dir;
  // The network answers 0.85 0.10 0.05 for tryptophan and 0.05 0.75 0.20 for anything else.
  support::writeFile(dir / "profile.check", checkpoint("VYWTSPFMKLWA", 12));
  const auto run = runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-seqSS", "-blast_check", "profile.check"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out.find("Secondary structure prediction ...\n"), 0U);
  const OutputTable ss(dir / "predSS.tab");
  EXPECT_EQ(ss.data.at(1), "DATA SEQUENCE     VYWTSPFMKL WA");
  EXPECT_EQ(ss.data.at(2), "DATA PREDICTED_SS eeheeeeeee he");
  EXPECT_EQ(ss.data.at(3), "DATA CONFIDENCE   5575555555 75");
  EXPECT_EQ(ss.text(3, "Q_H") + ' ' + ss.text(3, "CONFIDENCE"), "0.850 0.75");
  EXPECT_EQ(ss.text(4, "Q_E") + ' ' + ss.text(4, "CONFIDENCE"), "0.750 0.55");
}

TEST(SequenceOnly, NumberingComesFromTheInputAndPartialRowsAreIgnored) {
  const TempDir dir;
  support::writeFile(dir / "numbers.tab", "DATA FIRST_RESID 10\nDATA SEQUENCE AAA\n");
  support::writeFile(dir / "profile.check", checkpoint("WYW", 2, 100));
  const auto run =
      runOrbeln(dir.path, ORBELN_SYNTHETIC,
                {"-in", "numbers.tab", "-seqSS", "-blast_check", "profile.check", "-sum", "x.tab"});
  EXPECT_EQ(run.status, 0) << run.err;
  const OutputTable ss(dir / "xSS.tab");
  EXPECT_EQ(ss.residues(), (std::vector<int>{10, 11}));
  EXPECT_EQ(ss.text(10, "RESNAME") + ss.text(11, "RESNAME"), "WY");
}

TEST(SequenceOnly, NothingOrNonsenseAsProfile) {
  const TempDir dir;
  EXPECT_EQ(runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-seqSS"}).status, 0);
  EXPECT_TRUE(OutputTable(dir / "predSS.tab").rows.empty());
  std::string huge, negative;
  append(huge, std::int32_t{2147483647});
  append(negative, std::int32_t{-5});
  for (const std::string& bytes : {std::string(), std::string("ab"), huge + "AAA",
                                   negative + std::string(400, 'A'), checkpoint("WYW", 0)}) {
    support::writeFile(dir / "profile.check", bytes);
    EXPECT_EQ(runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-seqSS", "-blast_check", "profile.check"}).status, 0);
  }
}

}  // namespace
