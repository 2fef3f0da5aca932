// What a full register gives up, and in which order.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "core/fen.h"
#include "platform/clock.h"
#include "platform/sleep.h"
#include "tempregister/aggregated_register.h"
#include "tempregister/chess_boards.h"
#include "tempregister/failing_allocation.h"
#include "tempregister/register_folder.h"

namespace quillon::test {
namespace {

constexpr std::uint64_t kThrottleMs = 16;

class Eviction : public testing::Test {
  protected:
    Eviction() { nLastRemovedLevel = 0; }
    ~Eviction() override { nLastRemovedLevel = 0; }

    /// So many new boards with a mate in nMoves plies.
    void Insert(std::size_t count, int nMoves) {
        for (; count != 0; --count)
            m_known.InsertLoaded(static_cast<std::uint16_t>(nMoves), m_boards[m_nNext++], true);
    }

    /// The same with doubt.
    void Doubt(std::size_t count, int nMoves, std::uint32_t heuristics = 1) {
        for (; count != 0; --count)
            m_known.InsertDoubtful(static_cast<std::uint16_t>(nMoves), m_boards[m_nNext++], heuristics, 0);
    }

    /// Long enough after the last one to be let through.
    void Evict(bool bEarly) {
        SleepMs(kThrottleMs + 2);
        m_known.EmptySomeDataWhenRegisterFull(bEarly);
    }

    /// How many elements are held for a length: a mate in nMoves, or doubt up to nMoves.
    [[nodiscard]] std::size_t CountOf(int nMoves) const {
        return static_cast<std::size_t>(
            std::count_if(m_boards.begin(), m_boards.begin() + m_nNext, [&](const auto& board) {
                const int found = m_known.Find(nMoves, board, 1, 0);
                return found == 1 ? m_known.Find(nMoves - 2, board, 1, 0) == -2
                                  : found == -1 && m_known.Find(nMoves + 2, board, 1, 0) == -2;
            }));
    }

    std::vector<TBoardBytes> m_boards = DifferentBoards(12000, 4);
    std::ptrdiff_t m_nNext = 0;
    TAggregatedTemporaryChessboardRegister m_known{64 << 20, 256};
};

/// The sweeps that the register log tells of, as the lengths they were for.
std::vector<int> SweepsIn(const std::string& log) {
    const std::string line = "TAggregatedTemporaryChessboardRegister::RemoveNMovers start., msg params: ";
    std::vector<int> sweeps;
    for (std::size_t at = log.find(line); at != std::string::npos; at = log.find(line, at + 1))
        sweeps.push_back(std::stoi(log.substr(at + line.size())));
    return sweeps;
}

// ---- when

TEST_F(Eviction, AFullRegisterWithNothingToRemoveDropsWhatComes) {
    m_known.nMaxElements = 50;
    Insert(50, 301);
    EXPECT_NO_THROW(Insert(1, 301));
    EXPECT_NO_THROW(Doubt(1, 301));
    EXPECT_NO_THROW(Insert(1, 5));
    EXPECT_EQ(m_known.GetElementsCount(), 50u);
    EXPECT_EQ(CountOf(301), 50u);
}

TEST_F(Eviction, WithoutABudgetNothingIsStoredAndNothingSwept) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    m_known.nMaxElements = 0;
    Insert(3, 9);
    Doubt(3, 9);
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
    EXPECT_EQ(CRegisterFolder::Read(folder.LogPath()), "");
}

TEST_F(Eviction, OneWithin16MillisecondsOfTheLastDoesNothing) {
    bool bTried = false;
    for (int attempt = 0; attempt < 50 && !bTried; ++attempt) {
        Evict(false);
        const std::uint64_t start = TickCount64();
        m_known.Clear(0, true);
        Insert(1, 5);
        m_known.EmptySomeDataWhenRegisterFull(false);
        const std::uint32_t left = m_known.GetElementsCount();
        if (TickCount64() - start >= kThrottleMs)
            continue; // the test itself was held up
        EXPECT_EQ(left, 1u);
        bTried = true;
    }
    EXPECT_TRUE(bTried);
    Evict(false);
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
}

TEST_F(Eviction, AnEarlyCallLeavesAQuarterFree) {
    m_known.nMaxElements = 100;
    Insert(75, 3);
    Evict(true);
    EXPECT_EQ(m_known.GetElementsCount(), 75u);
    EXPECT_EQ(m_known.Statistics().m_nEvictions, 0u);
    Insert(1, 3);
    Evict(true);
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
    EXPECT_EQ(m_known.Statistics().m_nEvictions, 1u);
    EXPECT_EQ(m_known.Statistics().m_nEvictedElements, 76u);
}

TEST_F(Eviction, APeriodicCallIsHeededWhereLittleIsFree) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    m_known.nMaxElements = 100;
    Insert(75, 3);
    SleepMs(kThrottleMs + 2);
    m_known.MakeRoomEarly();
    EXPECT_EQ(m_known.GetElementsCount(), 75u);
    EXPECT_EQ(CRegisterFolder::Read(folder.LogPath()), "") << "not even asked";
    Insert(1, 3);
    m_known.MakeRoomEarly();
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
    m_known.nMaxElements = 0;
    m_known.MakeRoomEarly();
    EXPECT_EQ(m_known.Statistics().m_nEvictions, 1u);
}

/// A slow sweep, or periodic calls would leave no time for the search.
TEST_F(Eviction, APeriodicCallIsNotHeededSoonAfterTheLast) {
    constexpr std::uint64_t kSweepMs = 60, kWorkBehind = 32;
    std::vector<std::uint64_t> begun; // of every sweep, ms
    m_known.m_hooks.m_autoSave = [&begun] {
        begun.push_back(TickCount64());
        SleepMs(kSweepMs);
    };
    m_known.nMaxElements = 100;
    for (int round = 0; round < 2; ++round) {
        Insert(80, 301); // no sweep removes them
        SleepMs(kThrottleMs + 2);
        m_known.MakeRoomEarly();
        m_known.Clear(0, true);
    }
    const std::size_t early = begun.size();
    EXPECT_GE(early, 1u);
    if (early > 1) { // so late is the second round on a machine that stood still
        EXPECT_GE(begun[1] - begun[0], (1 + kWorkBehind) * kSweepMs);
    }
    Insert(100, 9);
    SleepMs(kThrottleMs + 2);
    Insert(1, 9); // an insert that needs room does not wait
    EXPECT_EQ(m_known.Statistics().m_nEvictions, early + 1);
}

/// While an insert makes room a periodic call comes, and finds nothing to do when it is let in: it has swept nothing.
TEST_F(Eviction, APeriodicCallThatOnlyWaitedHoldsOffNone) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    const std::string asked = "EmptySomeDataWhenRegisterFull started, msg params: 1, 0\n";
    std::thread waiting;
    m_known.m_hooks.m_autoSave = [&] {
        if (m_known.Statistics().m_nEvictions != 0)
            return;
        waiting = std::thread([this] { m_known.MakeRoomEarly(); });
        const auto isAsked = [&] { return CRegisterFolder::Read(folder.LogPath()).find(asked) != std::string::npos; };
        for (int n = 0; n < 10'000 && !isAsked(); ++n)
            SleepMs(1);
        EXPECT_TRUE(isAsked());
        SleepMs(60); // as a sweep, it would hold off for many times as long
    };
    m_known.nMaxElements = 100;
    Insert(100, 9);
    Evict(false);
    ASSERT_TRUE(waiting.joinable());
    waiting.join();
    ASSERT_EQ(m_known.Statistics().m_nEvictions, 1u);
    Insert(80, 301);
    SleepMs(kThrottleMs + 2);
    m_known.MakeRoomEarly();
    EXPECT_EQ(m_known.Statistics().m_nEvictions, 2u);
}

TEST_F(Eviction, AnInsertIntoAFullRegisterMakesRoomForItself) {
    m_known.nMaxElements = 1000;
    Insert(1000, 9);
    Insert(1, 11);
    EXPECT_EQ(CountOf(11), 1u);
    EXPECT_LT(m_known.GetElementsCount(), 1000u);
}

TEST_F(Eviction, SavingIsAskedForBeforeAnythingIsLost) {
    std::vector<std::uint32_t> held;
    m_known.m_hooks.m_autoSave = [&] { held.push_back(m_known.GetElementsCount()); };
    Insert(10, 5);
    Evict(false);
    EXPECT_EQ(held, std::vector<std::uint32_t>{10});
}

// ---- in which order

TEST_F(Eviction, UnusedDoubtGoesFirstAndMayBeEnough) {
    m_known.nMaxElements = 12000;
    Doubt(4097, 21);
    Insert(100, 3);
    m_known.AddDoubtfulUser(1, 0);
    (void)m_known.RemoveDoubtful(1, 0);
    Evict(false);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 0u);
    EXPECT_EQ(m_known.GetElementsCount(), 100u);
    EXPECT_TRUE(m_known.bKeepShort);
}

TEST_F(Eviction, ALittleUnusedDoubtIsNotEnough) {
    m_known.nMaxElements = 12000;
    Doubt(4096, 21);
    Insert(100, 3);
    m_known.AddDoubtfulUser(1, 0);
    (void)m_known.RemoveDoubtful(1, 0);
    Evict(false);
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
}

TEST_F(Eviction, ShortSubproblemsAreNotTakenAnyMoreWhenTheyWereFew) {
    m_known.nMaxElements = 1000;
    Insert(100, 3);
    Doubt(100, 9);
    Insert(800, 11);
    Evict(false);
    EXPECT_FALSE(m_known.bKeepShort);
    EXPECT_NO_THROW(Insert(1, 3));
    EXPECT_NO_THROW(Doubt(1, 3));
    EXPECT_EQ(CountOf(3), 0u);
    Insert(1, 5);
    EXPECT_EQ(CountOf(5), 1u);
    const std::uint32_t before = m_known.GetElementsCount();
    m_known.InsertDoubtfulState(3, m_boards.back(), 1, 0, false); // that it is not doubtful is taken
    EXPECT_EQ(m_known.GetElementsCount(), before + 1);
    m_known.Clear(1, true);
    EXPECT_TRUE(m_known.bKeepShort);
}

TEST_F(Eviction, ShortSubproblemsAreStillTakenWhenTheyWereMany) {
    m_known.nMaxElements = 900;
    Insert(300, 3);
    Insert(600, 11);
    Evict(false);
    EXPECT_TRUE(m_known.bKeepShort);
    EXPECT_EQ(CountOf(11), 600u);
}

TEST_F(Eviction, GoesUpByLevelsUntilAFifthIsFree) {
    m_known.nMaxElements = 1000;
    Insert(50, 5);
    Insert(50, 7);
    Insert(450, 9);
    Insert(450, 11);
    Evict(false);
    EXPECT_EQ(nLastRemovedLevel, 9);
    EXPECT_EQ(CountOf(11), 450u);
    EXPECT_EQ(m_known.GetElementsCount(), 450u);
}

TEST_F(Eviction, AfterLevelNineTheNextStartsAtSeven) {
    const CRegisterFolder folder;
    m_known.nMaxElements = 1000;
    Insert(50, 5);
    Insert(50, 7);
    Insert(900, 9);
    Evict(false);
    ASSERT_EQ(nLastRemovedLevel, 9);
    Insert(500, 7);
    Insert(500, 9);
    RegisterOptions().m_bRegisterInfoLog = true;
    Evict(false);
    EXPECT_EQ(SweepsIn(CRegisterFolder::Read(folder.LogPath())), (std::vector<int>{7, 6}));
    EXPECT_EQ(CountOf(9), 500u);
    EXPECT_EQ(m_known.GetElementsCount(), 500u);
}

TEST_F(Eviction, StartsAtFiveAfterThreeAndLogsEachStep) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    m_known.nMaxElements = 1000;
    Insert(300, 5);
    Insert(700, 7);
    Evict(false);
    const std::string log = CRegisterFolder::Read(folder.LogPath());
    EXPECT_EQ(SweepsIn(log), (std::vector<int>{3, 5, 4}));
    EXPECT_EQ(log.find("EmptySomeDataWhenRegisterFull started, msg params: 0, 0\n"
                       "\t\t\tElementsIn= 0, DoubtfulElementsIn=0\n"),
              0u);
    for (const std::string text :
         {"TTemporaryChessboardRegister::RemoveNMovers start., msg params: 5, 0\n",
          "TTemporaryChessboardRegister::RemoveNMovers complete., msg params: 5, 0\n",
          "TAggregatedTemporaryChessboardRegister::RemoveNMovers complete., msg params: 4, 0\n",
          "EmptySomeDataWhenRegisterFull complete, msg params: 0, 0\n"})
        EXPECT_NE(log.find(text), std::string::npos) << text;
    EXPECT_EQ(log.find("failed"), std::string::npos);
}

TEST_F(Eviction, TheLastLevelIsTheEnd) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    m_known.nMaxElements = 100;
    Insert(90, 257);
    Insert(10, 255);
    Evict(false);
    EXPECT_EQ(CountOf(257), 90u);
    EXPECT_EQ(m_known.GetElementsCount(), 90u);
    const std::string log = CRegisterFolder::Read(folder.LogPath());
    EXPECT_NE(log.find("!!!! EmptySomeDataWhenRegisterFull failed."), std::string::npos);
    EXPECT_EQ(SweepsIn(log).size(), 1u + 2 * 126u); // 3; then 5 and 4 to 255 and 254
    EXPECT_EQ(nLastRemovedLevel, 255);
}

TEST_F(Eviction, MemoryHasTheLastWord) {
    m_known.nMaxElements = 1000;
    Insert(500, 5);
    Insert(500, 31);
    {
        SleepMs(kThrottleMs + 2);
        const CFailingAllocations failing;
        m_known.EmptySomeDataWhenRegisterFull(false);
    }
    EXPECT_EQ(m_known.GetElementsCount(), 0u); // half of it free was enough by the counter
    EXPECT_EQ(nLastRemovedLevel, 255);
}

// ---- the sweep

TEST_F(Eviction, ASweepTakesDoubtOfTwoPliesLessOnly) {
    Insert(10, 7);
    Doubt(10, 7);
    Doubt(10, 5);
    Doubt(10, 5, 2);
    EXPECT_EQ(m_known.RemoveNMovers(7), 30u);
    EXPECT_EQ(CountOf(7), 10u); // doubtful up to 7
    EXPECT_EQ(m_known.GetDoubtfulCount(), 10u);
    EXPECT_EQ(m_known.GetElementsCount(), 10u);
    EXPECT_EQ(m_known.RemoveNMovers(1), 0u);
}

TEST_F(Eviction, ASweepSparesWhatIsKnownForLonger) {
    m_known.InsertLoaded(9, m_boards[0], true);
    m_known.InsertLoaded(3, m_boards[0], false);
    EXPECT_EQ(m_known.RemoveNMovers(7), 0u);
    EXPECT_EQ(m_known.FindFinal(3, m_boards[0]), 0);
    EXPECT_EQ(m_known.RemoveNMovers(9), 1u);
}

} // namespace
} // namespace quillon::test
