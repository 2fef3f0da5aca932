// What a manual command makes of a node's list.

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "search/control.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

/// A node that its thread has been called back to while move `nCurrent` was in analysis.
class CCalledBack {
  public:
    CCalledBack(int nMoves, int nCurrent) : m_line("8/8/8/8/7Q/n1K5/8/k7", 15), m_nCurrent(nCurrent) {
        for (int i = 0; i < nMoves; ++i)
            m_list.push_back({static_cast<std::uint8_t>(i), 63, 0, 0});
    }

    /// The sources of the list from where the node goes on.
    std::vector<int> Obey(TManualCommand command) {
        command.m_nPlies = 15;
        GiveManualCommand(m_line.Analysis(), command);
        m_line.Context().m_nCalledBackTo = 15;
        int next = m_nCurrent + 1;
        EXPECT_TRUE(ObeyManualCommand(m_line.Root(), m_list.data(), static_cast<int>(m_list.size()), next, m_nSkipped));
        EXPECT_FALSE(IsControlPending(m_line.Root()));
        std::vector<int> rest;
        for (auto i = static_cast<std::size_t>(next); i < m_list.size(); ++i)
            rest.push_back(m_list[i].m_nFrom);
        return rest;
    }

    CSearchedPosition m_line;
    std::vector<TMove> m_list;
    int m_nCurrent, m_nSkipped = 0;
};

TManualCommand Skip(std::uint8_t action, TMove target = {}) {
    TManualCommand command;
    command.m_nSkipAction = action;
    command.m_skipTarget = target;
    return command;
}

TManualCommand Order(std::uint8_t action) {
    TManualCommand command;
    command.m_nMoveOrderAction = action;
    return command;
}

TEST(ManualCommand, SkippingToTheNextLeavesOneMoveInDoubt) {
    CCalledBack node(6, 3);
    EXPECT_EQ(node.Obey(Skip(kSkipToNext)), (std::vector<int>{4, 5}));
    EXPECT_EQ(node.m_nSkipped, 1);
}

TEST(ManualCommand, SkippingFiveAtTheFourthOfSixGoesToTheLast) {
    CCalledBack node(6, 3);
    EXPECT_EQ(node.Obey(Skip(5)), (std::vector<int>{5}));
    EXPECT_EQ(node.m_nSkipped, 2);
}

TEST(ManualCommand, SkippingToAMoveLeavesThoseBetweenInDoubt) {
    CCalledBack node(8, 1);
    EXPECT_EQ(node.Obey(Skip(kSkipToMove, TMove{6, 63, 0, 0})), (std::vector<int>{6, 7}));
    EXPECT_EQ(node.m_nSkipped, 5);
    CCalledBack unknown(8, 1);
    EXPECT_EQ(unknown.Obey(Skip(kSkipToMove, TMove{60, 1, 0, 0})), (std::vector<int>{2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(unknown.m_nSkipped, 1);
}

TEST(ManualCommand, OrderActionsTryEveryMoveStill) {
    CCalledBack swapped(5, 1);
    EXPECT_EQ(swapped.Obey(Order(kSwapWithNext)), (std::vector<int>{2, 1, 3, 4}));
    EXPECT_EQ(swapped.m_nSkipped, 0);
    CCalledBack last(5, 1);
    EXPECT_EQ(last.Obey(Order(kMoveToEnd)), (std::vector<int>{2, 3, 4, 1}));
    EXPECT_EQ(last.m_nSkipped, 0);
    CCalledBack nothingBehind(5, 4);
    EXPECT_EQ(nothingBehind.Obey(Order(kSwapWithNext)), (std::vector<int>{4}));
}

TEST(ManualCommand, IsClearedWhereNothingWasLeftForIt) {
    CCalledBack node(4, 1);
    TManualCommand command = Skip(kSkipToNext);
    command.m_nPlies = 15;
    GiveManualCommand(node.m_line.Analysis(), command);
    int next = 2, skipped = 0;
    EXPECT_FALSE(ObeyManualCommand(node.m_line.Root(), node.m_list.data(), 4, next, skipped));
    EXPECT_EQ(next, 2);
    EXPECT_EQ(skipped, 0);
    EXPECT_EQ(node.m_line.Analysis().m_nCommand, kNoCommand);
}

TEST(ManualCommand, CallsNobodyBackAboveTheNodeHisThreadBeganWith) {
    CCalledBack node(4, 1);
    TManualCommand command = Skip(kSkipToNext);
    command.m_nPlies = 17;
    GiveManualCommand(node.m_line.Analysis(), command);
    EXPECT_FALSE(PauseOrStop(node.m_line.Root()));
    EXPECT_EQ(node.m_line.Context().m_nCalledBackTo, 0);
}

TEST(ManualCommand, TakesBackNoStop) {
    CCalledBack node(4, 1);
    GiveCommand(node.m_line.Analysis(), kStopCommand, kAllThreads);
    GiveManualCommand(node.m_line.Analysis(), Skip(kSkipToNext));
    ClearManualCommand(node.m_line.Analysis());
    EXPECT_TRUE(IsStopping(node.m_line.Root()));
}

/// A stop for one thread outlives the commands that come before its thread has met a node.
TEST(ManualCommand, NoCommandTakesBackAStopOfOneThread) {
    CSearchedPosition stopped("8/8/8/8/7Q/n1K5/8/k7", 15);
    TAnalysis& analysis = stopped.Analysis();
    CSearchedPosition other("8/8/8/8/7Q/n1K5/8/k7", 15);
    other.Now().m_pAnalysis = &analysis;
    stopped.Context().m_nThreadNumber = 70;
    other.Context().m_nThreadNumber = 6; // the same place in another word
    GiveCommand(analysis, kStopCommand, 70);
    GiveManualCommand(analysis, Skip(kSkipToNext));
    ClearManualCommand(analysis);
    EXPECT_TRUE(IsControlPending(stopped.Root()));
    GiveCommand(analysis, kStopCommand, 5);
    PauseAll(analysis);
    ResumeAll(analysis);
    GiveCommand(analysis, kPauseCommand, 9);
    DropOwnCommand(analysis, 9);
    EXPECT_TRUE(IsControlPending(stopped.Root()));
    EXPECT_FALSE(PauseOrStop(other.Root()));
    EXPECT_EQ(RequestFor(analysis, other.Context()), kRunRequest);
    EXPECT_EQ(RequestFor(analysis, stopped.Context()), kStopRequest);
    EXPECT_TRUE(IsLeaving(stopped.Root()));
}

/// A later thread of its number may have a node with as many plies left, in another line.
TEST(ManualCommand, EndsWithTheThreadThatItWasMeantFor) {
    CCalledBack node(4, 1);
    TAnalysis& analysis = node.m_line.Analysis();
    TManualCommand command = Skip(kSkipToNext);
    command.m_nThread = 7;
    GiveManualCommand(analysis, command);
    DropOwnCommand(analysis, 8);
    EXPECT_EQ(analysis.m_nCommand, kManualCommand);
    DropOwnCommand(analysis, 7);
    EXPECT_EQ(analysis.m_nCommand, kNoCommand);
    command.m_nThread = kAllThreads;
    GiveManualCommand(analysis, command);
    DropOwnCommand(analysis, 7);
    EXPECT_EQ(analysis.m_nCommand, kManualCommand);
}

/// Who has taken it goes on to stop, and a later thread of the same number runs.
TEST(ManualCommand, AStopOfOneThreadEndsWithTheThread) {
    CSearchedPosition first("8/8/8/8/7Q/n1K5/8/k7", 15), later("8/8/8/8/7Q/n1K5/8/k7", 15);
    TAnalysis& analysis = first.Analysis();
    later.Root().m_pAnalysis = &analysis;
    first.Context().m_nThreadNumber = later.Context().m_nThreadNumber = 70;
    GiveCommand(analysis, kStopCommand, 70);
    EXPECT_TRUE(IsStopping(first.Root()));
    DropOwnCommand(analysis, 6); // the same place in another word
    EXPECT_EQ(analysis.m_nCommand, kStopCommand);
    DropOwnCommand(analysis, 70);
    EXPECT_EQ(analysis.m_nCommand, kNoCommand);
    EXPECT_TRUE(IsStopping(first.Root()));
    EXPECT_FALSE(IsStopping(later.Root()));
    GiveCommand(analysis, kStopCommand, 5);
    GiveCommand(analysis, kStopCommand, 70);
    DropOwnCommand(analysis, 70); // that of 5 is in force still
    EXPECT_FALSE(IsStopping(later.Root()));
    later.Context().m_nThreadNumber = 5;
    EXPECT_TRUE(IsStopping(later.Root()));
}

TEST(ManualCommand, WithTheSolveEndsAllButAPauseOfAll) {
    CSearchedPosition line("8/8/8/8/7Q/n1K5/8/k7", 15);
    TAnalysis& analysis = line.Analysis();
    line.Context().m_nThreadNumber = 70;
    GiveCommand(analysis, kStopCommand, 70);
    PauseAll(analysis);
    DropCommandsOfSolve(analysis);
    EXPECT_EQ(analysis.m_nCommand, kPauseCommand);
    EXPECT_FALSE(IsStopping(line.Root()));
    ResumeAll(analysis);
    EXPECT_EQ(analysis.m_nCommand, kNoCommand);
    for (const std::uint8_t command : {kStopCommand, kPauseCommand}) {
        GiveCommand(analysis, command, 70);
        DropCommandsOfSolve(analysis);
        EXPECT_EQ(analysis.m_nCommand, kNoCommand);
    }
    GiveManualCommand(analysis, Skip(kSkipToNext));
    DropCommandsOfSolve(analysis);
    EXPECT_EQ(analysis.m_nCommand, kNoCommand);
    GiveCommand(analysis, kStopCommand, kAllThreads);
    DropCommandsOfSolve(analysis);
    EXPECT_FALSE(IsStopping(line.Root()));
}

/// Whoever asked for it may.
TEST(ManualCommand, AStopOfOneThreadIsTakenBackByItsNumberOrWithAll) {
    CSearchedPosition line("8/8/8/8/7Q/n1K5/8/k7", 15);
    TAnalysis& analysis = line.Analysis();
    for (const std::uint16_t number : {std::uint16_t{64}, kAllThreads}) {
        line.Context().m_nThreadNumber = 64;
        GiveCommand(analysis, kStopCommand, 64);
        GiveCommand(analysis, kNoCommand, 65); // another's
        EXPECT_EQ(RequestFor(analysis, line.Context()), kStopRequest);
        GiveCommand(analysis, kNoCommand, number);
        EXPECT_FALSE(IsControlPending(line.Root()));
    }
}

/// A stop for one thread that gives way to another command has been obeyed all the same.
TEST(ManualCommand, AStopThatWasSeenStays) {
    CCalledBack node(4, 1);
    GiveCommand(node.m_line.Analysis(), kStopCommand, 0);
    EXPECT_TRUE(IsStopping(node.m_line.Root()));
    GiveCommand(node.m_line.Analysis(), kPauseCommand, 7);
    EXPECT_TRUE(IsStopping(node.m_line.Root()));
}

} // namespace
} // namespace quillon::test
