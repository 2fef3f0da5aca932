#pragma once
// A game for tests: played by texts of moves, its records linked as those of a search are.

#include <deque>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "core/fen.h"
#include "core/notation.h"
#include "core/search_context.h"

namespace quillon::test {

class CPlayedGame {
  public:
    /// nMoves: plies to play; odd for White to move.
    explicit CPlayedGame(std::string_view fen, std::uint16_t nMoves = 199) {
        m_records.push_back(ChessboardFromFEN(fen));
        TChessboard& root = m_records.back();
        root.m_pContext = m_context.get();
        root.m_nMoves = root.m_nInitialMoves = nMoves;
        m_context->m_pRoot = &root;
    }

    [[nodiscard]] TChessboard& Now() { return m_records.back(); }
    [[nodiscard]] TChessboard& Root() { return m_records.front(); }

    /// Plays moves separated by blanks. Throws std::invalid_argument at one that cannot be made.
    CPlayedGame& Play(std::string_view moves) {
        while (!moves.empty()) {
            const std::string_view move = moves.substr(0, moves.find(' '));
            moves.remove_prefix(move.size());
            moves.remove_prefix(moves.empty() ? 0 : 1);
            TChessboard child;
            if (!MakeMoveFromText(Now(), move, child, nullptr))
                throw std::invalid_argument("cannot play " + std::string(move));
            m_records.push_back(child);
        }
        return *this;
    }

  private:
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    std::deque<TChessboard> m_records; // a deque, because records point at their parents
};

} // namespace quillon::test
