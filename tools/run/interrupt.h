// Ends a run in good order when the user or the system asks for it.
#pragma once

namespace run {

/// From here on SIGINT, SIGTERM and SIGHUP are only remembered (unless they were ignored already), and
/// writing to a closed pipe is an error like any other.
void watchSignals();

/// The signal that asked for the end; 0 while none did.
int caughtSignal();

/// Gives the signals back their usual meaning, for a child process.
void restoreSignals();

/// Ends this process the way `signal` would have, so that the caller sees it.
void endBySignal(int signal);

}  // namespace run
