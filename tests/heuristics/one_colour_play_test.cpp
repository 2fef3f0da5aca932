// Play with the black bishop off the board: when it is entered, and that what it finds is true.

#include "heuristics/one_colour_play.h"

#include <gtest/gtest.h>

#include "core/attacks.h"
#include "heuristics/heuristic_line.h"
#include "search/register_use.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

int ModeOf(std::string_view placement) {
    CHeuristicLine line(placement, 21, SH_ONECOLORPLAYPOSSIBLE);
    const int bishops = line.Now().m_blackBishops;
    DetectOppositeBishops(line.Now());
    EXPECT_EQ(line.Now().m_blackBishops, BishopMode(line.Now()) == 0 ? bishops : 0);
    EXPECT_EQ(line.Now().m_nHeurParams, ComputeHeurParams(line.Now()));
    return BishopMode(line.Now());
}

// White on dark squares: Ka3, Bc1. Black's bishop on the light squares.
TEST(OneColourPlay, IsEnteredWithAllWhiteMenOnTheOtherColour) {
    EXPECT_EQ(ModeOf("k7/p7/8/8/2b5/K7/8/2B5"), 1);  // light squares
    EXPECT_EQ(ModeOf("k7/p7/8/8/3b4/1K6/8/5B2"), 2); // the other way round
    EXPECT_EQ(ModeOf("k7/p7/8/8/2b5/1K6/8/2B5"), 0) << "the king could be checked";
    EXPECT_EQ(ModeOf("k7/p7/8/2P5/2b5/K7/8/2B5"), 1);
    EXPECT_EQ(ModeOf("k7/p7/8/1P6/2b5/K7/8/2B5"), 0) << "the pawn could be taken";
}

TEST(OneColourPlay, NeedsBishopsAndPawnsAlone) {
    EXPECT_EQ(ModeOf("k7/p7/8/8/2b5/K7/8/2B1N3"), 0);
    EXPECT_EQ(ModeOf("k7/p7/8/8/2b5/K7/7n/2B5"), 0);
    EXPECT_EQ(ModeOf("k7/p7/8/8/2b5/K7/8/8"), 0);
    EXPECT_EQ(ModeOf("k7/p7/8/8/3b4/K7/8/2B5"), 0) << "bishops of one colour";
}

TEST(OneColourPlay, NeedsThatNoPawnPromotes) {
    CHeuristicLine near("k7/ppp5/8/6P1/2b5/K7/8/2B5", 21, 0), far("k7/pp6/8/6P1/2b5/K7/8/2B5", 21, 0);
    EXPECT_FALSE(IsPromotionOutOfReach(near.Now())) << "three captures, three black pawns";
    EXPECT_TRUE(IsPromotionOutOfReach(far.Now()));
    EXPECT_EQ(ModeOf("k7/ppp5/8/6P1/2b5/K7/8/2B5"), 0);
}

TEST(OneColourPlay, ABishopWalledInCannotMove) {
    CHeuristicLine line("8/8/8/8/5KBk/6Pp/6pP/6N1", 21, 0); // Black has no other move
    line.Now().m_nMoves = 20;
    line.Now().m_bySideState = 1; // light: h1 has the only neighbour g2
    EXPECT_FALSE(CanBlackMoveWhereverBishopIs(line.Now()));
    line.Now().m_bySideState = 2; // dark: no corner is shut
    EXPECT_TRUE(CanBlackMoveWhereverBishopIs(line.Now()));
}

/// The verdict on a position that White's move has stalemated, were it not for the bishop that is off the board.
TMateResult VerdictOnStalemate(std::string_view placement, std::string_view move) {
    CHeuristicLine line(placement, 5, SH_ONECOLORPLAYPOSSIBLE);
    line.Play(move);
    EXPECT_TRUE(reference::IsStalemate(reference::FromFen(PlacementOf(line.Now()) + " b - - 0 1")));
    line.Now().m_bySideState = 1; // it lived on light squares
    return line.Verdict();
}

TEST(OneColourPlay, WhereTheBishopMayBeStuckBlackIsStalematedInsteadOfPassing) {
    EXPECT_EQ(VerdictOnStalemate("7k/5K2/8/8/8/8/8/1Q6", "Qb1-g6"), MR_MATE);
    EXPECT_EQ(VerdictOnStalemate("7k/5K2/8/8/8/8/6p1/1Q4N1", "Qb1-g6"), MR_NOMATE); // it may be on h1
}

// Black's pawn could go to a4. But where the bishop is stuck on a4 behind its pawns, Black is stalemated.
TEST(OneColourPlay, AMoveThroughTheStuckBishopDoesNotSaveBlackFromStalemate) {
    const char* const stuck = "5K1k/7p/7P/pp6/bp6/1p4B1/1P6/8";
    CSearchedPosition truth(stuck, 3);
    truth.Play("Bg3-h4");
    EXPECT_TRUE(reference::IsStalemate(reference::FromFen(PlacementOf(truth.Now()) + " b - - 0 1")));

    CHeuristicLine line("5K1k/7p/7P/pp6/1p6/1p4B1/1P6/8", 3, SH_ONECOLORPLAYPOSSIBLE);
    line.Play("Bg3-h4");
    line.Now().m_bySideState = 1; // it lives on light squares
    EXPECT_EQ(line.Verdict(), MR_NOMATE);
}

TEST(OneColourPlay, AMoveThatNoStuckBishopStopsIsEnough) {
    CHeuristicLine line("5K1k/p6p/7P/1p6/1p6/1p4B1/1P6/8", 3, SH_ONECOLORPLAYPOSSIBLE); // a7-a6, a7-a5
    line.Play("Bg3-h4");
    line.Now().m_bySideState = 1;
    EXPECT_TRUE(CanBlackMoveWhereverBishopIs(line.Now()));
    EXPECT_EQ(line.Verdict(), MR_MATE);
}

/// A random position that the mode is entered in: White on dark squares, mates frequent.
std::string BishopPlacement(std::mt19937_64& rng) {
    for (;;) {
        const std::string text = [&] {
            std::array<char, 64> board;
            board.fill('.');
            const auto put = [&](char man, int colour, auto fits) {
                for (int tries = 0; tries < 200; ++tries) {
                    const int s = reference::DrawInt(rng, 64);
                    if (board[static_cast<std::size_t>(s)] == '.' && (colour < 0 || ColourOf(s) == colour) && fits(s)) {
                        board[static_cast<std::size_t>(s)] = man;
                        return s;
                    }
                }
                return -1;
            };
            const auto any = [](int) { return true; };
            const auto pawn = [](int s) { return RankOf(s) > 0 && RankOf(s) < 7; };
            const int king = put('k', -1, [](int s) { return RingOf(FileOf(s), RankOf(s)) == 0; });
            put('K', 0, [&](int s) { return KingSteps(s, king) == 2; });
            put('B', 0, any);
            put('b', 1, any);
            const int pawns = 1 + reference::DrawInt(rng, 4);
            for (int i = 0; i < pawns; ++i)
                put('p', -1, [&](int s) { return pawn(s) && (i % 2 != 0 || KingSteps(s, king) <= 2); });
            if (reference::Chance(rng, 50))
                put('P', 0, [&](int s) { return pawn(s) && RankOf(s) < 4; });
            std::string fen;
            for (int rank = 7; rank >= 0; --rank) {
                for (int file = 0; file < 8; ++file) {
                    const char man = board[SquareAt(file, rank)];
                    fen += man == '.' ? '1' : man;
                }
                fen += rank > 0 ? "/" : "";
            }
            return fen;
        }();
        reference::Position position;
        try {
            position = reference::ProblemFromFen(text);
        } catch (const std::invalid_argument&) {
            continue;
        }
        if (!reference::InCheck(position, reference::Side::Black) && !reference::InCheck(position))
            return text;
    }
}

TEST(OneColourPlay, WhatItFindsIsTrueAndItRefutesNothing) {
    std::mt19937_64 rng(3530);
    int entered = 0, mates = 0;
    for (int i = 0; i < Samples(12000); ++i) {
        const std::string placement = BishopPlacement(rng);
        const int nMoves = 1 + i % 3;
        CHeuristicLine line(placement, 2 * nMoves - 1, SH_ONECOLORPLAYPOSSIBLE);
        DetectOppositeBishops(line.Now());
        if (BishopMode(line.Now()) == 0)
            continue;
        ++entered;
        const TMateResult verdict = line.Verdict();
        EXPECT_TRUE(verdict != MR_NOMATE || nMoves == 1) << placement; // the last ply is looked at without a node
        if (verdict == MR_MATE) {
            ++mates;
            EXPECT_TRUE(reference::ForcesMate(reference::ProblemFromFen(placement), nMoves)) << placement << nMoves;
        }
    }
    EXPECT_GT(entered, 100);
    EXPECT_GT(mates, 5);
}

TEST(OneColourPlay, ProofsOfOtherKindsAreNotTakenFromTheRegister) {
    for (const TMateResult known : {MR_MATE, MR_NOMATE, MR_DOUBTFUL}) {
        CRecordingRegister book;
        book.m_nAnswer = known;
        CHeuristicLine line("k7/p7/8/8/2b5/K7/8/2B5", 21, SH_ONECOLORPLAYPOSSIBLE);
        line.Analysis().m_pRegister = &book;
        EXPECT_EQ(AskRegister(line.Now()), known);
        DetectOppositeBishops(line.Now());
        EXPECT_EQ(AskRegister(line.Now()), known == MR_DOUBTFUL ? MR_DOUBTFUL : MR_NONE);
    }
}

} // namespace
} // namespace quillon::test
