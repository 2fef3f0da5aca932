#include "support/random_positions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <limits>
#include <string_view>

namespace reference {

namespace {

bool Empty(const Position& position, int square) { return position.board[static_cast<std::size_t>(square)] == kEmpty; }
void Put(Position& position, int square, char man) { position.board[static_cast<std::size_t>(square)] = man; }

int Distance(int a, int b) { return std::max(std::abs(a % 8 - b % 8), std::abs(a / 8 - b / 8)); }

char DrawFrom(std::mt19937_64& rng, std::string_view letters) {
    return letters[static_cast<std::size_t>(DrawInt(rng, static_cast<int>(letters.size())))];
}

char Black(char kind) { return static_cast<char>(std::tolower(static_cast<unsigned char>(kind))); }

/// A square where the man may be put: empty, and not rank 1 or 8 for a pawn. Tests `allowed` on each square drawn.
/// kNoSquare if a good many draws found none.
int DrawSquare(std::mt19937_64& rng, const Position& position, char man, const std::function<bool(int)>& allowed) {
    for (int attempt = 0; attempt < 400; ++attempt) {
        const int square = DrawInt(rng, 64);
        const bool edgeRank = square / 8 == 0 || square / 8 == 7;
        const bool pawn = man == 'P' || man == 'p';
        if (Empty(position, square) && !(pawn && edgeRank) && allowed(square))
            return square;
    }
    return kNoSquare;
}

bool Anywhere(int) { return true; }

/// Puts the man on a drawn square, if one was found.
void PutSomewhere(std::mt19937_64& rng, Position& position, char man, const std::function<bool(int)>& allowed) {
    const int square = DrawSquare(rng, position, man, allowed);
    if (square != kNoSquare)
        Put(position, square, man);
}

Position EmptyBoard() {
    Position position;
    position.board.fill(kEmpty);
    return position;
}

// ---- what makes a diagram acceptable

/// No more promoted men than pawns are missing. Bishops of one colour of squares are not looked at more closely.
bool MaterialIsPossible(const Position& position, Side side) {
    const auto count = [&](char kind) {
        return static_cast<int>(std::ranges::count(position.board, side == Side::White ? kind : Black(kind)));
    };
    const int promoted = std::max(0, count('Q') - 1) + std::max(0, count('R') - 2) + std::max(0, count('B') - 2) +
                         std::max(0, count('N') - 2);
    return count('K') == 1 && count('P') + promoted <= 8;
}

int CountMen(const Position& position) { return 64 - static_cast<int>(std::ranges::count(position.board, kEmpty)); }

bool IsProblemDiagram(const Position& position, int nMen) {
    if (CountMen(position) != nMen || !MaterialIsPossible(position, Side::White) ||
        !MaterialIsPossible(position, Side::Black))
        return false;
    const int whiteKing = KingSquare(position, Side::White);
    return Distance(whiteKing, KingSquare(position, Side::Black)) > 1 && !InCheck(position, Side::Black) &&
           CountAttackers(position, whiteKing, Side::Black) <= 2 && HasLegalMove(position);
}

/// Arranges until the result is acceptable.
std::string ArrangeUntilLegal(int nMen, const std::function<void(Position&)>& arrange) {
    while (true) {
        Position position = EmptyBoard();
        arrange(position);
        if (IsProblemDiagram(position, nMen))
            return Placement(position);
    }
}

constexpr std::string_view kAnyWhite = "QRRBBNNPPPPP";
constexpr std::string_view kAnyBlack = "qrrbbnnppppp";

void PutKings(std::mt19937_64& rng, Position& position) {
    PutSomewhere(rng, position, 'K', Anywhere);
    const int whiteKing = KingSquare(position, Side::White);
    PutSomewhere(rng, position, 'k', [&](int square) { return Distance(square, whiteKing) > 1; });
}

void ArrangeAny(std::mt19937_64& rng, Position& position, int nMen) {
    PutKings(rng, position);
    for (int man = 2; man < nMen; ++man)
        PutSomewhere(rng, position, Chance(rng, 50) ? DrawFrom(rng, kAnyWhite) : DrawFrom(rng, kAnyBlack), Anywhere);
}

void ArrangeMating(std::mt19937_64& rng, Position& position, int nMen) {
    const bool corner = Chance(rng, 40);
    PutSomewhere(rng, position, 'k', [&](int square) {
        const bool edgeFile = square % 8 == 0 || square % 8 == 7;
        const bool edgeRank = square / 8 == 0 || square / 8 == 7;
        return corner ? edgeFile && edgeRank : edgeFile || edgeRank;
    });
    const int blackKing = KingSquare(position, Side::Black);
    PutSomewhere(rng, position, 'K', [&](int square) {
        const int distance = Distance(square, blackKing);
        return distance == 2 || distance == 3;
    });
    for (int man = 2; man < nMen; ++man) {
        if (man % 5 != 1 && man % 5 != 3) // three men of five are White's
            PutSomewhere(rng, position, DrawFrom(rng, "QQRRRBBNNP"), Anywhere);
        else if (Chance(rng, 60))
            PutSomewhere(rng, position, DrawFrom(rng, "rbbnnpppp"),
                         [&](int square) { return Distance(square, blackKing) == 1; });
        else
            PutSomewhere(rng, position, DrawFrom(rng, kAnyBlack), Anywhere);
    }
}

/// A white pawn on its fifth rank and a black one that can double-step beside it, or the same the other way round.
void PutEnPassantPair(std::mt19937_64& rng, Position& position) {
    const bool blackSteps = Chance(rng, 50);
    const int file = DrawInt(rng, 8);
    const int beside = file == 0 ? 1 : file == 7 ? 6 : file + (Chance(rng, 50) ? 1 : -1);
    const int home = (blackSteps ? 6 : 1) * 8 + file;
    const int taker = (blackSteps ? 4 : 3) * 8 + beside;
    if (!Empty(position, home) || !Empty(position, taker))
        return;
    Put(position, home, blackSteps ? 'p' : 'P');
    Put(position, taker, blackSteps ? 'P' : 'p');
}

void ArrangePawns(std::mt19937_64& rng, Position& position, int nMen) {
    PutKings(rng, position);
    if (nMen >= 4 && Chance(rng, 60))
        PutEnPassantPair(rng, position);
    while (CountMen(position) < nMen) {
        const bool white = Chance(rng, 55);
        const int theme = DrawInt(rng, 100);
        if (theme < 30) // about to promote
            PutSomewhere(rng, position, white ? 'P' : 'p',
                         [&](int square) { return white ? square / 8 >= 5 : square / 8 <= 2; });
        else if (theme < 75)
            PutSomewhere(rng, position, white ? 'P' : 'p', Anywhere);
        else
            PutSomewhere(rng, position, DrawFrom(rng, white ? "QRBN" : "qrbn"), Anywhere);
    }
}

void PutHomeRooks(std::mt19937_64& rng, Position& position, bool white, int most) {
    const int rank = white ? 0 : 56;
    const int which = most < 2 ? DrawInt(rng, 2) : DrawInt(rng, 3); // 0 the a-rook, 1 the h-rook, 2 both
    if (which != 1)
        Put(position, rank, white ? 'R' : 'r');
    if (which != 0)
        Put(position, rank + 7, white ? 'R' : 'r');
}

void ArrangeCastling(std::mt19937_64& rng, Position& position, int nMen) {
    const int sides = nMen < 4 ? DrawInt(rng, 2) : DrawInt(rng, 3); // 0 White, 1 Black, 2 both
    const bool whiteHome = sides != 1;
    const bool blackHome = sides != 0;
    const int mostRooks = nMen >= 6 || (nMen >= 4 && sides != 2) ? 2 : 1;
    if (whiteHome) {
        Put(position, 4, 'K');
        PutHomeRooks(rng, position, true, mostRooks);
    }
    if (blackHome) {
        Put(position, 60, 'k');
        PutHomeRooks(rng, position, false, mostRooks);
    }
    if (!whiteHome)
        PutSomewhere(rng, position, 'K', Anywhere);
    if (!blackHome)
        PutSomewhere(rng, position, 'k', Anywhere);
    while (CountMen(position) < nMen) {
        const bool offHomeRanks = Chance(rng, 80);
        PutSomewhere(rng, position, Chance(rng, 55) ? DrawFrom(rng, kAnyWhite) : DrawFrom(rng, kAnyBlack),
                     [&](int square) { return !offHomeRanks || (square / 8 != 0 && square / 8 != 7); });
    }
}

void ArrangeMinor(std::mt19937_64& rng, Position& position, int nMen) {
    PutSomewhere(rng, position, 'k', [](int square) { return square % 8 == 0 || square % 8 == 7 || square >= 56; });
    const int blackKing = KingSquare(position, Side::Black);
    PutSomewhere(rng, position, 'K', [&](int square) {
        const int distance = Distance(square, blackKing);
        return distance >= 2 && distance <= 5;
    });
    for (int man = 2; man < nMen; ++man) {
        if (man % 3 != 2)
            PutSomewhere(rng, position, DrawFrom(rng, "BBNNP"), Anywhere);
        else if (Chance(rng, 50))
            PutSomewhere(rng, position, DrawFrom(rng, "bnppp"),
                         [&](int square) { return Distance(square, blackKing) == 1; });
        else
            PutSomewhere(rng, position, DrawFrom(rng, kAnyBlack), Anywhere);
    }
}

/// Castling, promotion, en passant, or a double step that lets the opponent take en passant.
bool IsSpecial(const Position& position, Move move) {
    const char kind = position.board[move.from];
    if (kind == 'K' || kind == 'k')
        return std::abs(move.from - move.to) == 2;
    if (kind != 'P' && kind != 'p')
        return false;
    const Position after = Play(position, move);
    return move.promotion != 0 || move.to == position.enPassant ||
           (after.enPassant != kNoSquare && std::ranges::any_of(LegalMoves(after), [&](Move reply) {
                return reply.to == after.enPassant &&
                       (after.board[reply.from] == 'P' || after.board[reply.from] == 'p');
            }));
}

/// Any of the moves, but often a special one if there is one: in evenly random play they would hardly ever come up.
Move DrawMove(std::mt19937_64& rng, const Position& position, const std::vector<Move>& moves) {
    std::vector<Move> special;
    if (Chance(rng, 60))
        std::ranges::copy_if(moves, std::back_inserter(special), [&](Move move) { return IsSpecial(position, move); });
    const std::vector<Move>& from = special.empty() ? moves : special;
    return from[static_cast<std::size_t>(DrawInt(rng, static_cast<int>(from.size())))];
}

} // namespace

std::uint64_t Draw(std::mt19937_64& rng, std::uint64_t bound) {
    // Draws from the last, incomplete run of `bound` values are thrown away, so that all results are equally likely.
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t incomplete = (kMax % bound + 1) % bound;
    while (true) {
        const std::uint64_t value = rng();
        if (value <= kMax - incomplete)
            return value % bound;
    }
}

int DrawInt(std::mt19937_64& rng, int bound) { return static_cast<int>(Draw(rng, static_cast<std::uint64_t>(bound))); }

bool Chance(std::mt19937_64& rng, int percent) { return DrawInt(rng, 100) < percent; }

std::string RandomPlacement(std::mt19937_64& rng, int nMen) {
    return ArrangeUntilLegal(nMen, [&](Position& position) { ArrangeAny(rng, position, nMen); });
}

std::string RandomMatingPlacement(std::mt19937_64& rng, int nMen) {
    return ArrangeUntilLegal(nMen, [&](Position& position) { ArrangeMating(rng, position, nMen); });
}

std::string RandomPawnPlacement(std::mt19937_64& rng, int nMen) {
    return ArrangeUntilLegal(nMen, [&](Position& position) { ArrangePawns(rng, position, nMen); });
}

std::string RandomCastlingPlacement(std::mt19937_64& rng, int nMen) {
    return ArrangeUntilLegal(nMen, [&](Position& position) { ArrangeCastling(rng, position, nMen); });
}

std::string RandomMinorPlacement(std::mt19937_64& rng, int nMen) {
    return ArrangeUntilLegal(nMen, [&](Position& position) { ArrangeMinor(rng, position, nMen); });
}

std::string RandomAnyPlacement(std::mt19937_64& rng) {
    using Generator = std::string (*)(std::mt19937_64&, int);
    static constexpr std::array<Generator, 5> kGenerators{RandomPlacement, RandomMatingPlacement, RandomPawnPlacement,
                                                          RandomCastlingPlacement, RandomMinorPlacement};
    const auto which = static_cast<std::size_t>(DrawInt(rng, static_cast<int>(kGenerators.size())));
    const int nMen = 4 + DrawInt(rng, 9);
    return kGenerators[which](rng, nMen);
}

std::vector<GameStep> RandomGame(std::mt19937_64& rng, int plies) {
    Position position =
        ProblemFromFen(Chance(rng, 15) ? "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR" : RandomAnyPlacement(rng));
    std::vector<GameStep> game;
    for (int ply = 0; ply < plies; ++ply) {
        const std::vector<Move> moves = LegalMoves(position);
        if (moves.empty())
            break;
        const Move move = DrawMove(rng, position, moves);
        game.push_back({ToFen(position), LongNotation(position, move)});
        position = Play(position, move);
    }
    return game;
}

} // namespace reference
