// The lockstep layer kernel against a plain evaluation, unit by unit.
#include "ann/layer_kernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <random>

#include "ann/plain_layer.h"

namespace {

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

struct Case {
  const char* name;
  int units, inputs, vectors;
  double density;  ///< share of non-zero weights
  double weightScale, inputScale;
};

class LayerKernel : public testing::TestWithParam<Case> {
 protected:
  double symmetric() { return std::uniform_real_distribution<double>(-1.0, 1.0)(generator); }
  float weight(double density, double scale) {
    const bool present = std::uniform_real_distribution<double>()(generator) < density;
    if (!present) return symmetric() < 0.0 ? -0.0F : 0.0F;
    return static_cast<float>(symmetric() * scale);
  }
  std::mt19937 generator{20};
};

TEST_P(LayerKernel, EqualsThePlainSumBitForBit) {
  const Case& c = GetParam();
  LayerWeights weights(c.units, c.inputs);
  std::map<int, std::vector<double>> plain;
  std::vector<double> bias;
  for (int j = 0; j < c.units; ++j) {
    for (int i = 0; i < c.inputs; ++i) {
      weights.at(j, i) = weight(c.density, c.weightScale);
      plain[j].push_back(static_cast<double>(weights.at(j, i)));
    }
    bias.push_back(symmetric());
  }
  weights.seal();
  std::vector<std::vector<double>> inputs(static_cast<std::size_t>(c.vectors));
  for (auto& x : inputs) {
    for (int i = 0; i < c.inputs; ++i) x.push_back(i % 7 == 3 ? 0.0 : symmetric() * c.inputScale);
  }

  for (const KernelVersion version : {KernelVersion::Widest, KernelVersion::Baseline}) {
    std::vector<std::vector<double>> outputs(inputs.size());
    evaluateLayer(weights, bias, inputs, outputs, kLinear, version);
    for (std::size_t p = 0; p < inputs.size(); ++p) {
      ASSERT_EQ(outputs[p].size(), bias.size());
      for (int j = 0; j < c.units; ++j) {
        const double expected = ann_test::plainSum(inputs[p], plain[j], bias[static_cast<std::size_t>(j)]);
        ASSERT_TRUE(sameBits(outputs[p][static_cast<std::size_t>(j)], expected))
            << "vector " << p << " unit " << j << ": " << outputs[p][static_cast<std::size_t>(j)] << " "
            << expected;
      }
    }
  }
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
INSTANTIATE_TEST_SUITE_P(Shapes, LayerKernel,
                         testing::Values(Case{"single", 1, 1, 1, 1.0, 1.0, 1.0},
                                         Case{"tile", 64, 20, 8, 1.0, 3.0, 2.0},
                                         Case{"beyond_tile", 65, 33, 9, 1.0, 50.0, 1.0},
                                         Case{"below_tile", 63, 96, 17, 1.0, 0.1, 1.0},
                                         Case{"sparse", 200, 150, 3, 0.04, 2.0, 1.0},
                                         Case{"half_empty", 130, 40, 20, 0.5, 5.0, 4.0},
                                         Case{"missing_weights", 20, 160, 2, 1.0, 9999.0, 60.0},
                                         Case{"above_int32", 70, 30, 5, 0.7, 1e6, 1e5},
                                         Case{"huge", 70, 30, 5, 0.5, 3e38, 1e300},
                                         Case{"denormal", 10, 30, 5, 1.0, 1e-40, 1e-280},
                                         Case{"infinite_inputs", 66, 12, 3, 0.5, 1.0, kInfinity},
                                         Case{"infinite_weights", 66, 12, 3, 0.5, kInfinity, 1.0}),
                         [](const auto& shape) { return std::string(shape.param.name); });

TEST(LayerKernelActivation, TanhLinearAndUnknown) {
  LayerWeights weights(1, 2);
  weights.at(0, 0) = 2.0F;
  weights.at(0, 1) = -0.5F;
  weights.seal();
  const std::vector<double> bias{0.25};
  const std::vector<std::vector<double>> x{{0.3, 0.1}, {-400.0, 0.0}, {400.0, 0.0}};
  std::vector<std::vector<double>> y(3, {7.0});  // results are appended
  evaluateLayer(weights, bias, x, y, kTanh);
  EXPECT_NEAR(y[0].at(1), std::tanh(0.8), 1e-15);
  EXPECT_EQ(y[1].at(1), -1.0);
  EXPECT_EQ(y[2].at(1), 1.0);
  evaluateLayer(weights, bias, x, y, kLinear);
  EXPECT_DOUBLE_EQ(y[1].at(2), -799.75);
  evaluateLayer(weights, bias, x, y, 2);
  EXPECT_EQ(y[0].size(), 3U);
}

}  // namespace
