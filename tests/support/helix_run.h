// Tests that run the program on the helix query and the synthetic installation.
#pragma once

#include <gtest/gtest.h>

#include "support/output_table.h"
#include "support/process.h"
#include "support/synthetic.h"

namespace support {

/// A directory with the helix query as query.tab.
class HelixRun : public testing::Test {
 protected:
  HelixRun() { write(helixQuery()); }
  void write(const Query& query) const { writeFile(dir / "query.tab", query.table()); }
  /// Runs without protons, which is the faster way, with further arguments.
  ProgramRun run(std::vector<std::string> arguments = {},
                 const std::filesystem::path& install = ORBELN_SYNTHETIC) const {
    arguments.insert(arguments.begin(), {"-in", "query.tab", "-noproton"});
    return runOrbeln(dir.path, install, arguments);
  }
  OutputTable table(const std::string& name) const { return OutputTable(dir / name); }
  bool exists(const std::string& name) const { return std::filesystem::exists(dir / name); }

  const TempDir dir;
};

}  // namespace support
