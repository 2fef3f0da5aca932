#pragma once
// A position set up for the nodes of the recursion, and the doubles that tests put beside it.

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/fen.h"
#include "core/makers.h"
#include "core/notation.h"
#include "core/search_context.h"
#include "search/analysis.h"
#include "search/find_mate.h"
#include "search/node_log.h"
#include "support/random_positions.h"
#include "support/reference_chess.h"
#include "support/reference_solver.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUILLON_TESTS_ARE_SANITIZED 1
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUILLON_TESTS_ARE_SANITIZED 1
#endif
#endif

namespace quillon::test {

/// How many of `nFull` samples a test takes: sanitizers make everything some twenty times as slow.
[[nodiscard]] constexpr int Samples(int nFull) {
#if defined(QUILLON_TESTS_ARE_SANITIZED) || !defined(__OPTIMIZE__)
    return std::max(nFull / 6, std::min(nFull, 150));
#else
    return nFull;
#endif
}

/// What a count over Samples must exceed, of `nFull` where all are taken: that the test has met its cases at all.
[[nodiscard]] constexpr int Floor(int nFull) { return Samples(1000) < 1000 ? nFull / 12 : nFull; }

/// A log that keeps the remarks.
class CRemarks : public INodeLog {
  public:
    void Move(const TChessboard&) override {}
    void Verdict(const TChessboard&, TMateResult) override {}
    void Remark(const TChessboard&, const char* text) override { m_remarks.insert(text); }
    std::set<std::string> m_remarks;
};

/// A root in a context and an analysis of its own, and the moves played from it in the slots below.
class CSearchedPosition {
  public:
    /// nPlies: plies left, odd for White to move.
    CSearchedPosition(std::string_view placement, int nPlies, int nPass = 2)
        : m_pNow(MakeRoot(*m_context, m_analysis, ChessboardFromFEN(placement), nPlies, nPass)) {}

    [[nodiscard]] TAnalysis& Analysis() { return m_analysis; }
    [[nodiscard]] TSearchContext& Context() { return *m_context; }
    [[nodiscard]] TChessboard& Root() { return *m_context->m_pRoot; }
    [[nodiscard]] TChessboard& Now() { return *m_pNow; }

    /// Plays moves in long notation, separated by blanks.
    CSearchedPosition& Play(std::string_view moves) {
        while (!moves.empty()) {
            const std::string_view text = moves.substr(0, moves.find(' '));
            moves.remove_prefix(std::min(text.size() + 1, moves.size()));
            const bool bWhite = IsWhiteToMove(*m_pNow);
            TMove move = ParseMove(text, bWhite);
            TChessboard* const child = CopyToChild(m_pNow);
            const int made =
                bWhite ? MakeWhiteMove<kLegalityOnly>(*child, move) : MakeBlackMove<kLegalityOnly>(*child, move, false);
            if (made == 0)
                throw std::invalid_argument("cannot play " + std::string(text));
            m_pNow = child;
        }
        return *this;
    }

    /// The verdict on the position reached, by the node of the side to move.
    template <TNodeKind kKind = kPlainNode> [[nodiscard]] TMateResult Verdict(bool bUseRegister = true) {
        return IsWhiteToMove(*m_pNow) ? FindMateWhite<kKind>(m_pNow, bUseRegister) : FindMateBlack<kKind>(m_pNow);
    }

  private:
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    TAnalysis m_analysis;
    TChessboard* m_pNow;
};

/// What a register was asked or told about one position.
struct TRegisterCall {
    std::string m_position; // placement
    int m_nPlies = 0;
    TMateResult m_nVerdict = MR_NONE;
};

[[nodiscard]] inline std::string PlacementOf(const TChessboard& b) { return WriteFEN(b, false); }

/// Knows what it was told, under the board, the plies and, for doubt, the heuristics. Every call is written down.
class CRecordingRegister : public ITemporaryRegister {
  public:
    [[nodiscard]] TMateResult Find(const TChessboard& position, int nMoves, int nMaxMoves) override {
        m_asked.push_back({PlacementOf(position), nMoves, MR_NONE});
        m_nAskedUpTo = nMaxMoves;
        if (const auto found = m_proved.find({position.m_board, nMoves, 0, 0}); found != m_proved.end())
            return found->second;
        const TKey doubtful{position.m_board, nMoves, position.m_nHeuristics, position.m_nHeurParams};
        return m_doubtful.contains(doubtful) ? MR_DOUBTFUL : m_nAnswer;
    }
    void Insert(const TChessboard& position, int nMoves, TMateResult verdict) override {
        m_stored.push_back({PlacementOf(position), nMoves, verdict});
        if (m_bRemembers)
            m_proved[{position.m_board, nMoves, 0, 0}] = verdict;
    }
    void InsertDoubtful(const TChessboard& position, int nMoves) override {
        m_stored.push_back({PlacementOf(position), nMoves, MR_DOUBTFUL});
        if (m_bRemembers)
            m_doubtful[{position.m_board, nMoves, position.m_nHeuristics, position.m_nHeurParams}] = true;
    }

    TMateResult m_nAnswer = MR_NONE; // to what it does not remember
    bool m_bRemembers = false;
    int m_nAskedUpTo = 0; // plies that the last question reached up to
    std::vector<TRegisterCall> m_asked, m_stored;

  private:
    struct TKey {
        std::array<TFigure, kSquares> m_board;
        int m_nPlies;
        std::uint32_t m_nHeuristics, m_nHeurParams;
        friend auto operator<=>(const TKey&, const TKey&) = default;
    };
    std::map<TKey, TMateResult> m_proved;
    std::map<TKey, bool> m_doubtful;
};

/// Random placements of every kind in turn.
[[nodiscard]] inline std::string AnyPlacement(std::mt19937_64& rng, int i, int nMen) {
    switch (i % 5) {
    case 0:
        return reference::RandomPlacement(rng, nMen);
    case 1:
        return reference::RandomMatingPlacement(rng, nMen);
    case 2:
        return reference::RandomPawnPlacement(rng, nMen);
    case 3:
        return reference::RandomCastlingPlacement(rng, nMen);
    default:
        return reference::RandomMinorPlacement(rng, nMen);
    }
}

} // namespace quillon::test
