#include "platform/clock.h"

#include <time.h>

namespace quillon {

namespace {

timespec Read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return time;
}

} // namespace

std::uint64_t TickCount64() {
    const timespec time = Read(CLOCK_MONOTONIC);
    return static_cast<std::uint64_t>(time.tv_sec) * 1000 + static_cast<std::uint64_t>(time.tv_nsec) / 1'000'000;
}

double ProcessCpuSeconds() {
    const timespec time = Read(CLOCK_PROCESS_CPUTIME_ID);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace quillon
