#include "platform/processors.h"

#include <sched.h>
#include <thread>

#include <gtest/gtest.h>

namespace quillon {

TEST(Processors, AtLeastOneAndNoMoreThanTheHardwareHas) {
    EXPECT_GE(UsableProcessors(), 1);
    EXPECT_LE(UsableProcessors(), static_cast<int>(std::thread::hardware_concurrency()));
}

TEST(Processors, BindingToOneLeavesOne) {
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    cpu_set_t one;
    CPU_ZERO(&one);
    for (int processor = 0; CPU_COUNT(&one) == 0; ++processor)
        if (CPU_ISSET(processor, &all))
            CPU_SET(processor, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(UsableProcessors(), 1);
    ASSERT_EQ(sched_setaffinity(0, sizeof all, &all), 0);
}

} // namespace quillon
