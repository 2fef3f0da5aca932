#include "library/library_check.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>

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

class CLibraryCheck {
  public:
    std::vector<TFinding> Run(const std::vector<std::unique_ptr<ChessProblem>>& problems) {
        for (const auto& problem : problems) {
            Check(*problem);
            if (m_findings.size() < kMostFindings)
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

    using TProblems = std::vector<const ChessProblem*>;

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
        TProblems duplicates, samePosition, twins;
        for (const ChessProblem* other : m_seen[board]) {
            const bool bSame = problem.kind == other->kind && problem.plies == other->plies;
            (bSame ? duplicates : samePosition).push_back(other);
        }
        if (const auto seen = m_seen.find(mirrored); seen != m_seen.end() && mirrored != board && !HasCastling(problem))
            std::ranges::copy_if(seen->second, std::back_inserter(twins),
                                 [](const ChessProblem* other) { return !HasCastling(*other); });
        m_seen[board].push_back(&problem);
        if (!duplicates.empty())
            Add(EFinding::Duplicate, problem, "same position as " + NamesOf(duplicates));
        if (!samePosition.empty())
            Add(EFinding::SamePosition, problem,
                "same position as " + NamesOf(samePosition) + ", which " + (samePosition.size() > 1 ? "have" : "has") +
                    " another stipulation");
        if (!twins.empty())
            Add(EFinding::MirrorTwin, problem, "mirrored position of " + NamesOf(twins));
    }

    /// "problem 1", "problems 1, 5", "problems 1, 5, ... (70)".
    static std::string NamesOf(const TProblems& problems) {
        constexpr std::size_t kMostNamed = 10;
        std::string text = problems.size() > 1 ? "problems " : "problem ";
        for (std::size_t i = 0; i < std::min(problems.size(), kMostNamed); ++i)
            text += (i > 0 ? ", " : "") + std::to_string(problems[i]->id);
        return problems.size() <= kMostNamed ? text : text + ", ... (" + std::to_string(problems.size()) + ")";
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

    std::map<TSquares, TProblems> m_seen; // the problems of each position so far, in their order
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
