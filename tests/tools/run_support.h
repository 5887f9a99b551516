// A folder with orbeln-run and its siblings, any of which a test may replace by a script.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "support/process.h"
#include "support/synthetic.h"

namespace support {

class RunFolder : public testing::Test {
 protected:
  RunFolder() {
    namespace fs = std::filesystem;
    const fs::path built = fs::path(ORBELN_RUN_BINARY).parent_path();
    fs::create_directories(dir / "bin");
    fs::copy_file(ORBELN_RUN_BINARY, dir / "bin/orbeln-run");  // it looks for the others beside itself
    for (const char* name : {"orbeln", "orbeln-convert", "orbeln-report", "orbeln-restraints"})
      fs::create_symlink(built / name, dir / "bin" / name);
    writeFile(dir / "query.tab", helixQuery().table());
  }

  void replace(const std::string& program, const std::string& script) const {
    const std::filesystem::path path = dir / "bin" / program;
    std::filesystem::remove(path);
    writeFile(path, "#!/bin/sh\n" + script);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }
  ProgramRun shell(const std::string& command) const {
    const std::string line = "cd '" + dir.path.string() +
                             "' && export ORBELN_DIR='" ORBELN_SYNTHETIC "' && { " + command +
                             "; } >out.txt 2>err.txt";
    const int state = std::system(line.c_str());
    return {WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state), readFile(dir / "out.txt"),
            readFile(dir / "err.txt")};
  }
  /// orbeln-run with these words, without protons, which is the faster way.
  ProgramRun run(const std::string& words) const { return shell("bin/orbeln-run -noproton " + words); }
  std::string text(const std::string& name) const { return readFile(dir / name); }
  bool exists(const std::string& name) const { return std::filesystem::exists(dir / name); }

  const TempDir dir;
};

}  // namespace support
