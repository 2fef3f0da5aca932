// The makers keep every derived field current. Truth: the record rebuilt from the board, and the reference rules.

#include <gtest/gtest.h>

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
    WalkRandomGames<kLegalityOnly>(static_cast<std::uint64_t>(GetParam()), kGames, kPlies,
                                   [](CLine& line, const auto&) {
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
        2000u + static_cast<std::uint64_t>(GetParam()), kGames, kPlies,
        [](CLine& line, const reference::Position& truth) {
            ASSERT_EQ(line.Now().m_whiteChecker, ExpectedChecker(truth, reference::Side::White));
            ASSERT_EQ(line.Now().m_blackChecker, ExpectedChecker(truth, reference::Side::Black));
            for (const reference::Move move : reference::LegalMoves(truth)) {
                ASSERT_NE(line.Try<kLegalityOnly>(TextOf(move)), 0) << TextOf(move);
                const reference::Position after = reference::Play(truth, move);
                const TChessboard& b = line.Tried();
                ASSERT_EQ((IsWhiteToMove(b) ? b.m_whiteChecker : b.m_blackChecker) != kNoChecker,
                          reference::InCheck(after))
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
        const bool bEnPassant =
            (mover == 'P' || mover == 'p') && move.to == before.enPassant && move.from % 8 != move.to % 8;
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

// ---- promotions and lists, by name

TEST(WhitePromotion, MovesThePawnsCountToTheNewKind) {
    for (const auto& [letter, kind] : {std::pair{'Q', kQueen}, {'R', kRook}, {'B', kBishop}, {'N', kKnight}}) {
        CLine line("8/P6k/8/8/8/8/8/K7 w");
        line.Play(std::string("a7a8") + letter);
        TChessboard& b = line.Now();
        EXPECT_EQ(b.m_board[kA8], kWhite | kind);
        EXPECT_EQ(b.m_whitePawns, 0);
        EXPECT_EQ(CounterOf(b, static_cast<TFigure>(kWhite | kind)), 1);
        EXPECT_EQ((b.m_wBlackState & kWhiteQueenPromoted) != 0, kind == kQueen);
        EXPECT_NE(b.m_bWhiteListsValid, 0);
    }
}

TEST(WhitePromotion, SecondQueenMakesTheListsInvalidUntilBlackTakesOne) {
    CLine line("8/P6k/8/8/8/6r1/8/K5Q1 w");
    line.Play("a7a8Q");
    EXPECT_EQ(line.Now().m_bWhiteListsValid, 0);
    EXPECT_EQ(line.Now().m_whiteQueens, 2);
    line.Play("g3g1");
    EXPECT_NE(line.Now().m_bWhiteListsValid, 0);
    EXPECT_EQ(line.Now().m_whiteQueens, 1);
    EXPECT_EQ(line.Now().m_whiteQueenSquare, kA8);
}

TEST(WhitePromotion, BishopOnTheColourOfTheFirstMakesTheListsInvalid) {
    CLine same("8/P6k/8/8/8/8/6B1/K7 w"); // a8 and g2 are light
    same.Play("a7a8B");
    EXPECT_EQ(same.Now().m_bWhiteListsValid, 0);
    CLine opposite("8/P6k/8/8/8/8/5B2/K7 w");
    opposite.Play("a7a8B");
    EXPECT_NE(opposite.Now().m_bWhiteListsValid, 0);
    EXPECT_EQ(opposite.Now().m_whiteBishopSquares, (std::array<TSquare, 2>{SquareOf("f2"), kA8}));
}

TEST(WhitePromotion, ThirdRookMakesTheListsInvalid) {
    CLine line("8/P6k/8/8/8/8/8/K1RR4 w");
    line.Play("a7a8R");
    EXPECT_EQ(line.Now().m_whiteRooks, 3);
    EXPECT_EQ(line.Now().m_bWhiteListsValid, 0);
}

TEST(BlackPromotion, CountsAndSaturatesAtThree) {
    CLine line("K7/8/8/8/7P/8/ppppp2k/8 b");
    line.Context().m_bUnderPromotionEqual = true;
    line.Play("a2a1Q");
    EXPECT_FALSE(line.Context().m_bUnderPromotionEqual);
    EXPECT_EQ(line.Now().m_board[kA1], kBlackQueen);
    EXPECT_EQ(line.Now().m_blackQueens, 1);
    EXPECT_EQ(line.Now().m_blackPawns, 4);
    EXPECT_EQ(line.Now().m_wBlackState & kBlackPromotionsMask, 1);
    line.Play("a8b8 b2b1N");
    EXPECT_EQ(line.Now().m_wBlackState & kBlackPromotionsMask, 2);
    EXPECT_EQ(line.Now().m_blackKnights, 1);
    line.Play("h4h5 c2c1R h5h6 d2d1B");
    EXPECT_EQ(line.Now().m_wBlackState & kBlackPromotionsMask, 3);
    line.Play("h6h7 e2e1Q");
    EXPECT_EQ(line.Now().m_wBlackState & kBlackPromotionsMask, 3);
    EXPECT_EQ(BlackRing(line.Now()), 0) << "the ring beside the counter is untouched";
    EXPECT_EQ(line.Now().m_blackPawns, 0);
}

TEST(BlackPromotion, LeavesTheUnderPromotionMarkToOtherMoves) {
    CLine line("K7/8/8/8/8/8/p6k/8 b");
    line.Context().m_bUnderPromotionEqual = true;
    line.Play("h2h1");
    EXPECT_TRUE(line.Context().m_bUnderPromotionEqual);
}

TEST(WhiteLists, CapturedFirstEntryIsReplacedByTheSecond) {
    CLine line("7k/8/8/8/8/8/8/RR2K2r b");
    PutFigure(line.Root(), SquareOf("a3"), kBlackRook);
    line.Play("a3a1");
    EXPECT_EQ(line.Now().m_whiteRooks, 1);
    EXPECT_EQ(line.Now().m_whiteRookSquares[0], SquareOf("b1"));
    EXPECT_NE(line.Now().m_bWhiteListsValid, 0);
}

TEST(WhiteLists, SameColouredBishopCapturedMakesThemValidAgain) {
    CLine line("7k/8/8/8/8/b7/8/2B1BK2 b");
    ASSERT_EQ(line.Root().m_bWhiteListsValid, 0);
    line.Play("a3c1");
    EXPECT_NE(line.Now().m_bWhiteListsValid, 0);
    EXPECT_EQ(line.Now().m_whiteBishops, 1);
    EXPECT_EQ(line.Now().m_whiteBishopSquares[0], kE1);
}

TEST(WhiteLists, StayInvalidWhileTheBoundsAreBroken) {
    CLine line("6k1/8/8/8/8/b7/P7/QQR2K2 b");
    line.Play("a3c1");
    EXPECT_EQ(line.Now().m_bWhiteListsValid, 0);
}

// ---- captures

TEST(CaptureRecords, FirstThreeOfEachColourAreKept) {
    CLine line("7k/8/8/1p1p4/P1P5/8/8/K7 w");
    line.Play("a4b5");
    EXPECT_EQ(line.Now().m_bySideState & kBlackCapturesMask, 1 << kBlackCapturesShift);
    EXPECT_EQ(line.Context().m_capturedBlack[0].m_figure, kBlackPawn);
    EXPECT_EQ(line.Context().m_capturedBlack[0].m_square, SquareOf("b5"));
    line.Play("d5c4");
    EXPECT_EQ(line.Now().m_bySideState & kWhiteCapturesMask, 1 << kWhiteCapturesShift);
    EXPECT_EQ(line.Context().m_capturedWhite[0].m_figure, kWhitePawn);
    EXPECT_EQ(line.Context().m_capturedWhite[0].m_square, SquareOf("c4"));
}

TEST(CaptureRecords, EnPassantTellsThePawnsOwnSquare) {
    CLine white("7k/3p4/8/4P3/8/8/8/K7 b");
    white.Play("d7d5 e5d6");
    EXPECT_EQ(white.Context().m_capturedBlack[0].m_square, SquareOf("d5"));
    CLine black("7k/8/8/8/4p3/8/3P4/K7 w");
    black.Play("d2d4 e4d3");
    EXPECT_EQ(black.Context().m_capturedWhite[0].m_square, SquareOf("d4"));
}

TEST(CaptureRecords, FourthCaptureIsNotRecorded) {
    CLine line("7k/8/8/p1p1p1p1/1P1P1P2/8/8/K1R5 w");
    line.Play<kLegalityOnly>("b4a5 h8g8 d4c5 g8h8 f4e5 h8g8");
    EXPECT_EQ(line.Now().m_bySideState & kBlackCapturesMask, 3 << kBlackCapturesShift);
    EXPECT_EQ(line.Context().m_capturedBlack[2].m_square, SquareOf("e5"));
    line.Play<kLegalityOnly>("c1g1 g8h8 g1g5");
    EXPECT_EQ(line.Now().m_bySideState & kBlackCapturesMask, 3 << kBlackCapturesShift);
    EXPECT_EQ(line.Context().m_capturedBlack[2].m_square, SquareOf("e5"));
    EXPECT_EQ(line.Now().m_bySideState & kWhiteCapturesMask, 0);
}

} // namespace
} // namespace quillon::test
