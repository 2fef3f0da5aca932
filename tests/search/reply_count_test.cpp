// Counts of Black's replies on masks, held against the generator and the plain rules.

#include "search/reply_count.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "core/generation.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

/// The generator's moves of all but the king, and what there is among them.
struct TGenerated {
    int m_nOthers = 0, m_nPromotions = 0, m_nEnPassant = 0; // en passant is none of the others
};

TGenerated Generate(const TChessboard& b) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(b, list);
    TGenerated generated;
    for (int i = 0; i < count; ++i) {
        const TFigure kind = KindOf(b.m_board[list[i].m_nFrom]);
        const bool bEnPassant =
            kind == kPawn && FileOf(list[i].m_nFrom) != FileOf(list[i].m_nTo) && b.m_board[list[i].m_nTo] == kNoFigure;
        generated.m_nEnPassant += bEnPassant;
        generated.m_nPromotions += PromotionKind(list[i]) != 0;
        generated.m_nOthers += kind != kKing && !bEnPassant;
    }
    return generated;
}

int LegalKingSteps(const reference::Position& position) {
    const std::vector<reference::Move> moves = reference::LegalMoves(position);
    return static_cast<int>(std::count_if(moves.begin(), moves.end(), [&](const reference::Move& move) {
        return position.board[move.from] == 'k' && AbsDiff(FileOf(move.from), FileOf(move.to)) <= 1;
    }));
}

/// A double step beside a black pawn, where there is one.
reference::Move AnyMove(std::mt19937_64& rng, const reference::Position& position,
                        const std::vector<reference::Move>& moves) {
    const auto step = std::ranges::find_if(moves, [&](const reference::Move& move) {
        const auto beside = [&](int file) {
            return IsOnBoard(file, RankOf(move.to)) && position.board[SquareAt(file, RankOf(move.to))] == 'p';
        };
        return position.board[move.from] == 'P' && move.to - move.from == 16 &&
               (beside(FileOf(move.to) - 1) || beside(FileOf(move.to) + 1));
    });
    return step != moves.end()
               ? *step
               : moves[static_cast<std::size_t>(reference::DrawInt(rng, static_cast<int>(moves.size())))];
}

TEST(ReplyCount, AgreesWithGeneratorAndRules) {
    std::mt19937_64 rng(71);
    int compared = 0, promoting = 0, walled = 0, enPassant = 0;
    for (int i = 0; i < Samples(6000); ++i) {
        const std::string placement = reference::RandomAnyPlacement(rng);
        const reference::Position before = reference::ProblemFromFen(placement);
        const std::vector<reference::Move> moves = reference::LegalMoves(before);
        if (moves.empty())
            continue;
        const reference::Move move = AnyMove(rng, before, moves);
        const reference::Position after = reference::Play(before, move);
        if (reference::InCheck(after))
            continue;
        CSearchedPosition line(placement, 5);
        line.Play(reference::LongNotation(before, move));
        const TReplyCount count = CountRepliesOnMasks(TakeMasks(line.Now()));
        const TGenerated generated = Generate(line.Now());
        ASSERT_EQ(count.m_nOthers, generated.m_nOthers) << reference::Placement(after);
        ASSERT_EQ(count.m_nFlights, LegalKingSteps(after)) << reference::Placement(after);
        promoting += generated.m_nPromotions != 0;
        enPassant += generated.m_nEnPassant != 0;
        walled += count.m_nFlights == 0;
        ++compared;
    }
    EXPECT_GT(compared, Floor(1000));
    EXPECT_GT(promoting, Floor(50));
    EXPECT_GT(walled, Floor(50));
    EXPECT_GT(enPassant, Floor(20));
}

} // namespace
} // namespace quillon::test
