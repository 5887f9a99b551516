// Ends a run in good order when the user or the system asks for it.
#include "run/interrupt.h"

#include <array>
#include <csignal>

namespace run {

namespace {

constexpr std::array<int, 3> kWatched = {SIGINT, SIGTERM, SIGHUP};

// A handler can reach nothing but static storage.
volatile std::sig_atomic_t caught = 0;

void remember(int signal) {
  caught = signal;
}

void setHandler(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

void watchSignals() {
  for (const int signal : kWatched) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) setHandler(signal, remember);  // nohup stays nohup
  }
  setHandler(SIGPIPE, SIG_IGN);
}

int caughtSignal() {
  return caught;
}

void restoreSignals() {
  for (const int signal : kWatched) {
    struct sigaction now {};
    sigaction(signal, nullptr, &now);
    if (now.sa_handler == remember) setHandler(signal, SIG_DFL);
  }
  setHandler(SIGPIPE, SIG_DFL);
}

void endBySignal(int signal) {
  setHandler(signal, SIG_DFL);
  raise(signal);
}

}  // namespace run
