// The sequence-only mode on checkpoint profiles made here.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "support/output_table.h"
#include "support/process.h"

namespace {

/// Checkpoint bytes: length field, letters, then rows certain of the letters of `profile`.
std::string checkpoint(std::int32_t length, const std::string& letters, const std::string& profile) {
  std::string bytes(sizeof length, '\0');
  std::memcpy(bytes.data(), &length, sizeof length);
  bytes += letters;
  for (const char certain : profile) {
    for (const char code : std::string("ARNDCQEGHILKMFPSTWYV")) {
      const double value = code == certain ? 1.0 : 0.0;
      bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
  }
  return bytes;
}

TEST(SequenceOnly, ProfilesAreReadAsFarAsTheyGo) {
  const std::string all = "VYWTSPFMKLWA";
  // The network answers 0.85 0.10 0.05 for tryptophan and 0.05 0.75 0.20 for anything else.
  const struct {
    const char* name;
    std::string bytes, codes, classes, confidence;
  } cases[] = {{"complete", checkpoint(12, all, all), "VYWTSPFMKL WA", "eeheeeeeee he", "5575555555 75"},
               {"cut inside a row", checkpoint(3, "GWA", "WA") + std::string(100, '\0'), "GW", "he", "75"},
               {"more rows than letters", checkpoint(1, "G", "AW"), "GX", "eh", "57"},
               {"unprintable letter", checkpoint(2, "G\x01", "AA"), "GX", "ee", "55"},
               {"negative length", checkpoint(-5, "", "W"), "X", "h", "7"},
               {"length beyond the file", checkpoint(2147483647, "GW", "A"), "", "", ""},
               {"no row", checkpoint(2, "GW", ""), "", "", ""},
               {"cut inside the length", "ab", "", "", ""},
               {"empty", "", "", "", ""}};
  const support::TempDir dir;
  support::writeFile(dir / "numbers.tab", "DATA FIRST_RESID 10\nDATA SEQUENCE AAA\n");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    support::writeFile(dir / "profile.check", c.bytes);
    const auto run = support::runOrbeln(
        dir.path, ORBELN_SYNTHETIC,
        {"-in", "numbers.tab", "-seqSS", "-blast_check", "profile.check", "-sum", "x.tab"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.find("Secondary structure prediction ...\n"), 0U);
    const support::OutputTable ss(dir / "xSS.tab");
    EXPECT_EQ(ss.data, (std::vector<std::string>{"DATA FIRST_RESID 10", "DATA SEQUENCE     " + c.codes,
                                                 "DATA PREDICTED_SS " + c.classes,
                                                 "DATA CONFIDENCE   " + c.confidence}));
    for (std::size_t i = 0; i < ss.rows.size(); ++i) {
      const int resid = 10 + static_cast<int>(i);
      const bool tryptophan = ss.text(resid, "SS_CLASS") == "h";
      EXPECT_EQ(ss.texts(resid, "Q_H Q_E CONFIDENCE"), tryptophan ? "0.850 0.100 0.75" : "0.050 0.750 0.55");
    }
    EXPECT_EQ(ss.rows.size(), c.classes.size() - (c.classes.size() > 10 ? 1 : 0));
  }
  EXPECT_EQ(support::runOrbeln(dir.path, ORBELN_SYNTHETIC, {"-seqSS"}).status, 0);
  EXPECT_TRUE(support::OutputTable(dir / "predSS.tab").rows.empty()) << "without a profile";
}

}  // namespace
