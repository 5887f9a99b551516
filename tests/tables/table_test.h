// Files of a test's own and captured standard error for the tests of the table readers.
#pragma once

#include <string>

#include "support/capture.h"
#include "support/process.h"

class TableTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return (directory / name).string(); }
  /// Writes `content` to `name` and gives its path.
  std::string file(const std::string& content, const std::string& name = "in.tab") const {
    support::writeFile(path(name), content);
    return path(name);
  }
  std::string read(const std::string& name) const { return support::readFile(path(name)); }

 private:
  support::TempDir directory;
};

/// Standard error of `run`.
template <class Function>
std::string standardErrorOf(Function run) {
  return support::captured(run).err;
}
