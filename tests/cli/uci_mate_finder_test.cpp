// Mates from positions of games: castling rights, en passant and the side to move, against plain search by the rules.

#include <gtest/gtest.h>
#include <random>

#include "cli/mate_finder.h"
#include "cli/uci_client.h"
#include "cli/uci_position.h"
#include "cli/uci_text.h"
#include "support/reference_chess.h"

namespace quillon {
namespace {

class CSilentNotifier : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {}
    [[nodiscard]] bool AskYesNo(std::string_view, std::string_view) override { return false; }
};

TMateAnswer Find(const std::string& fen, int nMoves) {
    CSilentNotifier notifier;
    CMateFinder finder(TSolveRequest(), notifier);
    TMateAnswer answer = finder.FindMate(ReadGameFen(fen).m_position, nMoves);
    if (answer.m_verdict == EVerdict::Mate)
        finder.CompleteLine(ReadGameFen(fen).m_position, nMoves, answer);
    return answer;
}

std::string LineText(const TMateAnswer& answer) {
    std::string text;
    for (const TMove& move : answer.m_line)
        text += (text.empty() ? "" : " ") + UciMove(move);
    return text;
}

bool MatesIn(const reference::Position& position, int nMoves);

bool IsLost(const reference::Position& position, int nMoves) {
    const std::vector<reference::Move> replies = reference::LegalMoves(position);
    if (replies.empty())
        return reference::InCheck(position);
    return nMoves > 0 && std::ranges::all_of(replies, [&](const reference::Move& reply) {
               return MatesIn(reference::Play(position, reply), nMoves);
           });
}

bool MatesIn(const reference::Position& position, int nMoves) {
    return std::ranges::any_of(reference::LegalMoves(position), [&](const reference::Move& move) {
        return IsLost(reference::Play(position, move), nMoves - 1);
    });
}

/// The verdict is that of the rules, and the line of a mate is legal and mates.
bool ExpectTruth(const std::string& fen, int nMoves) {
    const TMateAnswer answer = Find(fen, nMoves);
    const bool bMate = MatesIn(reference::FromFen(fen), nMoves);
    EXPECT_EQ(answer.m_verdict, bMate ? EVerdict::Mate : EVerdict::NoMate) << fen << " #" << nMoves;
    if (answer.m_verdict == EVerdict::Mate) {
        EXPECT_EQ(testing::Judge(fen, WordsOf(LineText(answer))), "mate") << fen << " " << LineText(answer);
        EXPECT_LE(MovesOf(answer.m_line), nMoves);
    }
    return bMate;
}

/// The field decides: with it there is a mate that begins with `key`, without it there is none.
void ExpectEnPassantDecides(const std::string& board, const std::string& square, int nMoves, const std::string& key) {
    const std::string with = board + " " + square + " 0 1", without = board + " - 0 1";
    const TMateAnswer answer = Find(with, nMoves);
    EXPECT_EQ(answer.m_verdict, EVerdict::Mate) << with;
    EXPECT_EQ(LineText(answer).substr(0, 4), key) << with;
    EXPECT_EQ(testing::Judge(with, WordsOf(LineText(answer))), "mate") << with;
    EXPECT_EQ(Find(without, nMoves).m_verdict, EVerdict::NoMate) << without;
}

TEST(MateFinder, EnPassantMatesOnlyWhenItMayBeTaken) {
    ExpectEnPassantDecides("8/N7/7R/6pP/7k/5K2/8/2B5 w -", "g6", 1, "h5g6");
    ExpectEnPassantDecides("4N3/8/3B1K1k/6pP/7R/8/8/8 w -", "g6", 1, "h5g6");
    ExpectEnPassantDecides("2b5/8/5k2/7K/6Pp/7r/n7/8 b -", "g3", 1, "h4g3");
    ExpectEnPassantDecides("8/8/8/4Pp2/8/2K2N2/k7/6RB w -", "f6", 2, "e5f6");
    ExpectEnPassantDecides("8/8/8/3RPp2/4N2k/8/4B3/7K w -", "f6", 2, "e5f6");
    ExpectEnPassantDecides("6rb/K7/2k2n2/8/4pP2/8/8/8 b -", "f3", 2, "e4f3");
}

struct TCastlingCase {
    const char* m_board;
    const char* m_fields;
    int m_nMoves;
    EVerdict m_verdict;
};

constexpr TCastlingCase kCastlingCases[] = {
    // White mates by castling.
    {"8/8/8/1p6/8/7B/7R/2k1K2R", "w K", 1, EVerdict::Mate},
    {"8/8/8/1p6/8/7B/7R/2k1K2R", "w -", 1, EVerdict::NoMate},
    {"2K1k2r/7r/7b/8/1P6/8/8/8", "b k", 1, EVerdict::Mate},
    {"2K1k2r/7r/7b/8/1P6/8/8/8", "b -", 1, EVerdict::NoMate},
    {"8/2p5/8/8/3R4/6B1/8/R3K1k1", "w Q", 2, EVerdict::Mate},
    {"8/2p5/8/8/3R4/6B1/8/R3K1k1", "w -", 2, EVerdict::NoMate},
    // Black's castling saves him.
    {"4k2r/2Q4p/8/4K3/8/8/8/2N5", "w k", 2, EVerdict::NoMate},
    {"4k2r/2Q4p/8/4K3/8/8/8/2N5", "w -", 2, EVerdict::Mate},
    {"2n5/8/8/8/4k3/8/2q4P/4K2R", "b K", 2, EVerdict::NoMate},
    {"2n5/8/8/8/4k3/8/2q4P/4K2R", "b -", 2, EVerdict::Mate},
    // One side's right is lost, the other's is not.
    {"4k2r/8/Q7/8/8/8/7p/R3K2B", "w Q", 2, EVerdict::Mate},
    {"4k2r/8/Q7/8/8/8/7p/R3K2B", "w Qk", 2, EVerdict::NoMate},
    {"4k2r/Q5B1/8/8/8/4p3/8/R3K3", "w Q", 2, EVerdict::Mate},
    {"4k2r/Q5B1/8/8/8/4p3/8/R3K3", "w -", 2, EVerdict::NoMate},
};

TEST(MateFinder, CastlingRightsDecide) {
    for (const TCastlingCase& row : kCastlingCases) {
        const std::string fen = std::string(row.m_board) + " " + row.m_fields + " - 0 1";
        EXPECT_EQ(Find(fen, row.m_nMoves).m_verdict, row.m_verdict) << fen;
        (void)ExpectTruth(fen, row.m_nMoves);
    }
}

TEST(MateFinder, BlackMates) {
    const TMateAnswer answer = Find("KN6/1P6/1k5q/8/8/8/8/8 b - - 0 1", 3);
    EXPECT_EQ(answer.m_verdict, EVerdict::Mate);
    EXPECT_EQ(testing::Judge("KN6/1P6/1k5q/8/8/8/8/8 b - - 0 1", WordsOf(LineText(answer))), "mate");
    EXPECT_EQ(Find("KN6/1P6/1k5q/8/8/8/8/8 b - - 0 1", 2).m_verdict, EVerdict::NoMate);
}

TEST(MateFinder, AStopStays) {
    CSilentNotifier notifier;
    CMateFinder finder(TSolveRequest(), notifier);
    finder.RequestStop();
    EXPECT_EQ(finder.FindMate(StartOfGame(), 20).m_verdict, EVerdict::Stopped);
}

TEST(MateFinder, CompletesALine) {
    const std::string fen = "8/8/8/8/8/1K5Q/1p6/kn6 w - - 0 1";
    CSilentNotifier notifier;
    CMateFinder finder(TSolveRequest(), notifier);
    const TGamePosition position = ReadGameFen(fen).m_position;
    TMateAnswer answer = finder.FindMate(position, 3);
    ASSERT_EQ(answer.m_verdict, EVerdict::Mate);
    answer.m_line.resize(1);
    answer.m_bToMate = false;
    finder.CompleteLine(position, 3, answer);
    EXPECT_TRUE(answer.m_bToMate);
    EXPECT_EQ(testing::Judge(fen, WordsOf(LineText(answer))), "mate");
}

/// Men on random empty squares, pawns not on the first and last ranks.
class CBoardMaker {
  public:
    explicit CBoardMaker(unsigned nSeed) : m_random(nSeed) { m_position.board.fill(reference::kEmpty); }

    void Put(char man, int square) { m_position.board[static_cast<std::size_t>(square)] = man; }
    void PutSomewhere(char man) {
        for (;;) {
            const int square = static_cast<int>(m_random() % 64);
            const bool bPawnsOwn = (man != 'P' && man != 'p') || (square >= 8 && square < 56);
            if (bPawnsOwn && m_position.board[static_cast<std::size_t>(square)] == reference::kEmpty) {
                Put(man, square);
                return;
            }
        }
    }
    [[nodiscard]] bool IsEmpty(int square) const {
        return m_position.board[static_cast<std::size_t>(square)] == reference::kEmpty;
    }
    [[nodiscard]] int Below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }

    /// The FEN, empty if the side that is not to move is in check.
    [[nodiscard]] std::string Fen(const std::string& fields) const {
        const std::string fen = reference::Placement(m_position) + " " + fields;
        const reference::Position read = reference::FromFen(fen);
        return reference::InCheck(read, reference::Opponent(read.toMove)) ? std::string() : fen;
    }

  private:
    std::mt19937 m_random;
    reference::Position m_position;
};

std::string RandomEnPassantFen(unsigned nSeed) {
    CBoardMaker maker(nSeed);
    const bool bWhite = maker.Below(2) == 0;
    const int file = 1 + maker.Below(6);
    const int rank = bWhite ? 4 : 3, passedRank = bWhite ? 5 : 2, homeRank = bWhite ? 6 : 1;
    maker.Put(bWhite ? 'p' : 'P', rank * 8 + file);
    maker.Put(bWhite ? 'P' : 'p', rank * 8 + file + (maker.Below(2) == 0 ? 1 : -1));
    for (const char man : std::string(bWhite ? "kKQRB" : "kKqrb"))
        maker.PutSomewhere(man);
    if (!maker.IsEmpty(passedRank * 8 + file) || !maker.IsEmpty(homeRank * 8 + file))
        return {};
    return maker.Fen(std::string(bWhite ? "w - " : "b - ") + static_cast<char>('a' + file) +
                     static_cast<char>('1' + passedRank) + " 0 1");
}

TEST(MateFinder, EnPassantAgreesWithTheRules) {
    int nMates = 0;
    for (unsigned nSeed = 1; nSeed <= 900; ++nSeed) {
        const std::string fen = RandomEnPassantFen(nSeed);
        if (fen.empty())
            continue;
        for (const int nMoves : {1, 2})
            nMates += ExpectTruth(fen, nMoves) ? 1 : 0;
    }
    EXPECT_GE(nMates, 100);
}

std::string RandomCastlingFen(unsigned nSeed) {
    CBoardMaker maker(nSeed);
    const bool bWhite = maker.Below(2) == 0;
    for (const char man : std::string("KR"))
        maker.Put(man, man == 'K' ? 4 : 7 * maker.Below(2));
    if (maker.Below(2) == 0 || !bWhite) {
        maker.Put('k', 60);
        maker.Put('r', 56 + 7 * maker.Below(2));
    } else {
        maker.PutSomewhere('k');
    }
    for (const char man : std::string(bWhite ? "QRB" : "qrb"))
        maker.PutSomewhere(man);
    std::string rights;
    for (const char right : std::string("KQkq"))
        if (maker.Below(2) == 0)
            rights += right;
    return maker.Fen((bWhite ? "w " : "b ") + (rights.empty() ? "-" : rights) + " - 0 1");
}

TEST(MateFinder, CastlingAgreesWithTheRules) {
    int nMates = 0, nDecided = 0;
    for (unsigned nSeed = 1; nSeed <= 1000; ++nSeed) {
        const std::string fen = RandomCastlingFen(nSeed);
        if (fen.empty())
            continue;
        const bool bMate = ExpectTruth(fen, 2);
        nMates += bMate ? 1 : 0;
        reference::Position all = reference::FromFen(fen);
        const std::string side = all.toMove == reference::Side::White ? " w" : " b";
        all = reference::FromFen(reference::Placement(all) + side + " KQkq - 0 1");
        nDecided += MatesIn(all, 2) != bMate ? 1 : 0;
    }
    EXPECT_GE(nMates, 50);
    EXPECT_GE(nDecided, 3) << "positions where the castling field decides";
}

TEST(MateFinder, LongMatesWithRightsOfOneSideAreNeverWrong) {
    for (const char* fen : {"4k2r/8/Q7/8/8/8/7p/R3K2B w Q - 0 1", "4k2r/8/8/8/8/8/8/R3K2R w KQ - 0 1"}) {
        const TMateAnswer answer = Find(fen, 3);
        EXPECT_NE(answer.m_verdict, EVerdict::Stopped);
        const EVerdict wrong = MatesIn(reference::FromFen(fen), 3) ? EVerdict::NoMate : EVerdict::Mate;
        EXPECT_NE(answer.m_verdict, wrong) << fen;
    }
}

} // namespace
} // namespace quillon
