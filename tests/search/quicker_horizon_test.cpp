// The horizon of the short-mate search, rule by rule. Bits are set by hand on the record; lines are played.

#include "search/quicker_horizon.h"

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr std::uint32_t kNeutral = SH_KEYSQUARE; // a heuristic that no rule asks about
constexpr const char* kQueenAndRook = "8/8/4k3/8/8/8/8/K2QR3";
constexpr const char* kRookAndBishop = "8/8/4k3/8/8/8/8/K2BR3";

/// What the rules read. The defaults make none of them apply.
struct TState {
    const char* m_pPlacement = kQueenAndRook;
    int m_nPlies = 25;
    std::uint32_t m_nHeuristics = kNeutral;
    std::uint16_t m_wKingState = 0;
    std::uint16_t m_wBlackState = 0; // added to what the position has
    int m_nPlayed = 0;               // plies played before
    int m_nLevel = 1;
    int m_nCap = 0;
    int m_nSetting = -1;
    int m_nLineHorizon = 0;
};

void Apply(const TState& state, CSearchedPosition& line) {
    TChessboard& p = line.Now();
    p.m_nHeuristics = state.m_nHeuristics;
    p.m_wKingState |= state.m_wKingState;
    p.m_wBlackState |= state.m_wBlackState;
    p.m_nInitialMoves = static_cast<std::uint16_t>(p.m_nInitialMoves + state.m_nPlayed);
    line.Context().m_nQuickerLevel = static_cast<std::uint8_t>(state.m_nLevel);
    line.Context().m_nQuickerCap = static_cast<std::uint16_t>(state.m_nCap);
    line.Context().m_nLineHorizon = static_cast<std::uint16_t>(state.m_nLineHorizon);
    line.Analysis().m_shLookForQuickerMateDepth = static_cast<std::int16_t>(state.m_nSetting);
}

int Horizon(const TState& state) {
    CSearchedPosition line(state.m_pPlacement, state.m_nPlies, 1);
    Apply(state, line);
    return QuickerHorizon(line.Now());
}

/// The horizon at the end of a line that is played from a root with `state.m_nPlies` plies.
int HorizonAfter(const char* moves, const TState& state) {
    CSearchedPosition line(state.m_pPlacement, state.m_nPlies, 1);
    line.Play(moves);
    Apply(state, line);
    return QuickerHorizon(line.Now());
}

// ---- where it starts

TEST(QuickerHorizon, StartsOnePlyBelowTheStipulationAtMost13) {
    for (const int plies : {1, 3, 5, 7, 9, 11, 13})
        EXPECT_EQ(Horizon({.m_nPlies = plies}), plies - 1) << plies;
    for (const int plies : {19, 21, 25, 99, 597})
        EXPECT_EQ(Horizon({.m_nPlies = plies}), 13) << plies;
}

TEST(QuickerHorizon, WithThreePliesOnlyTheTrialOfOnePlyIsLeft) {
    EXPECT_EQ(Horizon({.m_nPlies = 3}), 2);
    EXPECT_EQ(Horizon({.m_nPlies = 3, .m_nHeuristics = 0}), 2);
}

TEST(QuickerHorizon, ASweepingRookIsWorthTheFullLength) {
    for (const int plies : {3, 9, 11})
        EXPECT_EQ(Horizon({.m_pPlacement = kRookAndBishop, .m_nPlies = plies, .m_nHeuristics = SH_SWEEPINGWHITEROOK}),
                  plies);
    for (const int plies : {13, 15, 25})
        EXPECT_EQ(Horizon({.m_pPlacement = kRookAndBishop, .m_nPlies = plies, .m_nHeuristics = SH_SWEEPINGWHITEROOK}),
                  13);
}

TEST(QuickerHorizon, ASweepingRookNeedsAKingOffItsFirstRankAndTheOutermostSearch) {
    TState state{.m_pPlacement = kRookAndBishop, .m_nPlies = 9, .m_nHeuristics = SH_SWEEPINGWHITEROOK};
    state.m_nLevel = 2;
    EXPECT_EQ(Horizon(state), 8);
    state.m_nLevel = 1;
    state.m_pPlacement = "8/8/8/3R4/8/8/8/K2B3k"; // the black king on rank 1
    EXPECT_EQ(Horizon(state), 8);
}

// ---- cap at 11

TEST(QuickerHorizon, IsCappedInQuickPositionsAndWithoutHeuristics) {
    EXPECT_EQ(Horizon({.m_wKingState = 0x20}), 11);
    EXPECT_EQ(Horizon({.m_nHeuristics = 0}), 11);
    EXPECT_EQ(Horizon({.m_nPlies = 9, .m_nHeuristics = 0}), 8) << "it is a cap, no floor";
}

TEST(QuickerHorizon, IsCappedWithTwoQueensAndThreeMoreFigures) {
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/8/8/K1QQRBN1"}), 11);
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/8/8/K1QQRB2"}), 13);
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/8/8/KRBQRBN1"}), 13) << "one queen";
}

TEST(QuickerHorizon, IsCappedDeepInTheLineWithoutAQueen) {
    EXPECT_EQ(Horizon({.m_pPlacement = kRookAndBishop, .m_nPlayed = 5}), 11);
    EXPECT_EQ(Horizon({.m_pPlacement = kRookAndBishop, .m_nPlayed = 4}), 13);
    EXPECT_EQ(Horizon({.m_nPlayed = 5}), 13) << "a queen and a rook";
    for (const std::uint32_t edge :
         {SH_KEEPKINGONTHEEDGE, SH_KEEPKINGWITHINEXTEDGE, SH_DONTLETFIGUREUNBLOCK, SH_ASSERTBLACKKINGSURROUNDED})
        EXPECT_EQ(Horizon({.m_pPlacement = kRookAndBishop, .m_nHeuristics = edge, .m_nPlayed = 5}), 13) << edge;
}

TEST(QuickerHorizon, IsCappedDeepInTheLineWithALoneQueenAndTheKingsApart) {
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/2Q5/8/1K6", .m_nPlayed = 6}), 11);
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/2KQ4/8/8", .m_nPlayed = 6}), 13) << "three steps apart";
}

// ---- play of one colour, zugzwang

TEST(QuickerHorizon, IsHalvedInPlayOfOneColour) {
    const struct { int m_nPlies, m_nExpected; } rows[] = {{25, 7}, {13, 7}, {11, 6}, {9, 7}, {7, 6}, {5, 3}, {3, 2}};
    for (const auto& row : rows)
        EXPECT_EQ(Horizon({.m_nPlies = row.m_nPlies, .m_nHeuristics = SH_ONECOLORPLAYPOSSIBLE}), row.m_nExpected)
            << row.m_nPlies;
}

TEST(QuickerHorizon, IsHalvedForOtherHeuristicsOnlyInPlayAgainstTheBareKing) {
    for (const std::uint32_t heuristics : {SH_SWEEPINGWHITEROOK, SH_ZUGZWANG}) {
        EXPECT_EQ(Horizon({.m_nHeuristics = heuristics, .m_wKingState = 0x80}), 7);
        EXPECT_GE(Horizon({.m_nHeuristics = heuristics}), 11);
    }
    EXPECT_EQ(Horizon({.m_wKingState = 0x80}), 13) << "the bit alone halves nothing";
}

TEST(QuickerHorizon, IsCappedUnderZugzwangWithoutPlayOnTheEdge) {
    EXPECT_EQ(Horizon({.m_nHeuristics = SH_ZUGZWANG}), 11);
    for (const std::uint32_t edge : {SH_KEEPKINGONTHEEDGE, SH_KEEPKINGWITHINEXTEDGE, SH_ASSERTBLACKKINGSURROUNDED})
        EXPECT_EQ(Horizon({.m_nHeuristics = SH_ZUGZWANG | edge}), 13) << edge;
}

TEST(QuickerHorizon, IsCappedInACappedLine) { EXPECT_EQ(Horizon({.m_wBlackState = 0x200}), 11); }

// ---- the context's cap

TEST(QuickerHorizon, TakesTheContextsCapWhereThePositionSaysSo) {
    for (const int cap : {0, 1, 5, 9})
        EXPECT_EQ(Horizon({.m_wBlackState = 4, .m_nCap = cap}), cap);
    EXPECT_EQ(Horizon({.m_wBlackState = 4, .m_nCap = 15}), 13);
    EXPECT_EQ(Horizon({.m_nCap = 5}), 13) << "without the bit";
    EXPECT_EQ(Horizon({.m_nHeuristics = SH_ZUGZWANG, .m_wBlackState = 4, .m_nCap = 5}), 11) << "under zugzwang";
}

// ---- queens

TEST(QuickerHorizon, IsNineWithThreeQueensOnAThinBoard) {
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/8/8/K1QQQ3"}), 9);
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/8/8/K1QQQ3", .m_nPlies = 9}), 8);
    EXPECT_EQ(Horizon({.m_pPlacement = "8/8/4k3/8/8/8/8/K1QQ4"}), 13);
    EXPECT_EQ(Horizon({.m_pPlacement = "8/pppp2pp/4k3/8/8/8/PPPP4/K1QQQ3"}), 9) << "fifteen men";
    EXPECT_EQ(Horizon({.m_pPlacement = "8/pppp2pp/4k3/8/8/8/PPPP3P/K1QQQ3"}), 13) << "sixteen men";
}

struct TWonQueen {
    const char* m_pName;
    const char* m_pPlacement;
    const char* m_pMoves;
    int m_nPlies; // of the root
    std::uint32_t m_nHeuristics;
    int m_nExpected;
};

/// White has just taken Black's only queen: where the mate is near, six plies more.
TEST(QuickerHorizon, IsLongerAfterAWonQueen) {
    constexpr std::uint32_t kEdge = SH_KEEPKINGONTHEEDGE;
    for (const TWonQueen& row : {
             TWonQueen{"won", "3q3k/8/8/8/8/8/8/K2QR3", "Ka1-b1 Qd8-d4 Qd1:d4 Kh8-h7", 29, kEdge, 19},
             {"a long way off is not near", "3q3k/8/8/8/8/8/8/K2QR3", "Ka1-b1 Qd8-d4 Qd1:d4 Kh8-h7", 27, kEdge, 13},
             {"no edge heuristic", "3q3k/8/8/8/8/8/8/K2QR3", "Ka1-b1 Qd8-d4 Qd1:d4 Kh8-h7", 29, kNeutral, 13},
             {"only two plies played", "3q3k/8/8/8/8/8/8/K2QR3", "Qd1:d8 Kh8-h7", 29, kEdge, 13},
             {"another queen left", "q2q3k/8/8/8/8/8/8/1K1QR3", "Kb1-c1 Qd8-d4 Qd1:d4 Kh8-h7", 29, kEdge, 13},
             {"a rook was won", "3r3k/8/8/8/8/8/8/K2QR3", "Ka1-b1 Rd8-d4 Qd1:d4 Kh8-h7", 29, kEdge, 13},
             {"no queen of White's own", "3q3k/8/8/8/8/8/8/K2RR3", "Ka1-b1 Qd8-d4 Rd1:d4 Kh8-h7", 29, kEdge, 13},
             {"a queen alone", "3q3k/8/8/8/8/8/8/K2Q4", "Ka1-b1 Qd8-d4 Qd1:d4 Kh8-h7", 29, kEdge, 13},
             {"four figures", "3q3k/8/8/8/8/8/N7/K2QRN2", "Ka1-b1 Qd8-d4 Qd1:d4 Kh8-h7", 29, kEdge, 13},
             {"not the move before", "3q3k/8/8/8/8/8/8/K2QR3", "Qd1:d8 Kh8-h7 Ka1-b1 Kh7-h6", 29, kEdge, 13},
             {"a promoted queen", "7k/8/8/8/8/8/3p4/K3R2Q", "Ka1-b1 d2-d1Q Re1:d1 Kh8-g8", 29, kEdge, 13},
             {"a promoted queen that has moved", "6k1/8/8/8/8/8/3p4/K3R2Q",
              "Ka1-b2 d2-d1Q Kb2-a3 Qd1-d4 Qh1-h2 Qd4-e5 Re1:e5 Kg8-g7", 33, kEdge, 13},
             {"a queen that has moved", "3q2k1/8/8/8/8/8/8/K3R2Q",
              "Ka1-b2 Qd8-d1 Kb2-a3 Qd1-d4 Qh1-h2 Qd4-e5 Re1:e5 Kg8-g7", 33, kEdge, 19},
         }) {
        const TState state{
            .m_pPlacement = row.m_pPlacement, .m_nPlies = row.m_nPlies, .m_nHeuristics = row.m_nHeuristics};
        EXPECT_EQ(HorizonAfter(row.m_pMoves, state), row.m_nExpected) << row.m_pName;
    }
}

TEST(QuickerHorizon, IsNotLongerThanTheStipulationAfterAWonQueen) {
    for (const int plies : {13, 15, 17}) {
        const TState state{.m_pPlacement = "3q3k/8/8/8/8/8/8/K2QR3",
                           .m_nPlies = plies,
                           .m_nHeuristics = SH_KEEPKINGONTHEEDGE,
                           .m_wBlackState = 4,
                           .m_nCap = 5};
        EXPECT_EQ(HorizonAfter("Ka1-b1 Qd8-d4 Qd1:d4 Kh8-h7", state), std::min(11, plies - 4)) << plies;
    }
}

TEST(QuickerHorizon, IsLongerAfterAPromotionWithAnotherPawnAboutToPromote) {
    const struct {
        const char* m_pName;
        const char* m_pPlacement;
        const char* m_pMoves;
        int m_nExpected;
    } rows[] = {
        {"another pawn on rank 7", "8/P6P/4k3/8/8/8/8/K7", "a7-a8Q Ke6-d6", 15},
        {"another pawn on rank 6", "8/P7/4k2P/8/8/8/8/K7", "a7-a8Q Ke6-d6", 13},
        {"promotion to a rook", "8/P6P/4k3/8/8/8/8/K7", "a7-a8R Ke6-d6", 13},
        {"a move earlier", "8/P6P/4k3/8/8/8/8/K7", "a7-a8Q Ke6-d6 Ka1-a2 Kd6-e6", 13},
    };
    for (const auto& row : rows)
        EXPECT_EQ(HorizonAfter(row.m_pMoves, {.m_pPlacement = row.m_pPlacement, .m_nPlies = 29}), row.m_nExpected)
            << row.m_pName;
}

TEST(QuickerHorizon, IsShorterWithAQueenWhenHardlyMoreIsLeft) {
    for (const int plies : {15, 17}) {
        EXPECT_EQ(Horizon({.m_nPlies = plies}), 11) << plies;
        EXPECT_EQ(Horizon({.m_pPlacement = kRookAndBishop, .m_nPlies = plies}), 13) << plies;
        for (const std::uint32_t other : {SH_KEEPKINGONTHEEDGE, SH_KEEPKINGWITHINEXTEDGE, SH_DONTLETFIGUREUNBLOCK,
                                          SH_ASSERTBLACKKINGSURROUNDED, SH_FINDFORCEDMATE, SH_SEASNAKE})
            EXPECT_EQ(Horizon({.m_nPlies = plies, .m_nHeuristics = other}), 13) << plies << ' ' << other;
    }
    EXPECT_EQ(Horizon({.m_nPlies = 19}), 13);
}

// ---- settings and bounds

TEST(QuickerHorizon, ASettingReplacesEveryRule) {
    for (const int setting : {0, 1, 3, 7, 31}) {
        EXPECT_EQ(Horizon({.m_nPlies = 99, .m_nSetting = setting}), setting);
        EXPECT_EQ(Horizon({.m_nPlies = 99,
                           .m_nHeuristics = SH_ZUGZWANG | SH_ONECOLORPLAYPOSSIBLE,
                           .m_wKingState = 0xa0,
                           .m_wBlackState = 0x204,
                           .m_nCap = 1,
                           .m_nSetting = setting}),
                  setting);
    }
    EXPECT_EQ(Horizon({.m_nPlies = 9, .m_nSetting = 31}), 9) << "never above the stipulation";
}

TEST(QuickerHorizon, AnAttemptAtALongLineLooksLessDeep) {
    EXPECT_EQ(Horizon({.m_nLineHorizon = 7}), 7);
    EXPECT_EQ(Horizon({.m_nPlies = 5, .m_nLineHorizon = 7}), 4);
    EXPECT_EQ(Horizon({.m_nSetting = 13, .m_nLineHorizon = 7}), 7);
}

TEST(QuickerHorizon, LiesBetweenZeroAndTheStipulationWhateverIsSet) {
    std::mt19937_64 rng(2207);
    for (int i = 0; i < Samples(4000); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 12);
        const int plies = 1 + 2 * reference::DrawInt(rng, 25);
        TState state{.m_pPlacement = placement.c_str(), .m_nPlies = plies};
        state.m_nHeuristics = static_cast<std::uint32_t>(rng() & rng());
        state.m_wKingState = static_cast<std::uint16_t>(rng() & rng());
        state.m_wBlackState = static_cast<std::uint16_t>(rng() & 0x206);
        state.m_nPlayed = 2 * reference::DrawInt(rng, 6);
        state.m_nLevel = 1 + reference::DrawInt(rng, 3);
        state.m_nCap = reference::DrawInt(rng, 14);
        const int horizon = Horizon(state);
        if (horizon != kQuickerSearchRefused) {
            EXPECT_TRUE(horizon >= 0 && horizon <= plies) << placement << ' ' << plies << ": " << horizon;
        }
        EXPECT_LE(horizon, 19) << placement;
    }
}

} // namespace
} // namespace quillon::test
