// Values that make no sense where they stand are reported with the way to mend them; good lists stay without
// a word.
#include <gtest/gtest.h>

#include "convert/readers.h"
#include "convert_support.h"
#include "support/process.h"

namespace {

using support::Converted;
using support::convertString;
using support::replaced;

const std::string kSequence = "MKVLAGTSPEDNQFYWIRHAGKTL";

struct Typical {
  char code;
  double ca, cb, n;
};
constexpr Typical kTypical[] = {
    {'A', 52.8, 19.1, 123.8}, {'D', 54.2, 41.1, 120.4}, {'E', 56.9, 29.9, 120.2}, {'F', 57.9, 39.3, 120.3},
    {'G', 45.3, 0, 108.8},    {'H', 55.8, 29.6, 118.2}, {'I', 61.3, 38.4, 119.9}, {'K', 56.6, 32.8, 120.4},
    {'L', 55.2, 42.2, 121.8}, {'M', 55.5, 32.7, 119.6}, {'N', 53.2, 38.7, 118.7}, {'P', 63.3, 31.9, 0},
    {'Q', 55.9, 29.0, 119.8}, {'R', 56.2, 30.7, 120.5}, {'S', 58.4, 63.9, 115.7}, {'T', 61.9, 69.8, 113.6},
    {'V', 62.3, 32.7, 119.2}, {'W', 57.6, 29.8, 121.3}, {'Y', 58.0, 38.9, 120.3}};

/// A table over kSequence whose values are those of `sequence`, moved by `offset`; `named` from the same
/// place.
std::string table(int offset = 0, bool namesToo = false) {
  std::string text =
      "DATA SEQUENCE " + kSequence + "\nVARS RESID RESNAME ATOMNAME SHIFT\nFORMAT %4d %3s %4s %8.3f\n";
  const int length = static_cast<int>(kSequence.size());
  for (int i = 0; i < length; ++i) {
    const int from = i + offset;
    if (from < 0 || from >= length) continue;
    const char code = kSequence[static_cast<std::size_t>(from)];
    const char name = namesToo ? code : kSequence[static_cast<std::size_t>(i)];
    const std::string row = std::to_string(i + 1) + " " + name + " ";
    for (const Typical& typical : kTypical) {
      if (typical.code != code) continue;
      text += row + "CA " + std::to_string(typical.ca) + "\n";
      if (typical.cb > 0.0) text += row + "CB " + std::to_string(typical.cb) + "\n";
      if (typical.n > 0.0) text += row + "N " + std::to_string(typical.n) + "\n" + row + "HN 8.2\n";
    }
  }
  return text;
}

std::string exchanged(const std::string& text, const std::string& a, const std::string& b) {
  return replaced(replaced(replaced(text, " " + a + " ", " # "), " " + b + " ", " " + a + " "), " # ",
                  " " + b + " ");
}

/// All values of the atom times `factor`.
std::string scaled(const std::string& text, const std::string& atom, double factor) {
  std::string result;
  convert::forEachLine(text, [&](int, std::string_view line) {
    auto words = support::split(std::string(line));
    if (words.size() == 4 && words[2] == atom) words[3] = std::to_string(std::stod(words[3]) * factor);
    for (const std::string& word : words) result += word + " ";
    result += "\n";
    return true;
  });
  return result;
}

TEST(ConvertSense, WhatIsWrongIsSaid) {
  const Converted good = convertString(table());
  ASSERT_TRUE(good.ok) << good.report();
  EXPECT_EQ(good.log.count(tools::Severity::Warning), 0U) << good.report();
  const struct {
    const char* name;
    std::string text;
    bool ok;
    const char* said;
  } cases[] = {{"15N in Hz", scaled(table(), "N", 60.8), false,
                "shifts of N look like Hz (of a spectrometer of about 60"},
               {"N and HN exchanged", exchanged(table(), "N", "HN"), false,
                "those named N look like HN (median 8.20), those named HN look like N"},
               {"CA and CB exchanged", exchanged(table(), "CA", "CB"), false, "CA and CB look exchanged in"},
               {"both lysines exchanged",
                replaced(replaced(table(), "2 K CA 56.6", "2 K CA 32.8"), "2 K CB 32.8", "2 K CB 56.6"), true,
                "exchanged in 2 of 19"},
               {"HA under HN",
                replaced(table(), " HN 8.2\n", " HN 4.4\n") +
                    "1 M HA 8.1\n2 K HA 8.3\n3 V HA 8.0\n4 L HA 8.6\n5 A HA 8.4\n",
                true, "HN and HA look exchanged"},
               {"values of the residue behind", table(1), true, "moved by +1"},
               {"values of the second residue before", table(-2), true, "moved by -2"},
               {"types of the residue behind", table(1, true), false, "--list-offset 1 does that"}};
  for (const auto& c : cases) {
    const Converted result = convertString(c.text);
    EXPECT_EQ(result.ok, c.ok) << c.name << result.report();
    EXPECT_NE(result.report().find(c.said), std::string::npos) << c.name << "\n" << result.report();
  }
}

TEST(ConvertSense, TheOffsetMendsTheList) {
  convert::Settings settings;
  settings.listOffset = 1;
  const Converted byType = convertString(table(1, true), settings),
                  byValue = convertString(table(1), settings);
  const Converted good = convertString(table());
  const auto all = good.rows();
  const std::vector<std::string> expected(all.begin() + 4, all.end());  // methionine 1 fell off
  EXPECT_EQ(byType.rows(), expected) << byType.report();
  EXPECT_EQ(byValue.rows(), expected) << byValue.report();
  EXPECT_NE(byType.report().find("moved by 1 residues"), std::string::npos);
  settings.listOffset = 30;
  EXPECT_FALSE(convertString(table(), settings).ok);
}

}  // namespace
