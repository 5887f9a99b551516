// The one way in which tables and other results reach a file: whole, or not at all and with a reason.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <string_view>

namespace unfinished {
class Entry;
}

/// A regular file is written beside its destination, under a name nobody can guess and that did not exist,
/// and moved into place when it is whole; until then an older file stays as it was. It keeps the mode (and
/// where possible the group) of the file it replaces; a new one obeys the umask. The target of a symbolic
/// link is replaced, not the link. Devices and pipes are written directly, /dev/stdout and its like through
/// the descriptor they name. So is a file whose folder takes no new files, or that cannot be moved away (a
/// mount point): such a file is emptied when it could not be written whole.
///
/// An object that is destroyed unfinished leaves nothing behind, nor does a signal that ends the process.
class OutputFile {
 public:
  /// Opens `path` for writing. The content of an older file is not touched yet.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool isOpen() const { return descriptor >= 0; }
  const std::string& openError() const { return problem; }  ///< the system's reason; empty when open

  /// Writes `text`, the whole content, and puts it in place. Empty, or the system's reason. Once only.
  std::string finish(std::string_view text);

 private:
  void openDescriptor(int number);
  void openTarget();
  void openExisting(int existing, unsigned mode, gid_t group);
  void createBeside();
  std::string finishBeside(std::string_view text);
  std::string finishInPlace(int file, std::string_view text);

  std::string target;     ///< links resolved
  std::string temporary;  ///< empty when the destination is written directly
  std::unique_ptr<unfinished::Entry> entry;
  int descriptor = -1;
  int replaced = -1;     ///< the older file, open for writing
  bool regular = false;  ///< a regular file that is written directly
  std::string problem;
};

/// How an attempt to write ended, with the system's reason.
struct WriteOutcome {
  enum class State { Whole, NotOpened, Incomplete } state = State::Whole;
  std::string reason;
};

/// Opens, writes and closes in one go.
WriteOutcome writeWholeFile(const std::string& path, std::string_view text);

/// Writes all of `text` to an open descriptor. Empty, or the system's reason.
std::string writeDescriptor(int descriptor, std::string_view text);
