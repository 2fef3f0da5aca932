// The forcing moves of each depth code, stage by stage.

#include "heuristics/forcing_moves.h"

#include <algorithm>
#include <cstring>
#include <set>

#include <gtest/gtest.h>

#include "core/attacks.h"
#include "core/generation.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

using TTexts = std::set<std::string>;

/// The forcing moves of a position, as texts.
TTexts Forcing(CSearchedPosition& line, int nCode) {
    line.Context().m_nFfmDepth = static_cast<std::uint8_t>(nCode);
    TMove list[kMaxMoves];
    const int count = GenerateForcingMoves(line.Now(), list);
    TTexts texts;
    for (int i = 0; i < count; ++i)
        texts.insert(WriteMove(list[i], line.Now()));
    EXPECT_EQ(texts.size(), static_cast<std::size_t>(count)) << "a move is listed twice";
    return texts;
}

TTexts Forcing(const std::string& placement, int nCode, int nPlies = 5) {
    CSearchedPosition line(placement, nPlies, 1);
    return Forcing(line, nCode);
}

// The rook checks on a8; the king's steps to g6 and f7 threaten a mate on the move; Ra1-g1 leaves the black king h7.
constexpr const char* kRookMates = "7k/8/5K2/8/8/8/8/R7";

TEST(ForcingMoves, ChecksAloneInTheFirstCodes) {
    const TTexts checks{"Ra1-a8", "Ra1-h1"};
    EXPECT_EQ(Forcing(kRookMates, 2), checks);
    EXPECT_EQ(Forcing(kRookMates, 1), checks);
    EXPECT_EQ(Forcing(kRookMates, 0), checks);
}

TEST(ForcingMoves, AThreatOfMateOnTheMoveCountsFromCodeThree) {
    EXPECT_EQ(Forcing(kRookMates, 3), (TTexts{"Ra1-a8", "Ra1-h1", "Kf6-f7", "Kf6-g6"}));
}

TEST(ForcingMoves, ShuttingTheKingInCountsInTheWidenedCode) {
    EXPECT_FALSE(Forcing(kRookMates, 3).contains("Ra1-g1"));
    EXPECT_TRUE(Forcing(kRookMates, 4).contains("Ra1-g1"));
    EXPECT_FALSE(Forcing(kRookMates, 4).contains("Ra1-b1")); // it leaves both squares
}

TEST(ForcingMoves, LongerThreatsCountInHigherCodes) {
    EXPECT_TRUE(Forcing(kRookMates, 5).contains("Ra1-b1")); // then Kf6-f7 and mate on the h-file
    EXPECT_FALSE(Forcing(kRookMates, 3).contains("Ra1-b1"));
    EXPECT_FALSE(Forcing(kRookMates, 5, 13).contains("Kf6-e5"));
    EXPECT_TRUE(Forcing(kRookMates, 7, 13).contains("Kf6-e5"));
}

TEST(ForcingMoves, AThreatLongerThanThePliesLeftIsNone) {
    EXPECT_FALSE(Forcing(kRookMates, 7, 5).contains("Kf6-e5"));
    EXPECT_TRUE(Forcing(kRookMates, 9, 3).empty()); // no time for a threat, and its checks belong to it
}

TEST(ForcingMoves, PawnsAdvanceAgainstAKingWithoutRoom) {
    const TTexts narrow = Forcing("k7/8/1K6/8/8/8/6P1/8", 2); // b8 is left to the king
    EXPECT_TRUE(narrow.contains("g2-g3") && narrow.contains("g2-g4"));
    const TTexts wide = Forcing("8/8/3k4/8/8/8/6P1/6K1", 2);
    EXPECT_TRUE(wide.empty());
}

TEST(ForcingMoves, APinnedPawnStaysWhereItIs) {
    EXPECT_FALSE(Forcing("k7/8/8/1Q6/8/8/q5PK/8", 2).contains("g2-g3"));
    EXPECT_TRUE(Forcing("k7/8/8/1Q6/8/q7/6PK/8", 2).contains("g2-g4"));
}

TEST(ForcingMoves, InCheckAllRepliesAreForcing) {
    CSearchedPosition line("7k/8/8/8/8/8/2r5/2R1K3", 7, 1);
    line.Play("Rc1-b1 Rc2-c1");
    TMove list[kMaxMoves];
    const auto all = static_cast<std::size_t>(GenerateWhiteMoves(line.Now(), list));
    for (int code = 2; code <= 9; ++code)
        EXPECT_EQ(Forcing(line, code).size(), all) << code;
}

TEST(ForcingMoves, ALoneQueenIsHunted) {
    const char* const queen = "k7/8/8/3q4/8/8/5R2/2K5";
    const TTexts moves = Forcing(queen, 2);
    EXPECT_TRUE(moves.contains("Rf2-d2"));                                   // protected by the king
    EXPECT_FALSE(moves.contains("Rf2-f5"));                                  // lost for nothing
    EXPECT_FALSE(moves.contains("Kc1-b1"));                                  // attacks nothing
    EXPECT_TRUE(Forcing("k7/8/8/3q1R2/8/8/8/2K5", 2).contains("Rf5:d5"));    // takes it
    EXPECT_FALSE(Forcing("k6r/8/8/3q4/8/8/5R2/2K5", 2).contains("Rf2-d2"));  // a rook covers for her
    EXPECT_FALSE(Forcing("k7/8/8/3q4/3q4/8/5R2/2K5", 2).contains("Rf2-d2")); // there are two
}

TEST(ForcingMoves, TwoQueensTakeQueens) {
    const char* const two = "k6r/6Q1/8/2q5/8/8/5Q2/1K6";
    EXPECT_TRUE(Forcing(two, 2).contains("Qf2:c5"));
    EXPECT_FALSE(Forcing("k6r/8/8/2q5/8/8/5Q2/1K6", 2).contains("Qf2:c5"));
}

TEST(ForcingMoves, PromotionsCountWhereWhiteHasLittleElse) {
    const TTexts all{"g7-g8Q", "g7-g8R", "g7-g8B", "g7-g8N", "g7:h8Q", "g7:h8R", "g7:h8B", "g7:h8N"};
    EXPECT_EQ(Forcing("7n/k5P1/8/8/8/8/8/K7", 2), all);
    EXPECT_TRUE(Forcing("7n/6P1/8/8/2k5/8/8/KQBN4", 2).contains("g7-g8N"));
    EXPECT_FALSE(Forcing("7n/6P1/8/8/2k5/8/8/KQBNN3", 2).contains("g7-g8N")); // three figures beside the queen
    EXPECT_FALSE(Forcing("Q6n/6P1/8/8/2k5/8/8/KQ6", 2).contains("g7-g8N"));   // two queens
}

TEST(ForcingMoves, CapturesNextToTheKingAreAddedOnDemand) {
    CSearchedPosition line("8/4p3/3kn3/8/5N2/8/8/K7", 5, 1);
    for (int code = 2; code <= 9; ++code) {
        line.Context().m_bFfmAddCaptures = false;
        EXPECT_FALSE(Forcing(line, code).contains("Nf4:e6")) << code;
        line.Context().m_bFfmAddCaptures = true;
        EXPECT_EQ(Forcing(line, code).contains("Nf4:e6"), code >= 5) << code;
    }
}

// --- Properties of random positions

TEST(ForcingMoves, AreMovesOfThePositionAndHoldEveryCheck) {
    std::mt19937_64 rng(3501);
    for (int i = 0; i < Samples(300); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 8);
        const reference::Position position = reference::ProblemFromFen(placement);
        const TTexts forcing = Forcing(placement, 2 + i % 8, 5);
        TTexts pseudoLegal;
        CSearchedPosition line(placement, 5, 1);
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(line.Now(), list);
        for (int j = 0; j < count; ++j)
            pseudoLegal.insert(WriteMove(list[j], line.Now()));
        for (const std::string& text : forcing)
            EXPECT_TRUE(pseudoLegal.contains(text)) << placement << " " << text;
        for (const reference::Move& move : reference::LegalMoves(position))
            if (reference::InCheck(reference::Play(position, move))) {
                EXPECT_TRUE(forcing.contains(reference::LongNotation(position, move))) << placement;
            }
    }
}

/// Only the threat stage speaks in these positions.
bool OthersAreSilent(const TChessboard& b) {
    return CountBlackKingFreeSquares(b) >= 3 && b.m_whiteChecker == kNoChecker &&
           !(b.m_blackQueens == 1 && b.m_blackRooks == 0) && b.m_whiteQueens < 2 && b.m_whitePawns == 0;
}

/// Would White mate in nMoves if Black passed after this move?
bool Threatens(const reference::Position& position, const reference::Move& move, int nMoves) {
    reference::Position after = reference::Play(position, move);
    after.toMove = reference::Side::White;
    after.enPassant = reference::kNoSquare;
    return reference::ForcesMate(after, nMoves);
}

void ExpectThreatsAlone(int nCode, int nMoves, int nMen, int nCount, std::uint64_t nSeed) {
    std::mt19937_64 rng(nSeed);
    int quiet = 0, threats = 0;
    for (int i = 0; quiet < nCount; ++i) {
        const std::string placement = reference::RandomMatingPlacement(rng, nMen + i % 3);
        CSearchedPosition line(placement, 2 * nMoves + 3, 1);
        if (!OthersAreSilent(line.Now()))
            continue;
        const reference::Position position = reference::ProblemFromFen(placement);
        const TTexts forcing = Forcing(line, nCode);
        for (const reference::Move& move : reference::LegalMoves(position)) {
            if (reference::InCheck(reference::Play(position, move)) || quiet == nCount)
                continue;
            ++quiet;
            const bool bThreat = Threatens(position, move, nMoves);
            threats += bThreat ? 1 : 0;
            EXPECT_EQ(forcing.contains(reference::LongNotation(position, move)), bThreat)
                << placement << " " << reference::LongNotation(position, move);
        }
    }
    EXPECT_GT(threats, Floor(quiet / 50));
    EXPECT_LT(threats, quiet * 19 / 20);
}

TEST(ForcingMoves, CodeThreeIsEveryThreatOfMateOnTheMove) { ExpectThreatsAlone(3, 1, 5, Samples(1500), 3502); }
TEST(ForcingMoves, CodeFiveIsEveryThreatOfMateInTwo) { ExpectThreatsAlone(5, 2, 5, Samples(300), 3503); }

TEST(ForcingMoves, ADeeperCodeHoldsTheShallowerOnes) {
    std::mt19937_64 rng(3504);
    for (int i = 0; i < Samples(60); ++i) {
        CSearchedPosition line(AnyPlacement(rng, i, 4 + i % 3), 7, 1);
        const TTexts three = Forcing(line, 3), four = Forcing(line, 4), five = Forcing(line, 5), six = Forcing(line, 6),
                     seven = Forcing(line, 7);
        const auto holds = [](const TTexts& a, const TTexts& b) { return std::ranges::includes(a, b); };
        EXPECT_TRUE(holds(four, three) && holds(five, three) && holds(six, five) && holds(six, four) &&
                    holds(seven, five))
            << PlacementOf(line.Now());
    }
}

TEST(ForcingMoves, LeaveRecordAndContextAlone) {
    CSearchedPosition line("7k/8/5K2/8/8/8/8/R7", 9, 1);
    line.Root().m_nHeuristics = SH_FINDFORCEDMATE | SH_3MOVESTOMATE;
    line.Root().m_nHeurParams = 77;
    for (const int nWithOther : {-1, 0, 1}) {
        line.Context().m_nFfmWithOther = static_cast<std::int8_t>(nWithOther);
        const TChessboard before = line.Root();
        (void)Forcing(line, 9);
        EXPECT_EQ(std::memcmp(&before, &line.Root(), sizeof before), 0);
        EXPECT_EQ(line.Context().m_nQuickerLevel, 0);
        EXPECT_EQ(line.Context().m_nQuickerSpare, 0);
    }
}

} // namespace
} // namespace quillon::test
