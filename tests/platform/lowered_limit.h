#pragma once
// A limit of the process that is lower for a while: a full disk, files that cannot be opened.

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace quillon {

/// Holds for this process and for those that it starts while it lives.
///   resource  RLIMIT_FSIZE, RLIMIT_NOFILE, ...
class CLoweredLimit {
  public:
    CLoweredLimit(int resource, rlim_t limit) : m_resource(resource) {
        EXPECT_EQ(getrlimit(resource, &m_before), 0);
        const rlimit lowered{limit, m_before.rlim_max};
        EXPECT_EQ(setrlimit(resource, &lowered), 0);
    }
    ~CLoweredLimit() { EXPECT_EQ(setrlimit(m_resource, &m_before), 0); }
    CLoweredLimit(const CLoweredLimit&) = delete;
    CLoweredLimit& operator=(const CLoweredLimit&) = delete;

  private:
    const int m_resource;
    rlimit m_before{};
};

/// Files cannot become larger than a few KiB.
class CSmallDisk : public CLoweredLimit {
  public:
    CSmallDisk() : CLoweredLimit(RLIMIT_FSIZE, 4096) {}
};

} // namespace quillon
