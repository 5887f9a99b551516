// From the flexibility value that the random coil index leaves per residue to the order parameter S2.
#pragma once

/// S2 = 1.003 - flexibility, given. The class rule subtracts the offset first, which rounds differently.
inline constexpr double kS2Offset = 0.003;
inline constexpr double kLargestS2 = 1.0 + kS2Offset;
static_assert(kLargestS2 == 1.003);
