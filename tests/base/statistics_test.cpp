// Circular and plain statistics.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/angles.h"
#include "base/statistics.h"

namespace {

using Values = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Statistics, CircularMean) {
  const struct {
    Values angles;
    double mean;
  } cases[] = {{{}, 9999.0},
               {{-170.0}, -170.0},
               {{9999.0}, 9999.0},  // one value is itself, whatever it is
               {{-170.0, 170.0}, 180.0},
               {{-10.0, 10.0}, 0.0},
               {{-90.0, 90.0}, 180.0},  // means exactly 180 apart count as across +-180
               {{-89.0, 90.0}, 0.5},
               {{-60.0, -70.0}, -65.0},
               {{0.0, 350.0}, 175.0},  // one sign only: the plain mean
               {{-175.0, -165.0, 160.0}, (185.0 + 195.0 + 160.0) / 3.0},
               {{-170.0, -160.0, 170.0}, (190.0 + 200.0 + 170.0) / 3.0 - 360.0},
               {{-60.0, 9999.0}, 9999.0},  // mean above 999
               {{-60.0, 400.0}, -10.0},    // (300 + 400) / 2 = 350, a turn lower
               {{-1e30, 60.0}, 9999.0},    // no endless turning
               {{-60.0, kNaN, 60.0}, 9999.0}};
  for (const auto& c : cases) {
    EXPECT_NEAR(circularMean(c.angles), c.mean, 1e-9) << testing::PrintToString(c.angles);
  }
}

TEST(Statistics, Spreads) {
  EXPECT_EQ(circularSpread({}), 0.0);
  EXPECT_EQ(circularSpread({12.0}), 180.0);
  EXPECT_NEAR(circularSpread({-170.0, 170.0}), std::sqrt(200.0), 1e-9);  // 10 to either side of 180
  EXPECT_NEAR(circularSpread({-10.0, 0.0, 10.0}), 10.0, 1e-9);

  EXPECT_EQ(average({}), 0.0);
  EXPECT_EQ(average({1.0, 2.0, 6.0}), 3.0);
  EXPECT_EQ(standardDeviation({}), 0.0);
  EXPECT_EQ(standardDeviation({5.0}), 0.0);
  EXPECT_NEAR(standardDeviation({1.0, 2.0, 6.0}), std::sqrt(7.0), 1e-12);
}

}  // namespace
