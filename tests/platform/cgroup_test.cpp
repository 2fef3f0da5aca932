#include "platform/cgroup.h"

#include <gtest/gtest.h>

#include "temporary_folder.h"

namespace quillon {

namespace {

// Control groups in a folder of the test: the membership of the process, and files of groups.
class Cgroup : public testing::Test {
  protected:
    void GivenMembership(const std::string& text) { m_folder.Write("membership", text); }
    void GivenFile(const std::string& path, const std::string& text) { m_folder.Write("groups/" + path, text); }
    [[nodiscard]] TCgroupPlace Place() const { return {m_folder.Path() / "membership", m_folder.Path() / "groups"}; }

  private:
    CTemporaryFolder m_folder;
};

} // namespace

TEST_F(Cgroup, NoFilesMeanNoLimits) {
    EXPECT_EQ(CgroupMemoryLimit(Place()), std::nullopt);
    EXPECT_EQ(CgroupCpuQuota(Place()), std::nullopt);
}

TEST_F(Cgroup, Version2LimitsOfTheProcessGroupHold) {
    GivenMembership("0::/user/job\n");
    GivenFile("user/job/memory.max", "1073741824\n");
    GivenFile("user/job/cpu.max", "150000 100000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), 1073741824u);
    EXPECT_EQ(CgroupCpuQuota(Place()), 1.5);
}

TEST_F(Cgroup, Version2MaxIsNoLimit) {
    GivenMembership("0::/job\n");
    GivenFile("job/memory.max", "max\n");
    GivenFile("job/cpu.max", "max 100000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), std::nullopt);
    EXPECT_EQ(CgroupCpuQuota(Place()), std::nullopt);
}

TEST_F(Cgroup, TighterLimitOfAGroupAboveHolds) {
    GivenMembership("0::/user/job\n");
    GivenFile("user/job/memory.max", "9000000\n");
    GivenFile("user/memory.max", "5000000\n");
    GivenFile("memory.max", "7000000\n");
    GivenFile("user/job/cpu.max", "400000 100000\n");
    GivenFile("cpu.max", "200000 100000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), 5000000u);
    EXPECT_EQ(CgroupCpuQuota(Place()), 2.0);
}

TEST_F(Cgroup, ContainerThatSeesItsGroupAsTheRootIsLimited) {
    GivenMembership("0::/machine/container/1234\n");
    GivenFile("memory.max", "4000000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), 4000000u);
}

TEST_F(Cgroup, Version1LimitsAreFoundByController) {
    GivenMembership("4:memory:/job\n2:cpuacct,cpu:/other\n0::/\n");
    GivenFile("memory/job/memory.limit_in_bytes", "2000000\n");
    GivenFile("cpu/other/cpu.cfs_quota_us", "50000\n");
    GivenFile("cpu/other/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), 2000000u);
    EXPECT_EQ(CgroupCpuQuota(Place()), 0.5);
}

TEST_F(Cgroup, Version1LimitOfAnotherControllersGroupIsNotOurs) {
    GivenMembership("4:memory:/job\n3:pids:/other\n");
    GivenFile("memory/other/memory.limit_in_bytes", "1000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), std::nullopt);
}

TEST_F(Cgroup, Version1ValuesForUnlimitedAreNoLimit) {
    GivenMembership("4:memory:/\n1:cpu:/\n");
    GivenFile("memory/memory.limit_in_bytes", "9223372036854771712\n");
    GivenFile("cpu/cpu.cfs_quota_us", "-1\n");
    GivenFile("cpu/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), std::nullopt);
    EXPECT_EQ(CgroupCpuQuota(Place()), std::nullopt);
}

TEST_F(Cgroup, PathThatLeadsOutOfTheRootIsBoundedByIt) {
    GivenMembership("0::/../../job\n");
    GivenFile("memory.max", "4000000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), 4000000u);
}

TEST_F(Cgroup, MembershipThatIsNoneIsPassedOver) {
    GivenMembership("nonsense\n\n0:\n0::/job\n");
    GivenFile("job/memory.max", "3000000\n");
    EXPECT_EQ(CgroupMemoryLimit(Place()), 3000000u);
}

} // namespace quillon
