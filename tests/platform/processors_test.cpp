#include "platform/processors.h"

#include <sched.h>
#include <thread>

#include <gtest/gtest.h>

#include "platform/temporary_folder.h"

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

/// A folder of processors like the system's.
class Cores : public ::testing::Test {
  protected:
    void Add(const std::string& processor, int nPackage, int nCore) const {
        m_folder.Write(processor + "/topology/physical_package_id", std::to_string(nPackage) + "\n");
        m_folder.Write(processor + "/topology/core_id", std::to_string(nCore) + "\n");
    }

    CTemporaryFolder m_folder;
};

TEST_F(Cores, ThreadsOfACoreCountOnce) {
    for (const char* const processor : {"cpu0", "cpu1", "cpu2", "cpu10"})
        Add(processor, 0, 7);
    Add("cpufreq", 0, 8); // no processor
    Add("cpu", 0, 9);
    std::filesystem::create_directory(m_folder.Path() / "cpu3"); // one that is switched off
    EXPECT_EQ(UsableCores(m_folder.Path()), 1);
}

TEST_F(Cores, PackagesNumberTheirsAlike) {
    Add("cpu0", 0, 0);
    Add("cpu1", 1, 0);
    EXPECT_EQ(UsableCores(m_folder.Path()), std::min(2, UsableProcessors()));
}

TEST_F(Cores, AreNoMoreThanTheUsableProcessors) {
    EXPECT_EQ(UsableCores(m_folder.Path()), UsableProcessors()) << "where the system tells nothing";
    EXPECT_EQ(UsableCores(m_folder.Path() / "missing"), UsableProcessors());
    for (int core = 0; core < 2 * UsableProcessors(); ++core)
        Add("cpu" + std::to_string(core), 0, core);
    EXPECT_EQ(UsableCores(m_folder.Path()), UsableProcessors());
    EXPECT_GE(UsableCores(), 1);
    EXPECT_LE(UsableCores(), UsableProcessors());
}

} // namespace quillon
