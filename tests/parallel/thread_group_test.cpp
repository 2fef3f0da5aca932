// A group of threads: its start, its end, and what is passed on to it.

#include "parallel/thread_group.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "parallel/threaded_solve.h"
#include "platform/sleep.h"
#include "search/control.h"

namespace quillon::test {
namespace {

constexpr int kPlies = 21;

/// Members that wait until they are asked to stop.
class CGroupOfThree {
  public:
    CGroupOfThree() {
        m_owner->m_nThreadNumber = 7;
        for (auto& member : m_members) {
            member = NewSearchContext();
            TSearchContext* const context = member.get();
            EXPECT_TRUE(m_group.Add(*context, kPlies, [this, context] {
                ++m_nBegun;
                while (context->m_nStopRequest < kStopRequest)
                    SleepMs(1);
                ++m_nStopped;
            }));
        }
    }

    bool AllAre(std::uint8_t request) {
        for (int ms = 0; ms < 2000; ++ms) {
            if (std::all_of(m_members.begin(), m_members.end(),
                            [&](const auto& member) { return member->m_nStopRequest == request; }))
                return true;
            SleepMs(1);
        }
        return false;
    }

    int WaitForAll() {
        int told = 0;
        while (m_group.WaitNext() >= 0)
            ++told;
        return told;
    }

    const CNothingLeft m_nothing;
    TAnalysis m_analysis;
    std::unique_ptr<TSearchContext> m_owner = NewSearchContext();
    std::array<std::unique_ptr<TSearchContext>, 3> m_members;
    std::atomic<int> m_nBegun{0}, m_nStopped{0};
    CThreadGroup m_group{m_analysis, *m_owner};
};

TEST(ThreadGroup, NobodyBeginsBeforeItGoes) {
    CGroupOfThree three;
    SleepMs(20);
    EXPECT_EQ(three.m_nBegun, 0);
    three.m_group.Go();
    three.m_group.StopAll();
    EXPECT_EQ(three.WaitForAll(), 3);
    EXPECT_EQ(three.m_nStopped, 3);
    EXPECT_EQ(three.m_analysis.m_nFinishedThreads, 3u);
}

TEST(ThreadGroup, AbandonedMembersEndWithoutHavingRun) {
    CGroupOfThree three;
    three.m_group.Abandon();
    EXPECT_EQ(three.WaitForAll(), 3);
    EXPECT_EQ(three.m_nBegun, 0);
}

TEST(ThreadGroup, TheDestructorEndsWhatRuns) {
    CGroupOfThree three;
    three.m_group.Go();
}

TEST(ThreadGroup, WhatIsAskedOfTheOwnerIsPassedOn) {
    CGroupOfThree three;
    three.m_group.Go();
    int told = -1;
    CThread waiting(1 << 20, [&] { told = three.WaitForAll(); });
    AskThread(*three.m_owner, kPauseRequest);
    EXPECT_TRUE(three.AllAre(kPauseRequest));
    AskThread(*three.m_owner, kRunRequest);
    EXPECT_TRUE(three.AllAre(kRunRequest));
    AskThread(*three.m_owner, kStopRequest);
    waiting.Join();
    EXPECT_EQ(told, 3);
    EXPECT_EQ(three.m_nStopped, 3);
}

TEST(ThreadGroup, AStopCommandForTheOwnerIsPassedOn) {
    CGroupOfThree three;
    three.m_group.Go();
    int told = -1;
    CThread waiting(1 << 20, [&] { told = three.WaitForAll(); });
    GiveCommand(three.m_analysis, kStopCommand, 6); // of another thread
    SleepMs(50);
    EXPECT_EQ(three.m_nStopped, 0);
    GiveCommand(three.m_analysis, kStopCommand, 7);
    waiting.Join();
    EXPECT_EQ(told, 3);
}

TEST(ThreadGroup, WhatAMemberThrowsEndsTheOthersAndIsThrownOn) {
    CGroupOfThree three;
    const std::unique_ptr<TSearchContext> fourth = NewSearchContext();
    CThreadGroup group(three.m_analysis, *three.m_owner);
    std::atomic<bool> bStopped{false};
    ASSERT_TRUE(group.Add(*three.m_owner, kPlies, [] { throw std::runtime_error("no memory"); }));
    ASSERT_TRUE(group.Add(*fourth, kPlies, [&] {
        while (fourth->m_nStopRequest < kStopRequest)
            SleepMs(1);
        bStopped = true;
    }));
    group.Go();
    EXPECT_THROW((void)group.WaitNext(), std::runtime_error);
    EXPECT_TRUE(bStopped);
}

TEST(ThreadGroup, AStopOfAMemberEndsWithIt) {
    TAnalysis analysis;
    const std::unique_ptr<TSearchContext> owner = NewSearchContext(), context = NewSearchContext();
    context->m_nThreadNumber = 70;
    GiveCommand(analysis, kStopCommand, 70);
    CThreadGroup group(analysis, *owner);
    ASSERT_TRUE(group.Add(*context, kPlies, [] {}));
    group.Go();
    EXPECT_EQ(group.WaitNext(), 0);
    EXPECT_EQ(analysis.m_nCommand, kNoCommand);
}

TEST(ThreadGroup, ADropOfAPauseIsForTheThreadThatEnds) {
    TAnalysis analysis;
    GiveCommand(analysis, kPauseCommand, 3);
    DropOwnCommand(analysis, 2);
    EXPECT_EQ(analysis.m_nCommand, kPauseCommand);
    DropOwnCommand(analysis, 3);
    EXPECT_EQ(analysis.m_nCommand, kNoCommand);
    GiveCommand(analysis, kPauseCommand, kAllThreads);
    DropOwnCommand(analysis, kAllThreads);
    EXPECT_EQ(analysis.m_nCommand, kPauseCommand);
}

} // namespace
} // namespace quillon::test
