// The files that this process is writing at the moment, so that a signal can take them away.
#include "tables/UnfinishedFiles.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace unfinished {

namespace {

constexpr int kNoDescriptor = -1;

struct Slot {
  std::atomic<bool> taken{false};
  std::atomic<const char*> name{nullptr};
  std::atomic<int> descriptor{kNoDescriptor};
};

constexpr int kSlots = 8;  // tables are written one after the other: more than are ever in use
constexpr int kNoSlot = -1;
std::array<Slot, kSlots> slots;

constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

/// What the signals did before the first entry. Written by `catchSignals` only.
std::array<bool, kEndingSignals.size()> caught{};
bool fileSizeSignalIgnored = false;
std::atomic<int> entries{0};

extern "C" void endBySignal(int signal) {
  discardAll();
  // The default action, taken when this handler returns, tells the parent which signal it was.
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

bool hasDefaultAction(int signal) {
  struct sigaction now {};
  return sigaction(signal, nullptr, &now) == 0 && (now.sa_flags & SA_SIGINFO) == 0 &&
         now.sa_handler == SIG_DFL;
}

void setAction(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

/// Signals that are ignored (nohup) or handled by the program stay as they are.
void catchSignals() {
  for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
    caught[i] = hasDefaultAction(kEndingSignals[i]);
    if (caught[i]) setAction(kEndingSignals[i], endBySignal);
  }
  // A file that grows beyond the limit set for the process is an error of the write, not the end.
  fileSizeSignalIgnored = hasDefaultAction(SIGXFSZ);
  if (fileSizeSignalIgnored) setAction(SIGXFSZ, SIG_IGN);
}

void releaseSignals() {
  for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
    if (caught[i]) setAction(kEndingSignals[i], SIG_DFL);
  }
  if (fileSizeSignalIgnored) setAction(SIGXFSZ, SIG_DFL);
}

int takeSlot() {
  if (entries++ == 0) catchSignals();
  for (int i = 0; i < kSlots; ++i) {
    if (!slots[static_cast<std::size_t>(i)].taken.exchange(true)) return i;
  }
  return kNoSlot;
}

}  // namespace

Entry::Entry(const char* name) : slot(takeSlot()) {
  if (slot != kNoSlot) slots[static_cast<std::size_t>(slot)].name = name;
}

Entry::Entry(int descriptor) : slot(takeSlot()) {
  if (slot != kNoSlot) slots[static_cast<std::size_t>(slot)].descriptor = descriptor;
}

Entry::~Entry() {
  if (slot != kNoSlot) {
    Slot& mine = slots[static_cast<std::size_t>(slot)];
    mine.name = nullptr;
    mine.descriptor = kNoDescriptor;
    mine.taken = false;
  }
  if (--entries == 0) releaseSignals();
}

void discardAll() {
  const int error = errno;
  for (Slot& entry : slots) {
    if (const char* name = entry.name.exchange(nullptr); name != nullptr) unlink(name);
    const int descriptor = entry.descriptor.exchange(kNoDescriptor);
    if (descriptor != kNoDescriptor && ftruncate(descriptor, 0) != 0) continue;
  }
  errno = error;
}

}  // namespace unfinished
