#include "platform/clock.h"

#include <time.h>

namespace quillon {

namespace {

timespec Read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return time;
}

std::uint64_t Milliseconds(const timespec& time) {
    return static_cast<std::uint64_t>(time.tv_sec) * 1000 + static_cast<std::uint64_t>(time.tv_nsec) / 1'000'000;
}

} // namespace

std::uint64_t TickCount64() { return Milliseconds(Read(CLOCK_MONOTONIC)); }

std::uint64_t CoarseTickCount64() {
#ifdef CLOCK_MONOTONIC_COARSE
    return Milliseconds(Read(CLOCK_MONOTONIC_COARSE));
#else
    return TickCount64();
#endif
}

double ProcessCpuSeconds() {
    const timespec time = Read(CLOCK_PROCESS_CPUTIME_ID);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace quillon
