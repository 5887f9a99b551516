// The files that this process is writing at the moment, so that a signal can take them away.
#pragma once

/// A signal handler sees nothing but what is kept outside of any object; this registry is therefore the one
/// piece of state that belongs to the process. Entries are slots with atomic members: adding and removing
/// needs no lock, and `discardAll` may run at any instruction.
namespace unfinished {

/// One file that is being written: either a temporary name, or a descriptor whose file is emptied.
class Entry {
 public:
  /// `name` must outlive the entry. Signals that end the process are caught from the first entry to the last.
  explicit Entry(const char* name);
  explicit Entry(int descriptor);
  ~Entry();
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

 private:
  int slot;
};

/// Removes (or empties) what is unfinished. Async-signal-safe: a program with signal handlers of its own
/// calls this in them, since handlers that are already set stay.
void discardAll();

}  // namespace unfinished
