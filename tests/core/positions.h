#pragma once
// Positions for tests of the chess core: a root in its slot of a context of its own, moves made in the slots below it
// as a search makes them, and random games in which the reference rules keep step.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "core/fen.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "search/analysis.h"
#include "support/random_positions.h"
#include "support/reference_chess.h"

namespace quillon::test {

using TTexts = std::vector<std::string>;

[[nodiscard]] inline TSquare SquareOf(std::string_view text) { return SquareAt(text.at(0) - 'a', text.at(1) - '1'); }

[[nodiscard]] inline std::string TextOf(TSquare square) {
    return {static_cast<char>('a' + FileOf(square)), static_cast<char>('1' + RankOf(square))};
}

/// The kind a letter of "QRBN" promotes to.
[[nodiscard]] inline TFigure PromotionOf(char letter) {
    constexpr std::string_view kLetters = "QRBN";
    constexpr TFigure kKinds[] = {kQueen, kRook, kBishop, kKnight};
    return kKinds[kLetters.find(letter)];
}

/// A move by its squares and the letter of a promotion: "e2e4", "a7a8N".
[[nodiscard]] inline TMove MoveOf(std::string_view text) {
    const TFigure promotion = text.size() > 4 ? PromotionOf(text[4]) : kNoFigure;
    return {SquareOf(text.substr(0, 2)), SquareOf(text.substr(2, 2)), promotion, 0};
}

[[nodiscard]] inline std::string TextOf(const TMove& move) {
    std::string text = TextOf(move.m_nFrom) + TextOf(move.m_nTo);
    for (const char letter : {'Q', 'R', 'B', 'N'})
        if (PromotionKind(move) == PromotionOf(letter))
            text += letter;
    return text;
}

/// Collects what a generator writes: Listed(GenerateWhiteMoves, b) or Listed(GenerateWhiteFigureMoves, b, square).
template <class TGenerate, class... TArguments> [[nodiscard]] TTexts Listed(TGenerate&& generate, TArguments&&... how) {
    TMove list[kMaxMoves];
    const int count = generate(how..., list);
    TTexts texts;
    for (int i = 0; i < count; ++i)
        texts.push_back(TextOf(list[i]));
    return texts;
}

[[nodiscard]] inline TTexts Sorted(TTexts texts) {
    std::ranges::sort(texts);
    return texts;
}

[[nodiscard]] inline TTexts Words(std::string_view text) {
    TTexts words;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        words.emplace_back(word);
        text.remove_prefix(std::min(word.size() + 1, text.size()));
    }
    return words;
}

/// A root and the moves played from it.
class CLine {
  public:
    /// nMoves: plies to play, of the parity of the side to move; 0 for many.
    explicit CLine(std::string_view fen, int nMoves = 0) {
        TChessboard root = EmptyChessboard();
        const bool bWhite = ReadFEN(root, fen).m_cSideToMove == 'w';
        RecountFigures(root, true);
        root.m_nMoves = root.m_nInitialMoves = static_cast<std::uint16_t>(nMoves != 0 ? nMoves : bWhite ? 401 : 400);
        root.m_byPass = 1;
        if (IsWhiteToMove(root) != bWhite)
            throw std::invalid_argument("plies and side to move disagree");
        root.m_pContext = m_context.get();
        root.m_pAnalysis = m_analysis.get();
        m_analysis->m_nAnalysisStart = root.m_nMoves;
        m_pNow = m_context->m_pRoot = &RootSlot(*m_context, root.m_nMoves);
        *m_pNow = root;
    }

    [[nodiscard]] TSearchContext& Context() { return *m_context; }
    [[nodiscard]] TChessboard& Root() { return *m_context->m_pRoot; }
    [[nodiscard]] TChessboard& Now() { return *m_pNow; }

    /// Makes the move in the slot of the child and stays where it is. Returns the maker's result.
    template <TMakerRules kRules = kSolving> int Try(TMove move, bool bLegal = false) {
        m_pChild = CopyToChild(m_pNow);
        return IsWhiteToMove(*m_pNow) ? MakeWhiteMove<kRules>(*m_pChild, move)
                                      : MakeBlackMove<kRules>(*m_pChild, move, bLegal);
    }
    template <TMakerRules kRules = kSolving> int Try(std::string_view move) { return Try<kRules>(MoveOf(move)); }

    /// The position that the last Try made.
    [[nodiscard]] TChessboard& Tried() { return *m_pChild; }
    /// Goes on from the position that the last Try made.
    void Accept() { m_pNow = m_pChild; }

    /// Plays moves separated by blanks.
    template <TMakerRules kRules = kSolving> CLine& Play(std::string_view moves) {
        for (const std::string& move : Words(moves)) {
            if (Try<kRules>(move) == 0)
                throw std::invalid_argument("cannot play " + move);
            Accept();
        }
        return *this;
    }

    /// The full list of the side to move.
    [[nodiscard]] TTexts Moves() const {
        return IsWhiteToMove(*m_pNow) ? Listed(GenerateWhiteMoves, *m_pNow) : Listed(GenerateBlackMoves, *m_pNow);
    }
    /// Those of them that the maker lets stand, sorted.
    template <TMakerRules kRules = kLegalityOnly> [[nodiscard]] TTexts StandingMoves() {
        return Standing<kRules>(Moves());
    }

    /// Those moves that the maker lets stand, sorted.
    template <TMakerRules kRules = kLegalityOnly> [[nodiscard]] TTexts Standing(TTexts moves) {
        std::erase_if(moves, [this](const std::string& move) { return Try<kRules>(move) == 0; });
        return Sorted(std::move(moves));
    }

    [[nodiscard]] bool Has(std::string_view move) const {
        const TTexts moves = Moves();
        return std::ranges::find(moves, move) != moves.end();
    }

  private:
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    std::unique_ptr<TAnalysis> m_analysis = std::make_unique<TAnalysis>(); // Black's maker asks the search for mates
    TChessboard* m_pNow = nullptr;
    TChessboard* m_pChild = nullptr;
};

[[nodiscard]] inline std::string TextOf(const reference::Move& move) {
    std::string text = TextOf(TSquare{move.from}) + TextOf(TSquare{move.to});
    if (move.promotion != 0)
        text += move.promotion;
    return text;
}

[[nodiscard]] inline TTexts SortedTexts(const std::vector<reference::Move>& moves) {
    TTexts texts;
    for (const reference::Move move : moves)
        texts.push_back(TextOf(move));
    return Sorted(std::move(texts));
}

/// The same placement with the other side to move, for questions about the side that is not.
[[nodiscard]] inline reference::Position WithSideToMove(reference::Position position, reference::Side side) {
    position.toMove = side;
    position.enPassant = reference::kNoSquare;
    return position;
}

/// With Black's last man gone White has no more than bishops of one colour.
[[nodiscard]] inline bool IsBareKingWithoutMate(const reference::Position& after) {
    bool bBishop[2] = {false, false};
    for (int square = 0; square < kSquares; ++square) {
        const char man = after.board[static_cast<std::size_t>(square)];
        if (man == 'B')
            bBishop[(square / 8 + square) % 2] = true;
        else if (man != reference::kEmpty && man != 'K' && man != 'k')
            return false;
    }
    return !(bBishop[0] && bBishop[1]);
}

/// Plays random games by both sets of rules and calls visit(line, truth) at every position, the last one included.
/// Stops at the first fatal failure. With kSolving a refused capture that leaves no mating material ends its game.
template <TMakerRules kRules, class TVisit>
void WalkRandomGames(std::uint64_t nSeed, int nGames, int nPlies, TVisit&& visit) {
    std::mt19937_64 rng(nSeed);
    for (int game = 0; game < nGames; ++game) {
        const std::vector<reference::GameStep> steps = reference::RandomGame(rng, nPlies);
        if (steps.empty())
            continue;
        CLine line(steps.front().fen);
        reference::Position truth = reference::FromFen(steps.front().fen);
        for (const reference::GameStep& step : steps) {
            SCOPED_TRACE(step.fen + " " + step.move);
            visit(line, truth);
            if (testing::Test::HasFatalFailure())
                return;
            const reference::Move move = reference::MoveFromNotation(truth, step.move);
            truth = reference::Play(truth, move);
            if (line.Try<kRules>(TextOf(move)) == 0) {
                ASSERT_TRUE(kRules.m_bUselessMoves && IsBareKingWithoutMate(truth));
                break;
            }
            line.Accept();
            ASSERT_EQ(WriteFEN(line.Now(), false), reference::Placement(truth));
        }
        if (WriteFEN(line.Now(), false) == reference::Placement(truth))
            visit(line, truth);
        if (testing::Test::HasFatalFailure())
            return;
    }
}

} // namespace quillon::test
