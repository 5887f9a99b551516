// What a call writes to the standard streams.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace support {

struct Captured {
  std::string out, err;
};

template <class Function>
Captured captured(Function run) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  run();
  const std::string out = testing::internal::GetCapturedStdout();
  return {out, testing::internal::GetCapturedStderr()};
}

}  // namespace support
