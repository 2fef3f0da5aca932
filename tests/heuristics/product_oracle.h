#pragma once
// The engine as the one who names White's moves to a verifier of mates (support/proof_verifier.h).

#include <memory>
#include <optional>
#include <string>

#include "core/fen.h"
#include "core/notation.h"
#include "heuristics/judged_solve.h"
#include "heuristics/solving_driver.h"
#include "search/proof_guide.h"
#include "search/searched_position.h"
#include "support/proof_verifier.h"

namespace quillon::test {

/// Names the moves of a problem: those of a best-first proof first, if one is wanted and finds the mate; otherwise each
/// position is solved as a problem of its own, with the moves that remain.
class CProductOracle {
  public:
    CProductOracle(std::string placement, int nMoves) : m_placement(std::move(placement)), m_nMoves(nMoves) {}

    /// Searches for a proof with at most so many positions. True if it finds one.
    bool Guide(std::uint64_t nMostNodes) {
        CSearchedPosition line(m_placement, PliesOf(m_nMoves));
        m_guide = std::make_unique<CProofGuide>(kGuideBytes);
        return m_guide->Search(line.Root(), nMostNodes) == EProofResult::Proved;
    }

    [[nodiscard]] std::string operator()(const reference::Turn& turn) {
        if (const std::string suggested = Suggestion(turn); !suggested.empty())
            return suggested;
        ++m_nSolved;
        if (IsProblem(turn.position))
            return Solve(turn);
        ++m_nSolvedInLine;
        return SolveInLine(turn);
    }

    /// The first key that a solve finds; empty for none. Short problems are solved without heuristics.
    [[nodiscard]] static std::string Solve(const reference::Turn& turn) {
        const TJudgedProblem problem{reference::Placement(turn.position), turn.movesLeft, {}};
        TSolveRequest request = RequestFor(problem, ESolveMode::FirstSolution);
        request.m_bBruteForce = turn.movesLeft <= kShortProblem;
        CSolve solve(request);
        CAgreeing notifier;
        const TSolvingResult result = solve.StartSolving(notifier);
        return result.m_solutions.empty() ? "" : result.m_solutions.front().m_text;
    }

    [[nodiscard]] int Suggested() const { return m_nSuggested; } // moves that came from the proof
    [[nodiscard]] int Solved() const { return m_nSolved; }       // and from solves,
    [[nodiscard]] int SolvedInLine() const {
        return m_nSolvedInLine;
    } // of which so many could not be set up as diagrams

  private:
    static constexpr std::size_t kGuideBytes = std::size_t{32} << 20;
    static constexpr int kShortProblem = 3;

    /// Is all that the position depends on seen on the board, as in a diagram?
    [[nodiscard]] static bool IsProblem(const reference::Position& position) {
        const reference::Position diagram = reference::ProblemFromFen(reference::Placement(position));
        return diagram.castling == position.castling && position.enPassant == reference::kNoSquare;
    }

    [[nodiscard]] std::string Suggestion(const reference::Turn& turn) {
        if (m_guide == nullptr)
            return {};
        TChessboard board = ChessboardFromFEN(reference::Placement(turn.position));
        board.m_nMoves = static_cast<std::uint16_t>(PliesOf(turn.movesLeft));
        TMove move{};
        if (!m_guide->Suggest(board, move))
            return {};
        for (const reference::Move legal : reference::LegalMoves(turn.position)) {
            if (legal.from == move.m_nFrom && legal.to == move.m_nTo && legal.promotion == PromotionLetter(move)) {
                ++m_nSuggested;
                return reference::LongNotation(turn.position, legal);
            }
        }
        return {};
    }

    [[nodiscard]] static char PromotionLetter(const TMove& move) {
        switch (PromotionKind(move)) {
        case kQueen:
            return 'Q';
        case kRook:
            return 'R';
        case kBishop:
            return 'B';
        case kKnight:
            return 'N';
        default:
            return '\0';
        }
    }

    /// Castling rights and the capture in passing are read from the moves played.
    [[nodiscard]] std::string SolveInLine(const reference::Turn& turn) const {
        std::string played;
        for (const std::string& move : turn.line)
            played += move + ' ';
        for (const reference::Move legal : reference::LegalMoves(turn.position)) {
            const std::string text = reference::LongNotation(turn.position, legal);
            CSearchedPosition line(m_placement, PliesOf(m_nMoves));
            if (line.Play(played + text).Verdict() == MR_MATE)
                return text;
        }
        return {};
    }

    std::string m_placement;
    int m_nMoves;
    std::unique_ptr<CProofGuide> m_guide;
    int m_nSuggested = 0, m_nSolved = 0, m_nSolvedInLine = 0;
};

} // namespace quillon::test
