#include "platform/sleep.h"

#include <cerrno>
#include <sched.h>
#include <time.h>

namespace quillon {

void SleepMs(std::uint32_t milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    timespec left{};
    left.tv_sec = static_cast<time_t>(milliseconds / 1000);
    left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1'000'000;
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}

} // namespace quillon
