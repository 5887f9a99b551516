// Command line, settings and number-to-text helpers.
#include <gtest/gtest.h>

#include <cstdlib>

#include "base/maps.h"
#include "driver/ORBEL.h"
#include "driver/command_line.h"
#include "support/capture.h"

namespace {

CommandLine parse(const ORBEL& run, std::vector<std::string> words) {
  words.insert(words.begin(), "orbeln");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  return parseCommandLine(static_cast<int>(argv.size()), argv.data(), run.acceptedOptions);
}

void configure(ORBEL& run, const std::vector<std::string>& words) {
  support::captured([&] { run.setArgs(parse(run, words).options); });
}

TEST(CommandLine, CutsAtEveryHyphen) {
  const ORBEL run;
  const struct {
    std::vector<std::string> words;
    OptionMap expected;
    std::string warning;
  } cases[] = {
      {{"-in", "x.tab", "-in", "y.tab"}, {{"in", "y.tab"}}, ""},
      {{"-in", "my-file.tab"}, {{"in", "my"}, {"file.tab", "file.tab"}}, " Invaid arg name -file.tab\n"},
      {{"-offset", "-0.5"}, {{"offset", ""}, {"0.5", "0.5"}}, " Invaid arg name -0.5\n"},
      {{"-inTitle", "  two   words ", "-verb"}, {{"inTitle", "two words"}, {"verb", "verb"}}, ""},
      {{"stray", "-check", "no"}, {{"check", "true"}}, ""},
      {{"-nodetail"}, {{"nodetail", "true"}}, " Invaid arg name -nodetail\n"},
      {{"--in", "x"}, {{"in", "x"}}, ""}};
  for (const auto& c : cases) {
    CommandLine line;
    EXPECT_EQ(support::captured([&] { line = parse(run, c.words); }).err, c.warning);
    EXPECT_EQ(line.options, c.expected) << c.words[0];
    EXPECT_FALSE(line.sequenceOnly);
  }
  EXPECT_TRUE(parse(run, {"-seqSS", "false"}).sequenceOnly);
  EXPECT_EQ(run.acceptedOptions.size(), 62U);
}

TEST(Settings, InstallationDirectory) {
  struct Case {
    const char* variable;
    std::vector<std::string> options;
    const char* expected;
  };
  for (const Case& c :
       {Case{"", {"-in", "x"}, "./tab"}, Case{"plain", {"-in", "x"}, "./tab"},
        Case{"C:\\orbeln", {"-in", "x"}, "C:\\orbeln\\tab"}, Case{"/a", {"-orbelnDir", "/b"}, "/b/tab"},
        Case{"/a", {"-orbelnDir", "/b", "-orbelNDir", "/d", "-orbelDir", "/c"}, "/c/tab"},
        Case{"/a", {"-tabDir", "/d", "-orbelDir", "/c"}, "/d"}}) {
    setenv("ORBELN_DIR", c.variable, 1);
    ORBEL run;
    configure(run, c.options);
    EXPECT_EQ(run.tabDir, c.expected);
  }
}

TEST(Settings, NumbersAndNames) {
  const auto made = [](const std::vector<std::string>& words) {
    auto run = std::make_unique<ORBEL>();
    configure(*run, words);
    return run;
  };
  EXPECT_NEAR(made({"-s2Thresh", "0.7"})->s2Cutoff, 0.3, 1e-12);
  EXPECT_DOUBLE_EQ(made({"-s2Thresh", "2"})->s2Cutoff, 0.4);
  EXPECT_DOUBLE_EQ(made({"-s2Thresh", "nan"})->s2Cutoff, 0.4);
  EXPECT_DOUBLE_EQ(made({"-thresh", "0"})->seqSSThreshold, 200.0);
  EXPECT_EQ(made({"-star", "s.str", "-in", "x.tab"})->inputFile, "s.str");
  EXPECT_EQ(made({"-star", "s.str"})->inputTitle, "None");
  EXPECT_EQ(made({"-ref", "None"})->referenceStructure, nullptr);
  EXPECT_TRUE(made({"-offset"})->applyOffsets);
  EXPECT_FALSE(made({"-noOxiCysCheck", "-OxiCysCheck"})->noOxiCysCheck);
}

TEST(NumberText, Conversions) {
  char buffer[420];
  EXPECT_STREQ(ORBEL::itoa(-17, buffer, 2), "-17");
  EXPECT_STREQ(ORBEL::ftoa(1234567.0, buffer, 'g', 6), "1.23457e+06");
  EXPECT_STREQ(ORBEL::ftoa(2.5, buffer, 'q', 2), "2.50");
  EXPECT_STREQ(ORBEL::ftoa(2.5, buffer, 'e', -1), "2.500000e+00");
  EXPECT_EQ(std::string(ORBEL::ftoa(0.5, buffer, 'f', 200)).size(), 101U);
  EXPECT_EQ(std::string(ORBEL::ftoa(-1e308, buffer, 'f', 99)).size(), 410U);
}

}  // namespace
