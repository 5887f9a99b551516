// Weight tables of tiny networks whose outputs can be worked out by hand.
#pragma once

#include <cstdio>
#include <numeric>
#include <string>
#include <vector>

#include "support/process.h"

namespace support {

using UnitRow = std::vector<double>;      ///< input weights, then the bias
using MemberRows = std::vector<UnitRow>;  ///< one row a unit

/// Every unit passes one input on, times `gain`, plus its bias.
inline MemberRows picking(std::size_t inputs, const std::vector<std::size_t>& picks,
                          const std::vector<double>& biases, double gain = 1.0) {
  MemberRows rows;
  for (std::size_t j = 0; j < picks.size(); ++j) {
    UnitRow row(inputs + 1, 0.0);
    row[picks[j]] = gain;
    row[inputs] = biases[j];
    rows.push_back(row);
  }
  return rows;
}

/// Every unit has its bias alone.
inline MemberRows constants(std::size_t inputs, const std::vector<double>& biases) {
  return picking(inputs, std::vector<std::size_t>(biases.size(), 0), biases, 0.0);
}

inline MemberRows identity(std::size_t n) {
  std::vector<std::size_t> picks(n);
  std::iota(picks.begin(), picks.end(), 0);
  return picking(n, picks, std::vector<double>(n, 0.0));
}

inline void writeWeights(const std::filesystem::path& file, const std::vector<MemberRows>& members) {
  const std::size_t inputs = members.at(0).at(0).size() - 1;
  std::string text = "VARS ";
  for (std::size_t i = 1; i <= inputs; ++i) text += std::to_string(i) + ' ';
  text += "b\nFORMAT ";
  for (std::size_t i = 0; i <= inputs; ++i) text += "%f ";
  text += "\n\n";
  for (const MemberRows& rows : members) {
    for (const UnitRow& row : rows) {
      for (const double value : row) {
        char cell[40];
        std::snprintf(cell, sizeof cell, "%.9g ", value);
        text += cell;
      }
      text += '\n';
    }
  }
  writeFile(file, text);
}

inline std::vector<double> joined(const std::vector<std::vector<double>>& parts) {
  std::vector<double> all;
  for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// One level: the same tanh layers for all members, an output layer for each.
inline void writeLevel(const std::string& stem, const MemberRows& input, const MemberRows& hidden,
                       const std::vector<MemberRows>& outputs) {
  writeWeights(stem + ".WI.tab", std::vector<MemberRows>(outputs.size(), input));
  writeWeights(stem + ".WL1.tab", std::vector<MemberRows>(outputs.size(), hidden));
  writeWeights(stem + ".WL2.tab", outputs);
}

inline void expectNear(const std::vector<double>& actual, const std::vector<double>& expected,
                       const std::string& what, double tolerance = 1e-6) {
  ASSERT_EQ(actual.size(), expected.size()) << what;
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(actual[i], expected[i], tolerance) << what << " [" << i << ']';
}

}  // namespace support
