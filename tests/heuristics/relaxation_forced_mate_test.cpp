// The cycle of FindForcedMate: the depth codes one after another, and the clock.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "heuristics/planned_position.h"
#include "heuristics/relaxation_clock.h"
#include "platform/sleep.h"
#include "platform/temporary_folder.h"

namespace quillon::test {
namespace {

constexpr const char* kRook = "8/8/8/3k4/8/8/8/K6R";
constexpr const char* kQueen = "8/8/8/3k4/8/8/8/K6Q";
constexpr const char* kTwoRooks = "8/8/8/3k4/8/8/8/K5RR";     // enough for the clock to be asked
constexpr const char* kShutQueen = "8/8/8/3k4/8/8/PP5R/QK5R"; // a queen without a check
constexpr std::uint32_t kForced = SH_FINDFORCEDMATE | SH_AREKINGSNEAR;
constexpr std::uint64_t kStart = 50000;

class CCycle {
  public:
    CCycle(const char* placement, int start, int allowance, int nPlies = kPlannedPlies)
        : m_plan(placement, kForced, nPlies) {
        Parameters().m_nFfmDepth = Parameters().m_nFfmStartDepth = static_cast<std::uint8_t>(start);
        Parameters().m_nFfmRelaxations = static_cast<std::uint8_t>(allowance);
        m_plan.Analysis().m_nStartTicks = kStart;
        AllStamps(5000);
    }
    [[nodiscard]] THeuristicParameters& Parameters() { return m_plan.Parameters(); }
    [[nodiscard]] CPlannedPosition& Plan() { return m_plan; }

    void Stamp(int step, std::uint64_t ms) {
        m_plan.Analysis().m_relaxationTicks[static_cast<std::size_t>(step)] = kStart + ms;
    }
    void AllStamps(std::uint64_t ms) {
        for (int step = 1; step < 20; ++step)
            Stamp(step, ms);
    }

    /// Depth codes of the passes up to the first without FindForcedMate; those that the clock gave are negative.
    [[nodiscard]] std::vector<int> Codes() {
        std::vector<int> codes{Parameters().m_nFfmDepth};
        for (int i = 0; i < 20; ++i) {
            const int result = m_plan.Step();
            if ((m_plan.Mask() & SH_FINDFORCEDMATE) == 0)
                break;
            EXPECT_NE(result, kNothingLeftToRelax);
            codes.push_back(result < 0 ? -Parameters().m_nFfmDepth : Parameters().m_nFfmDepth);
        }
        return codes;
    }

  private:
    CPlannedPosition m_plan;
};

using TCodes = std::vector<int>;

TEST(ForcedMateCycle, GoesAsDeepAsIsAllowed) {
    CCycle cycle(kQueen, 2, 2);
    EXPECT_EQ(cycle.Codes(), (TCodes{2, 3, 4}));
    EXPECT_EQ(cycle.Plan().Mask(), SH_AREKINGSNEAR) << "the next pass runs without it";
    EXPECT_EQ(CCycle(kQueen, 5, 0).Codes(), TCodes{5});
    EXPECT_EQ(CCycle(kQueen, 7, 9).Codes(), (TCodes{7, 8, 9})) << "there is no deeper code";
}

TEST(ForcedMateCycle, SkipsACodeAgainstALoneQueen) {
    EXPECT_EQ(CCycle("3q4/8/8/3k4/8/8/8/K6Q", 2, 3).Codes(), (TCodes{2, 3, 5}));
    EXPECT_EQ(CCycle("3qr3/8/8/3k4/8/8/8/K6Q", 2, 3).Codes(), (TCodes{2, 3, 4, 5})) << "with a rook it is not";
    EXPECT_EQ(CCycle("3q4/8/8/3k4/8/8/8/K6Q", 4, 0).Codes(), TCodes{4}) << "only a step is skipped";
}

TEST(ForcedMateCycle, WidensMateInTwoWithoutAQueen) {
    EXPECT_EQ(CCycle(kRook, 5, 0).Codes(), TCodes{5});
    EXPECT_EQ(CCycle(kRook, 5, 0, 21).Codes(), (TCodes{5, 6})) << "a short problem";
    EXPECT_EQ(CCycle(kRook, 5, 0, 23).Codes(), TCodes{5});
    EXPECT_EQ(CCycle(kQueen, 5, 0, 21).Codes(), TCodes{5}) << "a queen threatens enough";
    EXPECT_EQ(CCycle("8/8/8/3k3q/8/8/8/K6R", 5, 0).Codes(), (TCodes{5, 6})) << "Black parries by checks";
    EXPECT_EQ(CCycle(kRook, 4, 0, 21).Codes(), TCodes{4}) << "only from #2";
}

TEST(ForcedMateCycle, RunsTwice) {
    CCycle cycle(kQueen, 2, 2);
    cycle.Parameters().m_bFfmCycleTwice = true;
    cycle.Parameters().m_nFfmCycleRelaxations = 1;
    EXPECT_EQ(cycle.Codes(), (TCodes{2, 3, 2, 3, 4}));
    EXPECT_FALSE(cycle.Parameters().m_bFfmCycleTwice);
    EXPECT_EQ(cycle.Parameters().m_nFfmWithOther, 0) << "the second time without the others";
    CCycle rook(kRook, 4, 1, 21);
    rook.Parameters().m_bFfmCycleTwice = true;
    rook.Parameters().m_nFfmCycleRelaxations = 2;
    EXPECT_EQ(rook.Codes(), (TCodes{4, 5, 6, 4, 5, 6}));
}

TEST(ForcedMateCycle, APreliminaryPassComesFirst) {
    CCycle cycle(kQueen, 2, 1);
    cycle.Parameters().m_bFfmPreliminary = true;
    cycle.Plan().Root().m_nHeuristics = kForced | SH_KEEPKINGONTHEEDGE;
    BeginPassPlan(cycle.Plan().Root());
    EXPECT_EQ(cycle.Plan().Mask(), kForced | SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_EQ(cycle.Plan().Step(), kRelaxed);
    EXPECT_EQ(cycle.Plan().Mask(), kForced | SH_KEEPKINGONTHEEDGE) << "the true set follows";
    EXPECT_FALSE(cycle.Parameters().m_bFfmPreliminary);
    EXPECT_EQ(cycle.Parameters().m_nFfmDepth, 2) << "at the same depth";
    EXPECT_EQ(cycle.Plan().Step(), kRelaxed);
    EXPECT_EQ(cycle.Parameters().m_nFfmDepth, 3);
}

TEST(ForcedMateCycle, MayBeReplacedBesideTheOthers) {
    const auto after = [](const char* placement, std::uint32_t others, int withOther) {
        CCycle cycle(placement, 2, 0);
        cycle.Plan().Root().m_nHeuristics = SH_FINDFORCEDMATE | others;
        cycle.Parameters().m_nFfmWithOther = static_cast<std::int8_t>(withOther);
        EXPECT_EQ(cycle.Plan().Step(), kRelaxed);
        return cycle.Plan().Mask();
    };
    constexpr const char* kNarrow = "k7/8/8/8/8/8/1R5R/K7";
    EXPECT_EQ(after(kNarrow, SH_AREKINGSNEAR, 1), SH_AREKINGSNEAR | SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(after(kNarrow, SH_AREKINGSNEAR, -1), SH_AREKINGSNEAR) << "only beside the others";
    EXPECT_EQ(after(kNarrow, SH_KEEPKINGNEARCORNER, 1), SH_KEEPKINGNEARCORNER) << "he is confined already";
    EXPECT_EQ(after("k7/8/8/8/8/8/8/K6R", SH_AREKINGSNEAR, 1), SH_AREKINGSNEAR | SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_EQ(after(kRook, SH_AREKINGSNEAR, 1), SH_AREKINGSNEAR) << "nothing would hold him";
}

// ---- the clock

TEST(ForcedMateCycle, QuickPassesEarnDeeperOnes) {
    CCycle cycle(kTwoRooks, 2, 0);
    cycle.AllStamps(799);
    EXPECT_EQ(cycle.Codes(), (TCodes{2, -4, -6})) << "the wider form of a threat at once, and no further";
    CCycle three(kTwoRooks, 3, 0);
    three.AllStamps(0);
    EXPECT_EQ(three.Codes(), (TCodes{3, -4, -6}));
    CCycle five(kTwoRooks, 5, 0, 41);
    five.AllStamps(0);
    EXPECT_EQ(five.Codes(), (TCodes{5, -6}));
}

TEST(ForcedMateCycle, TheLimitIsASecond) {
    for (const std::uint64_t ms : {0u, 799u, 800u, 999u, 1000u, 1001u, 1200u, 1201u}) {
        CCycle cycle(kTwoRooks, 2, 0);
        cycle.Stamp(1, ms);
        EXPECT_EQ(cycle.Codes(), ms < 1000 ? (TCodes{2, -4}) : TCodes{2}) << ms;
    }
}

TEST(ForcedMateCycle, AClockStepWithNothingButItIsNegativeToo) {
    CCycle cycle(kTwoRooks, 2, 0);
    cycle.Plan().Root().m_nHeuristics = SH_FINDFORCEDMATE;
    cycle.Stamp(1, 10);
    EXPECT_EQ(cycle.Plan().Step(), kRelaxedByClock);
    EXPECT_LT(kRelaxedByClock, 0);
}

TEST(ForcedMateCycle, TheClockIsNotAskedEverywhere) {
    const auto codes = [](const char* placement, int start) {
        CCycle cycle(placement, start, 0);
        cycle.AllStamps(0);
        return cycle.Codes();
    };
    EXPECT_EQ(codes(kRook, 3), TCodes{3}) << "too few figures";
    EXPECT_EQ(codes("8/8/8/3k4/8/8/8/K5QR", 3), TCodes{3}) << "two with a queen";
    EXPECT_EQ(codes(kShutQueen, 3), (TCodes{3, -4, -6}));
    EXPECT_EQ(codes(kShutQueen, 2), TCodes{2}) << "checks alone with a queen";
    EXPECT_EQ(codes("8/8/8/3k4/8/8/8/KQ4RR", 3), TCodes{3}) << "the queen has a check";
    EXPECT_EQ(codes("4r3/8/8/3k4/3N4/8/8/K6N", 3), TCodes{3}) << "the king takes and is ahead";
    EXPECT_EQ(codes("k7/8/8/8/8/8/K7/1R1BNN2", 3), TCodes{3}) << "a corner full of stalemates";
    EXPECT_EQ(codes("k7/7p/8/8/8/8/K7/1R1BNN2", 3), (TCodes{3, -4, -6})) << "there is a pawn to move";
}

TEST(RelaxationClock, TheFirstToReachAStepStampsIt) {
    TAnalysis analysis;
    analysis.m_nStartTicks = 100;
    analysis.m_relaxationTicks[3] = 350;
    EXPECT_EQ(MsUntilRelaxation(analysis, 3), 250);
    const std::int64_t stamped = MsUntilRelaxation(analysis, 4);
    const std::uint64_t written = analysis.m_relaxationTicks[4];
    EXPECT_NE(written, 0u);
    SleepMs(5);
    EXPECT_EQ(MsUntilRelaxation(analysis, 4), stamped) << "later ones read the stamp";
    EXPECT_EQ(analysis.m_relaxationTicks[4], written);
    EXPECT_EQ(analysis.m_nRelaxationLock, 0) << "the lock is given back";
    ClearRelaxationStamps(analysis);
    EXPECT_EQ(analysis.m_relaxationTicks[3], 0u);
    EXPECT_EQ(analysis.m_relaxationTicks[4], 0u);
}

TEST(RelaxationClock, AllThreadsReadOneTime) {
    TAnalysis analysis;
    std::vector<std::vector<std::int64_t>> told(4);
    std::vector<std::thread> threads;
    for (std::vector<std::int64_t>& mine : told)
        threads.emplace_back([&] {
            for (int step = 0; step < 256; ++step)
                mine.push_back(MsUntilRelaxation(analysis, static_cast<std::uint8_t>(step)));
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<std::int64_t>& mine : told)
        EXPECT_EQ(mine, told.front());
    EXPECT_EQ(analysis.m_nRelaxationLock, 0);
}

// ---- the log

/// A working folder of its own.
class RelaxationLog : public testing::Test {
  protected:
    RelaxationLog() { std::filesystem::current_path(m_folder); }
    ~RelaxationLog() override { std::filesystem::current_path(m_before); }
    [[nodiscard]] std::string Text() const {
        std::ostringstream text;
        text << std::ifstream(m_folder / "TryRelaxSpecialHeuristics.log", std::ios::binary).rdbuf();
        return text.str();
    }

    const std::filesystem::path m_before = std::filesystem::current_path();
    const CTemporaryFolder m_temporary; // of this test alone: others run beside it
    const std::filesystem::path m_folder = m_temporary.Path();
};

TEST_F(RelaxationLog, TellsTheSetBeforeAndAfterEachStep) {
    CPlannedPosition plan(kRook, SH_ZUGZWANG | SH_KEEPKINGNEARCORNER);
    plan.Parameters().m_nKingNearCorner = 3;
    (void)plan.Step();
    EXPECT_FALSE(std::filesystem::exists(m_folder / "TryRelaxSpecialHeuristics.log")) << "only if asked for";
    plan.Analysis().m_bTryRelaxSpecialHeuristicsLog = true;
    (void)plan.Step();
    EXPECT_EQ(Text(), "1b Heur=67108864 HeurParams=12 SH_KEEPKINGNEARCORNER(3S)\n1c Heur=0 HeurParams=0 \n");
    CPlannedPosition high(kRook, SH_ZUGZWANG | SH_AREKINGSNEAR);
    high.Analysis().m_bTryRelaxSpecialHeuristicsLog = true;
    (void)high.Step();
    EXPECT_NE(Text().find("1a Heur=-2147483647 HeurParams="), std::string::npos) << "appended, a signed number";
}

TEST_F(RelaxationLog, TellsADecisionNearTheLimit) {
    for (const std::uint64_t ms : {799u, 800u, 999u, 1000u, 1200u, 1201u}) {
        std::filesystem::remove(m_folder / "TryRelaxSpecialHeuristics.log");
        CCycle cycle(kTwoRooks, 2, 0);
        cycle.Stamp(1, ms);
        cycle.Plan().Analysis().m_bTryRelaxSpecialHeuristicsLog = true;
        (void)cycle.Plan().Step();
        const std::string line = "Time dependent relaxation near the limit: calcTime=" + std::to_string(ms) +
                                 " msec.; limit=1000 msec. " +
                                 (ms < 1000 ? "(additional relaxation accepted)" : "(additional relaxation refused)");
        const bool bNear = ms >= 800 && ms <= 1200;
        EXPECT_EQ(Text().find(line) != std::string::npos, bNear) << ms;
        EXPECT_EQ(Text().find("near the limit") != std::string::npos, bNear) << ms;
    }
}

TEST_F(RelaxationLog, AFolderThatCannotBeWrittenEndsNothing) {
    std::filesystem::create_directories(m_folder / "TryRelaxSpecialHeuristics.log"); // in the way of the file
    CPlannedPosition plan(kRook, SH_ZUGZWANG | SH_AREKINGSNEAR);
    plan.Analysis().m_bTryRelaxSpecialHeuristicsLog = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR);
}

} // namespace
} // namespace quillon::test
