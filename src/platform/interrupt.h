#pragma once
// Ctrl+C: the first asks the program to finish in good order, the second ends it.

#include <atomic>

namespace quillon {

/// Exit status of a program that a second interrupt ended.
inline constexpr int kInterruptedStatus = 130;

/// From now on SIGINT and SIGTERM add 1 to `count`, which the program watches. One that finds `count` above 0 ends the
/// program at once with kInterruptedStatus; setting the count back to 0 takes the first one back.
///   count    must outlive the program's threads: the handler keeps a reference to it. A further call replaces it.
///   Threads  call it once, from main; the signal may arrive on any thread.
void InstallInterruptHandler(std::atomic<int>& count);

} // namespace quillon
