// The makers keep every derived field current. Truth: the record rebuilt from the board, and the reference rules.

#include <gtest/gtest.h>

#include <bit>

#include "core/chessboard.h"
#include "core/positions.h"

namespace quillon::test {
namespace {

struct TCounts {
    std::array<int, 10> m_figures;
    std::array<int, 4> m_kings;
    std::array<int, 2> m_checkers;
    int m_nRing;
    bool m_bListsValid;

    friend bool operator==(const TCounts&, const TCounts&) = default;
};

TCounts CountsOf(const TChessboard& b) {
    return {{b.m_whiteQueens, b.m_blackQueens, b.m_whiteRooks, b.m_blackRooks, b.m_whiteBishops, b.m_blackBishops,
             b.m_whiteKnights, b.m_blackKnights, b.m_whitePawns, b.m_blackPawns},
            {b.m_whiteKingFile, b.m_whiteKingRank, b.m_blackKingFile, b.m_blackKingRank},
            {b.m_whiteChecker, b.m_blackChecker},
            BlackRing(b),
            b.m_bWhiteListsValid != 0};
}

std::ostream& operator<<(std::ostream& out, const TCounts& counts) {
    for (const int n : counts.m_figures)
        out << n << ' ';
    out << "kings " << counts.m_kings[0] << counts.m_kings[1] << counts.m_kings[2] << counts.m_kings[3];
    out << " checkers " << counts.m_checkers[0] << ' ' << counts.m_checkers[1];
    return out << " ring " << counts.m_nRing << " lists " << counts.m_bListsValid;
}

using TSquares = std::vector<TSquare>;

TSquares Entries(const std::array<TSquare, 2>& list, int nCount) {
    TSquares squares(list.begin(), list.begin() + nCount);
    std::ranges::sort(squares);
    return squares;
}

std::vector<TSquares> ListsOf(const TChessboard& b) {
    return {b.m_whiteQueens != 0 ? TSquares{b.m_whiteQueenSquare} : TSquares{},
            Entries(b.m_whiteRookSquares, b.m_whiteRooks), Entries(b.m_whiteBishopSquares, b.m_whiteBishops),
            Entries(b.m_whiteKnightSquares, b.m_whiteKnights)};
}

void ExpectAsRebuilt(const TChessboard& b) {
    TChessboard rebuilt = b;
    ASSERT_TRUE(TryRecountFigures(rebuilt, false));
    ASSERT_EQ(CountsOf(b), CountsOf(rebuilt));
    if (b.m_bWhiteListsValid != 0) {
        ASSERT_EQ(ListsOf(b), ListsOf(rebuilt));
    }
}

/// The attack scans behind the rebuilt record are code under test too, so checks are also held against the reference.
int ExpectedChecker(const reference::Position& truth, reference::Side side) {
    const reference::Side by = reference::Opponent(side);
    const int king = reference::KingSquare(truth, side);
    const int nAttackers = reference::CountAttackers(truth, king, by);
    if (nAttackers != 1)
        return nAttackers == 0 ? kNoChecker : kDoubleCheck;
    for (int square = 0; square < kSquares; ++square) { // the one whose removal ends the check
        reference::Position without = truth;
        char& man = without.board[static_cast<std::size_t>(square)];
        if (man == reference::kEmpty || man == 'K' || man == 'k')
            continue;
        man = side == reference::Side::White ? 'P' : 'p'; // keeps lines behind it closed
        if (square / 8 != 0 && square / 8 != 7 && reference::CountAttackers(without, king, by) == 0)
            return square;
        man = side == reference::Side::White ? 'N' : 'n';
        if (reference::CountAttackers(without, king, by) == 0)
            return square;
    }
    return -2;
}

class IncrementalFields : public testing::TestWithParam<int> {
  protected:
    static constexpr int kGames = 250;
    static constexpr int kPlies = 40;
};

TEST_P(IncrementalFields, EveryLegalMoveGivesTheRebuiltRecord) {
    WalkRandomGames<kLegalityOnly>(static_cast<std::uint64_t>(GetParam()), kGames, kPlies, [](CLine& line, const auto&) {
        for (const std::string& move : line.Moves()) {
            SCOPED_TRACE(move);
            if (line.Try<kLegalityOnly>(move) != 0) {
                ExpectAsRebuilt(line.Tried());
            }
        }
    });
}

TEST_P(IncrementalFields, EveryMoveThatASolveMakesGivesTheRebuiltRecord) {
    WalkRandomGames<kSolving>(1000u + static_cast<std::uint64_t>(GetParam()), kGames, kPlies,
                              [](CLine& line, const auto&) {
                                  for (const std::string& move : line.Moves()) {
                                      SCOPED_TRACE(move);
                                      if (line.Try<kSolving>(move) != 0) {
                                          ExpectAsRebuilt(line.Tried());
                                      }
                                  }
                              });
}

TEST_P(IncrementalFields, CheckersAreThoseOfTheReference) {
    WalkRandomGames<kLegalityOnly>(
        2000u + static_cast<std::uint64_t>(GetParam()), kGames, kPlies, [](CLine& line, const reference::Position& truth) {
            ASSERT_EQ(line.Now().m_whiteChecker, ExpectedChecker(truth, reference::Side::White));
            ASSERT_EQ(line.Now().m_blackChecker, ExpectedChecker(truth, reference::Side::Black));
            for (const reference::Move move : reference::LegalMoves(truth)) {
                ASSERT_NE(line.Try<kLegalityOnly>(TextOf(move)), 0) << TextOf(move);
                const reference::Position after = reference::Play(truth, move);
                const TChessboard& b = line.Tried();
                ASSERT_EQ((IsWhiteToMove(b) ? b.m_whiteChecker : b.m_blackChecker) != kNoChecker, reference::InCheck(after))
                    << TextOf(move);
            }
        });
}

INSTANTIATE_TEST_SUITE_P(Seeds, IncrementalFields, testing::Values(1, 2, 3, 4));

/// What a line has captured and promoted so far, told by the reference.
struct TStory {
    std::vector<std::pair<TFigure, TSquare>> m_capturedWhite, m_capturedBlack;
    int m_nBlackPromotions = 0;
    bool m_bWhiteQueenPromoted = false;
    bool m_bBareByCapture = false;
};

TFigure FigureOf(char letter) {
    constexpr std::string_view kLetters = "KQRBNPkqrbnp";
    constexpr TFigure kKinds[] = {kKing, kQueen, kRook, kBishop, kKnight, kPawn};
    const std::size_t index = kLetters.find(letter);
    return static_cast<TFigure>(kKinds[index % 6] | (index < 6 ? kWhite : kBlack));
}

bool IsBare(const reference::Position& position) {
    return std::ranges::none_of(position.board, [](char man) { return man >= 'a' && man <= 'z' && man != 'k'; });
}

void Tell(TStory& story, const reference::Position& before, reference::Move move) {
    const bool bWhite = before.toMove == reference::Side::White;
    if (move.promotion != 0 && !bWhite)
        ++story.m_nBlackPromotions;
    story.m_bWhiteQueenPromoted |= move.promotion == 'Q' && bWhite;
    if (!reference::IsCapture(before, move))
        return;
    const bool bEnPassant = before.board[move.to] == reference::kEmpty;
    const int square = bEnPassant ? move.to + (bWhite ? -8 : 8) : move.to;
    auto& captured = bWhite ? story.m_capturedBlack : story.m_capturedWhite;
    captured.emplace_back(FigureOf(before.board[static_cast<std::size_t>(square)]), static_cast<TSquare>(square));
    story.m_bBareByCapture |= bWhite && IsBare(reference::Play(before, move));
}

void ExpectRecorded(const std::array<TCaptureRecord, 3>& records, const TStory& story, bool bWhite) {
    const auto& captured = bWhite ? story.m_capturedWhite : story.m_capturedBlack;
    for (std::size_t i = 0; i < std::min<std::size_t>(captured.size(), 3); ++i) {
        ASSERT_EQ(records[i].m_figure, captured[i].first);
        ASSERT_EQ(records[i].m_square, captured[i].second);
    }
}

void ExpectTold(CLine& line, const TStory& story) {
    const TChessboard& b = line.Now();
    const auto upToThree = [](std::size_t n) { return static_cast<int>(std::min<std::size_t>(n, 3)); };
    ASSERT_EQ((b.m_bySideState & kWhiteCapturesMask) >> kWhiteCapturesShift, upToThree(story.m_capturedWhite.size()));
    ASSERT_EQ((b.m_bySideState & kBlackCapturesMask) >> kBlackCapturesShift, upToThree(story.m_capturedBlack.size()));
    ASSERT_EQ(BishopMode(b), 0);
    ExpectRecorded(line.Context().m_capturedWhite, story, true);
    ExpectRecorded(line.Context().m_capturedBlack, story, false);
    ASSERT_EQ(b.m_wBlackState & kBlackPromotionsMask, std::min(story.m_nBlackPromotions, 3));
    ASSERT_EQ((b.m_wBlackState & kWhiteQueenPromoted) != 0, story.m_bWhiteQueenPromoted);
    ASSERT_EQ((b.m_wKingState & kBareBlackKing) != 0, story.m_bBareByCapture);
}

void ExpectLinked(const TChessboard& child, const TChessboard& parent, const TMove& move, bool bEnPassant) {
    ASSERT_EQ(child.m_pPrevious, &parent);
    ASSERT_EQ(child.m_nMoves + 1, parent.m_nMoves);
    ASSERT_EQ(child.m_nInitialMoves, parent.m_nInitialMoves);
    ASSERT_TRUE(SameMove(child.m_lastMove, move));
    ASSERT_EQ(child.m_lastMove.m_nEnPassant, bEnPassant ? 1 : 0);
    ASSERT_EQ(child.m_pContext->m_repetition[child.m_nMoves + 1u], 0);
}

/// Plays the game of the steps and follows what the record tells of its history.
void FollowGame(const std::vector<reference::GameStep>& steps) {
    CLine line(steps.front().fen);
    TStory story;
    for (const reference::GameStep& step : steps) {
        SCOPED_TRACE(step.fen + " " + step.move);
        const reference::Position before = reference::FromFen(step.fen);
        const reference::Move move = reference::MoveFromNotation(before, step.move);
        const TChessboard* const parent = &line.Now();
        line.Context().m_repetition[line.Now().m_nMoves] = 7;
        ASSERT_NE(line.Try<kLegalityOnly>(TextOf(move)), 0);
        line.Accept();
        const char mover = before.board[move.from];
        const bool bEnPassant = (mover == 'P' || mover == 'p') && move.to == before.enPassant && move.from % 8 != move.to % 8;
        ExpectLinked(line.Now(), *parent, MoveOf(TextOf(move)), bEnPassant);
        Tell(story, before, move);
        ExpectTold(line, story);
        if (testing::Test::HasFatalFailure())
            return;
    }
}

TEST(IncrementalHistory, CapturesPromotionsAndLinksAreThoseOfTheGame) {
    std::mt19937_64 rng(77);
    for (int game = 0; game < 1500; ++game) {
        const std::vector<reference::GameStep> steps = reference::RandomGame(rng, 50);
        if (!steps.empty())
            FollowGame(steps);
        if (HasFatalFailure())
            return;
    }
}

} // namespace
} // namespace quillon::test
