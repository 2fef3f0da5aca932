// Counts of Black's replies on masks, held against the generator and the plain rules.

#include "search/reply_count.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "core/generation.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

/// The generator's moves of all but the king; an en passant capture has an empty target on another file.
int GeneratedOthers(const TChessboard& b) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(b, list);
    return static_cast<int>(std::count_if(list, list + count, [&](const TMove& move) {
        const TFigure kind = KindOf(b.m_board[move.m_nFrom]);
        const bool bEnPassant =
            kind == kPawn && FileOf(move.m_nFrom) != FileOf(move.m_nTo) && b.m_board[move.m_nTo] == kNoFigure;
        return kind != kKing && !bEnPassant;
    }));
}

int LegalKingSteps(const reference::Position& position) {
    const std::vector<reference::Move> moves = reference::LegalMoves(position);
    return static_cast<int>(std::count_if(moves.begin(), moves.end(), [&](const reference::Move& move) {
        return position.board[move.from] == 'k' && AbsDiff(FileOf(move.from), FileOf(move.to)) <= 1;
    }));
}

TEST(ReplyCount, AgreesWithGeneratorAndRules) {
    std::mt19937_64 rng(71);
    int compared = 0, withPromotion = 0, walled = 0;
    for (int i = 0; i < Samples(6000); ++i) {
        const std::string placement = reference::RandomAnyPlacement(rng);
        const reference::Position before = reference::ProblemFromFen(placement);
        const std::vector<reference::Move> moves = reference::LegalMoves(before);
        if (moves.empty())
            continue;
        const reference::Move move =
            moves[static_cast<std::size_t>(reference::DrawInt(rng, static_cast<int>(moves.size())))];
        const reference::Position after = reference::Play(before, move);
        CSearchedPosition line(reference::Placement(after), 4);
        const TChessboard& b = line.Root();
        const TFigureMasks masks = TakeMasks(b);
        ASSERT_EQ(CountFlights(masks), LegalKingSteps(after)) << reference::Placement(after);
        if (reference::InCheck(after))
            continue;
        const TReplyCount count = CountRepliesOnMasks(masks);
        ASSERT_EQ(count.m_nOthers, GeneratedOthers(b)) << reference::Placement(after);
        ASSERT_EQ(count.m_nFlights, LegalKingSteps(after)) << reference::Placement(after);
        ASSERT_EQ(count.All(), count.m_nOthers + count.m_nFlights);
        const TMask promoting = masks.m_pawns & masks.m_black & (kRank1 << 8);
        withPromotion += promoting != 0;
        walled += count.m_nFlights == 0;
        ++compared;
    }
    EXPECT_GT(compared, Floor(1000));
    EXPECT_GT(withPromotion, Floor(50));
    EXPECT_GT(walled, Floor(50));
}

} // namespace
} // namespace quillon::test
