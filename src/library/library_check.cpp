#include "library/library_check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <utility>

#include "core/castling.h"
#include "library/pgn_text.h"
#include "library/played_line.h"
#include "library/problem_file.h"
#include "library/problem_writer.h"

namespace quillon {

namespace {

using TSquares = std::array<TFigure, kSquares>;

TSquares Mirrored(const TSquares& board) {
    TSquares mirrored{};
    for (int square = 0; square < kSquares; ++square)
        mirrored[static_cast<std::size_t>(SquareAt(7 - FileOf(square), RankOf(square)))] =
            board[static_cast<std::size_t>(square)];
    return mirrored;
}

/// Men of one colour.
struct TMen {
    int m_nQueens, m_nRooks, m_nBishops, m_nKnights, m_nPawns;
};

TMen WhiteMenOf(const TChessboard& b) {
    return {b.m_whiteQueens, b.m_whiteRooks, b.m_whiteBishops, b.m_whiteKnights, b.m_whitePawns};
}
TMen BlackMenOf(const TChessboard& b) {
    return {b.m_blackQueens, b.m_blackRooks, b.m_blackBishops, b.m_blackKnights, b.m_blackPawns};
}

/// More men than eight pawns can have been, the first of each kind not counted.
bool IsImpossible(const TMen& men) {
    constexpr int kPawns = 8;
    const int promoted = std::max(men.m_nQueens - 1, 0) + std::max(men.m_nRooks - 2, 0) +
                         std::max(men.m_nBishops - 2, 0) + std::max(men.m_nKnights - 2, 0);
    return men.m_nPawns + promoted > kPawns;
}

/// A castling has no mirror image.
bool HasCastling(const ChessProblem& problem) {
    return WhiteCastlingsOnBoard(*problem.originalPosition) != 0 ||
           BlackCastlingsOnBoard(*problem.originalPosition) != 0;
}

using TStipulation = std::pair<std::uint16_t, std::uint16_t>; // kind and plies

struct TSeenProblem {
    std::size_t m_nPlace; // among all problems
    const ChessProblem* m_pProblem;
};
using TSeenProblems = std::vector<TSeenProblem>; // in their order

/// Earlier problems, put together from several lists. Only the first are named, and only those are looked at.
class CEarlierProblems {
  public:
    void Take(const TSeenProblems& seen) {
        m_nCount += seen.size();
        m_first.insert(m_first.end(), seen.begin(),
                       seen.begin() + static_cast<std::ptrdiff_t>(std::min(seen.size(), kMostNamed)));
    }

    [[nodiscard]] std::size_t Count() const { return m_nCount; }

    /// "problem 1", "problems 1, 5", "problems 1, 5, ... (70)".
    [[nodiscard]] std::string Names() {
        std::ranges::sort(m_first, {}, &TSeenProblem::m_nPlace);
        std::string text = m_nCount > 1 ? "problems " : "problem ";
        for (std::size_t i = 0; i < std::min(m_first.size(), kMostNamed); ++i)
            text += (i > 0 ? ", " : "") + std::to_string(m_first[i].m_pProblem->id);
        return m_nCount <= kMostNamed ? text : text + ", ... (" + std::to_string(m_nCount) + ")";
    }

  private:
    static constexpr std::size_t kMostNamed = 10;

    TSeenProblems m_first;
    std::size_t m_nCount = 0;
};

class CLibraryCheck {
  public:
    std::vector<TFinding> Run(const std::vector<std::unique_ptr<ChessProblem>>& problems) {
        for (const auto& problem : problems) {
            Check(*problem);
            if (m_findings.size() <= kMostFindings)
                continue;
            m_findings.resize(kMostFindings);
            Add(EFinding::TooMany, *problem,
                "More than " + std::to_string(kMostFindings) + " findings: the rest is not told.");
            break;
        }
        return std::move(m_findings);
    }

  private:
    static constexpr std::size_t kMostFindings = kMostFailures;

    void Add(EFinding finding, const ChessProblem& problem, std::string text) {
        m_findings.push_back({finding, problem.id, problem.line, std::move(text)});
    }

    void Check(const ChessProblem& problem) {
        CheckAgainstOthers(problem);
        CheckPosition(problem);
        CheckAnswer(problem);
        for (const auto& [name, variant] : problem.variants)
            CheckVariant(problem, variant);
    }

    void CheckAgainstOthers(const ChessProblem& problem) {
        const TSquares& board = problem.originalPosition->m_board;
        const TSquares mirrored = Mirrored(board);
        CEarlierProblems duplicates, samePosition, twins;
        const TStipulation own{problem.kind, problem.plies};
        for (const auto& [stipulation, seen] : m_seen[board])
            (stipulation == own ? duplicates : samePosition).Take(seen);
        // Whether there are castlings the board tells, which is that of all twins.
        if (const auto seen = m_seen.find(mirrored); seen != m_seen.end() && mirrored != board &&
                                                     !HasCastling(problem) &&
                                                     !HasCastling(*seen->second.begin()->second.front().m_pProblem))
            for (const auto& [stipulation, twinsOfIt] : seen->second)
                twins.Take(twinsOfIt);
        m_seen[board][own].push_back({m_nProblems++, &problem});
        if (duplicates.Count() > 0)
            Add(EFinding::Duplicate, problem, "same position as " + duplicates.Names());
        if (samePosition.Count() > 0)
            Add(EFinding::SamePosition, problem,
                "same position as " + samePosition.Names() + ", which " + (samePosition.Count() > 1 ? "have" : "has") +
                    " another stipulation");
        if (twins.Count() > 0)
            Add(EFinding::MirrorTwin, problem, "mirrored position of " + twins.Names());
    }

    void CheckPosition(const ChessProblem& problem) {
        const TChessboard& board = *problem.originalPosition;
        if (IsImpossible(WhiteMenOf(board)))
            Add(EFinding::IllegalPosition, problem, "illegal position: White has more men than a game can give");
        if (IsImpossible(BlackMenOf(board)))
            Add(EFinding::IllegalPosition, problem, "illegal position: Black has more men than a game can give");
        m_line.Start(board);
        if (m_line.LegalMoves().empty())
            Add(EFinding::NoMove, problem, "White has no legal move");
    }

    void CheckAnswer(const ChessProblem& problem) {
        for (const TMove& key : problem.answer) {
            m_line.Start(*problem.originalPosition);
            if (m_line.Play(key))
                continue;
            Add(EFinding::IllegalAnswer, problem,
                "illegal move in the answer: " + AnswerMoveText(key, *problem.originalPosition));
        }
    }

    void CheckVariant(const ChessProblem& problem, const Variant& variant) {
        const std::size_t nLegal = PlayVariant(m_line, *problem.originalPosition, variant);
        if (nLegal < variant.moves.size())
            Add(EFinding::IllegalVariant, problem, InvalidVariantText(variant, nLegal + 1));
        if (problem.kind != kNoStipulation && variant.moves.size() > problem.plies)
            Add(EFinding::VariantTooLong, problem,
                "The stored variant is too long: " + std::to_string((variant.moves.size() + 1) / 2) + " moves: \"" +
                    variant.name + "\"");
    }

    std::map<TSquares, std::map<TStipulation, TSeenProblems>> m_seen; // the problems so far
    std::size_t m_nProblems = 0;
    CPlayedLine m_line;
    std::vector<TFinding> m_findings;
};

} // namespace

std::string_view FindingName(EFinding finding) {
    constexpr std::array<std::string_view, 12> kNames{
        "unreadable", "repeated-id",    "duplicate",       "same-position",    "mirror-twin", "illegal-position",
        "no-move",    "illegal-answer", "illegal-variant", "variant-too-long", "odd",         "too-many"};
    return kNames[static_cast<std::size_t>(finding)];
}

std::vector<TFinding> CheckProblems(const std::vector<std::unique_ptr<ChessProblem>>& problems) {
    return CLibraryCheck().Run(problems);
}

} // namespace quillon
