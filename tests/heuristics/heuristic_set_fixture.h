#pragma once
// A board with a context and a root of its own, all parameters at their initial values.

#include <gtest/gtest.h>

#include <memory>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"
#include "core/search_context.h"

namespace quillon {

class HeuristicSetFixture : public ::testing::Test {
  protected:
    HeuristicSetFixture() {
        m_p.m_pRoot = &m_root;
        m_board.m_byPass = 1;
    }

    /// Puts a man into the root position.
    void Place(TSquare square, TFigure figure) {
        m_root.m_board[square] = figure;
        if (KindOf(figure) != kKing)
            ++CounterOf(m_root, figure);
    }

    std::unique_ptr<TSearchContext> m_pContext = NewSearchContext();
    TSearchContext& m_p = *m_pContext;
    TChessboard& m_board = m_p.m_stack[9];
    TChessboard m_root = EmptyChessboard();
    THeuristicAnalysisParameters m_analysis;
};

} // namespace quillon
