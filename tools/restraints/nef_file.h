// The user's own NEF file, to which a restraint list is added.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "restraints/labels.h"

namespace restraints {

class NefFile {
 public:
  /// Reads `path`; empty with `error` set ("file:line: what") when it is no NEF 1 file with a sequence.
  static std::optional<NefFile> load(const std::string& path, std::string& error);

  /// The residues of `sequence` by the file's numbers and names, found through `labels`: its chain (or the
  /// only one of the file when `anyChain`), its numbers. Residues of unknown type may be absent. Empty with
  /// `error` set when one is not there or of another type.
  std::optional<Labels> label(const std::map<int, char>& sequence, const Labels& labels, bool anyChain,
                              std::string& error) const;

  /// The file's bytes with `frames` behind them.
  std::string with(const std::string& frames) const;
  /// `name`, with a number behind it when the file has a save frame of that name.
  std::string unusedFrame(const std::string& name) const;

 private:
  std::string file, text;
  std::set<std::string> frameNames;
  std::map<std::string, std::map<std::string, std::string>>
      chains;  ///< chain -> sequence code -> residue name
};

}  // namespace restraints
