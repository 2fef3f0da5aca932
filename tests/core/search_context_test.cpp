#include "core/search_context.h"

#include <gtest/gtest.h>

#include "core/positions.h"

namespace quillon::test {
namespace {

TEST(SearchContext, EverySlotPointsAtItsOwner) {
    const auto context = NewSearchContext();
    for (const TChessboard& slot : context->m_stack)
        EXPECT_EQ(slot.m_pContext, context.get());
    for (const TChessboard& slot : context->m_sideStack)
        EXPECT_EQ(slot.m_pContext, context.get());
    EXPECT_EQ(context->m_stack.size(), 600u);
    EXPECT_EQ(context->m_sideStack.size(), 13u);
    EXPECT_EQ(context->m_repetition.size(), 601u);
    EXPECT_EQ(context->m_repetitionSaved.size(), 601u);
    EXPECT_EQ(context->m_nSideStackIndex, 65535);
    EXPECT_EQ(context->m_pRoot, nullptr);
}

TEST(SearchContext, PositionStandsOneSlotAboveItsPlies) {
    const auto context = NewSearchContext();
    TChessboard& root = RootSlot(*context, 9);
    EXPECT_EQ(&root, &context->m_stack[10]);
    root.m_nMoves = 9;
    EXPECT_EQ(ChildSlot(root), &context->m_stack[9]);
}

TEST(SearchContext, ChildIsACopyLinkedToItsParent) {
    CLine line("r3k2r/8/8/8/8/8/8/R3K2R w", 9);
    TChessboard* const child = CopyToChild(&line.Root());
    EXPECT_EQ(child, ChildSlot(line.Root()));
    EXPECT_EQ(child->m_pPrevious, &line.Root());
    EXPECT_EQ(child->m_pContext, &line.Context());
    EXPECT_EQ(child->m_board, line.Root().m_board);
    EXPECT_EQ(child->m_nMoves, 9);
}

TEST(SearchContext, SideStackTakesChildrenUpToItsIndex) {
    const auto context = NewSearchContext();
    context->m_nSideStackIndex = 5;
    TChessboard parent = context->m_stack[0];
    parent.m_nMoves = 6;
    EXPECT_EQ(ChildSlot(parent), &context->m_stack[6]);
    parent.m_nMoves = 5;
    EXPECT_EQ(ChildSlot(parent), &context->m_sideStack[5]);
    parent.m_nMoves = 1;
    EXPECT_EQ(ChildSlot(parent), &context->m_sideStack[1]);
}

TEST(SearchContext, NestedLineOnTheSideStackLeavesTheMainLineAlone) {
    CLine line("7k/8/8/8/8/8/8/K7 w", 5);
    line.Play("a1a2 h8h7 a2a3");
    const TChessboard above = line.Context().m_stack[3];
    line.Context().m_nSideStackIndex = 5;
    TChessboard start = line.Root();
    TChessboard* const child = CopyToChild(&start);
    TMove move = MoveOf("a1b1");
    ASSERT_EQ(MakeWhiteMove(*child, move), 1);
    TMove reply = MoveOf("h8g8");
    ASSERT_EQ(MakeBlackMove(*CopyToChild(child), reply, false), 1);
    EXPECT_EQ(line.Context().m_stack[3].m_board, above.m_board);
    EXPECT_EQ(WhiteKingSquare(line.Context().m_stack[5]), SquareOf("a2"));
}

// ---- clones

class CloneSearchContextTest : public testing::Test {
  protected:
    CloneSearchContextTest() { m_line.Play("e2e4 e7e5 g1f3"); }

    void Clone() { CloneSearchContext(m_line.Context(), *m_clone); }
    [[nodiscard]] static std::size_t IndexIn(const TSearchContext& context, const TChessboard* slot) {
        return static_cast<std::size_t>(slot - context.m_stack.data());
    }

    CLine m_line{"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w", 9};
    std::unique_ptr<TSearchContext> m_clone = NewSearchContext();
};

TEST_F(CloneSearchContextTest, LinksOfTheLineLeadThroughTheClone) {
    Clone();
    const std::size_t now = IndexIn(m_line.Context(), &m_line.Now());
    EXPECT_EQ(now, 7u);
    const TChessboard* slot = &m_clone->m_stack[now];
    for (const std::size_t expected : {8u, 9u, 10u}) {
        slot = slot->m_pPrevious;
        EXPECT_EQ(slot, &m_clone->m_stack[expected]);
    }
    EXPECT_EQ(slot->m_pPrevious, nullptr);
    EXPECT_EQ(m_clone->m_pRoot, slot);
}

TEST_F(CloneSearchContextTest, EverySlotPointsAtTheClone) {
    Clone();
    for (const TChessboard& slot : m_clone->m_stack)
        ASSERT_EQ(slot.m_pContext, m_clone.get());
    for (const TChessboard& slot : m_clone->m_sideStack)
        ASSERT_EQ(slot.m_pContext, m_clone.get());
}

TEST_F(CloneSearchContextTest, PositionsAreCopiedWhole) {
    Clone();
    for (std::size_t i = 0; i < kStackSlots; ++i) {
        const TChessboard &copy = m_clone->m_stack[i], &original = m_line.Context().m_stack[i];
        ASSERT_EQ(copy.m_board, original.m_board) << i;
        ASSERT_EQ(copy.m_nMoves, original.m_nMoves) << i;
    }
}

TEST_F(CloneSearchContextTest, SideStackLinksAreMovedToo) {
    TSearchContext& source = m_line.Context();
    source.m_nSideStackIndex = 6;
    TChessboard* const child = CopyToChild(&m_line.Now()); // six plies left: into the side stack
    child->m_nMoves = 5;
    CopyToChild(child);
    Clone();
    EXPECT_EQ(m_clone->m_nSideStackIndex, 6);
    EXPECT_EQ(m_clone->m_sideStack[6].m_pPrevious, &m_clone->m_stack[7]);
    EXPECT_EQ(m_clone->m_sideStack[5].m_pPrevious, &m_clone->m_sideStack[6]);
}

TEST_F(CloneSearchContextTest, ForeignLinksStay) {
    TChessboard elsewhere = m_line.Root();
    m_line.Context().m_stack[3].m_pPrevious = &elsewhere;
    m_line.Context().m_pQuickerRoot = &elsewhere;
    Clone();
    EXPECT_EQ(m_clone->m_stack[3].m_pPrevious, &elsewhere);
    EXPECT_EQ(m_clone->m_pQuickerRoot, &elsewhere);
}

TEST_F(CloneSearchContextTest, MarksAndParametersAreCopied) {
    TSearchContext& source = m_line.Context();
    source.m_repetition[5] = 7;
    source.m_repetitionSaved[600] = 8;
    source.m_lastDoubtCause = 9;
    source.m_capturedBlack[1] = {kBlackRook, 33};
    source.m_nKeySquare = 42;
    source.m_hints[3] = MoveOf("e2e4");
    source.m_pQuickerRoot = &m_line.Now();
    source.m_moveIndex[4] = 10;
    source.m_moveIndexShown[4] = 11;
    source.m_moveCount[4] = 12;
    source.m_nStopRequest = kStopRequest;
    Clone();
    EXPECT_EQ(m_clone->m_repetition[5], 7);
    EXPECT_EQ(m_clone->m_repetitionSaved[600], 8);
    EXPECT_EQ(m_clone->m_lastDoubtCause, 9u);
    EXPECT_EQ(m_clone->m_capturedBlack[1].m_figure, kBlackRook);
    EXPECT_EQ(m_clone->m_capturedBlack[1].m_square, 33);
    EXPECT_EQ(m_clone->m_nKeySquare, 42);
    EXPECT_TRUE(SameMove(m_clone->m_hints[3], MoveOf("e2e4")));
    EXPECT_EQ(m_clone->m_pQuickerRoot, &m_clone->m_stack[7]);
    EXPECT_EQ(m_clone->m_moveIndex[4], 10);
    EXPECT_EQ(m_clone->m_moveIndexShown[4], 11);
    EXPECT_EQ(m_clone->m_moveCount[4], 12);
    EXPECT_EQ(m_clone->m_nStopRequest, kStopRequest);
}

TEST_F(CloneSearchContextTest, MovesOfTheCloneLeaveTheSourceAlone) {
    Clone();
    const TChessboard before = m_line.Context().m_stack[6];
    TMove move = MoveOf("b8c6");
    ASSERT_EQ(MakeBlackMove(*CopyToChild(&m_clone->m_stack[7]), move, false), 1);
    EXPECT_EQ(m_line.Context().m_stack[6].m_board, before.m_board);
    EXPECT_EQ(m_clone->m_stack[6].m_board[SquareOf("c6")], kBlackKnight);
}

} // namespace
} // namespace quillon::test
