#pragma once
// A disk that is full, for tests of what writes files.

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace quillon {

/// While it lives, files of this process, and of those that it starts, cannot become larger than a few KiB.
class CSmallDisk {
  public:
    CSmallDisk() {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit small{4096, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    ~CSmallDisk() { EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &m_before), 0); }
    CSmallDisk(const CSmallDisk&) = delete;
    CSmallDisk& operator=(const CSmallDisk&) = delete;

  private:
    rlimit m_before{};
};

} // namespace quillon
