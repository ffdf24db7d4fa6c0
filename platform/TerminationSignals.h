#pragma once
// SIGHUP, SIGINT and SIGTERM as something that a loop can wait for, so that they end the program between two
// operations and never in the middle of one.

namespace platform {

/// Catches them from the first call on, but for those that the program was started to ignore. Answers a descriptor that
/// can be read for good as soon as one came, -1 where the system has none left. Nobody must read from it. The same
/// signal a second time ends the process at once.
int catchTerminationSignals();

/// The one that came first, 0 until then.
int terminationSignal();

} // namespace platform
