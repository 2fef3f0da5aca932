#include "support/reference_chess.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <stdexcept>

namespace reference {

namespace {

constexpr std::string_view kMen = "KQRBNPkqrbnp";

constexpr int FileOf(int square) { return square % 8; }
constexpr int RankOf(int square) { return square / 8; }
constexpr int SquareAt(int file, int rank) { return rank * 8 + file; }

constexpr int kA1 = 0, kC1 = 2, kD1 = 3, kE1 = 4, kF1 = 5, kG1 = 6, kH1 = 7;
constexpr int kA8 = 56, kE8 = 60, kH8 = 63;

// ---- geometry: where a man would get to on an empty board

struct SquareList {
    std::array<std::uint8_t, 8> squares{};
    std::size_t count = 0;

    constexpr void Add(int square) { squares[count++] = static_cast<std::uint8_t>(square); }
    [[nodiscard]] constexpr const std::uint8_t* begin() const { return squares.data(); }
    [[nodiscard]] constexpr const std::uint8_t* end() const { return squares.data() + count; }
};

using ListPerSquare = std::array<SquareList, 64>;

struct Step {
    int file;
    int rank;
};

constexpr bool OnBoard(int file, int rank) { return file >= 0 && file < 8 && rank >= 0 && rank < 8; }

constexpr std::array<Step, 8> kKingSteps{{{0, 1}, {0, -1}, {1, 0}, {-1, 0}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}}};
constexpr std::array<Step, 8> kKnightSteps{{{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}}};

constexpr ListPerSquare Leaps(const std::array<Step, 8>& steps) {
    ListPerSquare leaps{};
    for (int square = 0; square < 64; ++square)
        for (const Step step : steps)
            if (OnBoard(FileOf(square) + step.file, RankOf(square) + step.rank))
                leaps[static_cast<std::size_t>(square)].Add(square + step.file + 8 * step.rank);
    return leaps;
}

constexpr ListPerSquare Rays(Step step) {
    ListPerSquare rays{};
    for (int square = 0; square < 64; ++square) {
        int file = FileOf(square) + step.file;
        int rank = RankOf(square) + step.rank;
        for (; OnBoard(file, rank); file += step.file, rank += step.rank)
            rays[static_cast<std::size_t>(square)].Add(SquareAt(file, rank));
    }
    return rays;
}

constexpr ListPerSquare kKingLeaps = Leaps(kKingSteps);
constexpr ListPerSquare kKnightLeaps = Leaps(kKnightSteps);
// The directions of the king's steps: the first four are a rook's, the last four a bishop's.
constexpr std::array<ListPerSquare, 8> kRays{Rays(kKingSteps[0]), Rays(kKingSteps[1]), Rays(kKingSteps[2]),
                                             Rays(kKingSteps[3]), Rays(kKingSteps[4]), Rays(kKingSteps[5]),
                                             Rays(kKingSteps[6]), Rays(kKingSteps[7])};

struct Directions {
    std::size_t first;
    std::size_t last; // exclusive
};

constexpr Directions DirectionsOf(char kind) {
    return kind == 'R' ? Directions{0, 4} : kind == 'B' ? Directions{4, 8} : Directions{0, 8};
}

// ---- men

char ManAt(const Position& position, int square) { return position.board[static_cast<std::size_t>(square)]; }
void Put(Position& position, int square, char man) { position.board[static_cast<std::size_t>(square)] = man; }

bool IsWhite(char man) { return man >= 'A' && man <= 'Z'; }
bool BelongsTo(char man, Side side) { return man != kEmpty && IsWhite(man) == (side == Side::White); }
char KindOf(char man) { return IsWhite(man) ? man : static_cast<char>(man - 'a' + 'A'); }
char ManOf(char kind, Side side) { return side == Side::White ? kind : static_cast<char>(kind - 'A' + 'a'); }

/// Rank index of pawns that may still make a double step, and of the rank on which pawns promote.
constexpr int DoubleStepRank(Side side) { return side == Side::White ? 1 : 6; }
constexpr int PromotionRank(Side side) { return side == Side::White ? 7 : 0; }
constexpr int Forward(Side side) { return side == Side::White ? 1 : -1; }

// ---- castling as a table

struct Castling {
    std::uint8_t right;
    Side side;
    int kingFrom, kingTo;
    int rookFrom, rookTo;
};

constexpr std::array<Castling, 4> kCastlings{{{kWhiteShort, Side::White, kE1, kG1, kH1, kF1},
                                              {kWhiteLong, Side::White, kE1, kC1, kA1, kD1},
                                              {kBlackShort, Side::Black, kE8, kE8 + 2, kH8, kE8 + 1},
                                              {kBlackLong, Side::Black, kE8, kE8 - 2, kA8, kE8 - 1}}};

bool AtHome(const Position& position, const Castling& castling) {
    return ManAt(position, castling.kingFrom) == ManOf('K', castling.side) &&
           ManAt(position, castling.rookFrom) == ManOf('R', castling.side);
}

std::uint8_t RightsAllowedByBoard(const Position& position) {
    unsigned rights = 0;
    for (const Castling& castling : kCastlings)
        if (AtHome(position, castling))
            rights |= castling.right;
    return static_cast<std::uint8_t>(rights);
}

/// Nothing between king and rook, the king neither in check nor passing over or reaching an attacked square.
bool CanCastle(const Position& position, const Castling& castling) {
    if (castling.side != position.toMove || (position.castling & castling.right) == 0)
        return false;
    const auto [low, high] = std::minmax(castling.kingFrom, castling.rookFrom);
    for (int square = low + 1; square < high; ++square)
        if (ManAt(position, square) != kEmpty)
            return false;
    for (const int square : {castling.kingFrom, castling.rookTo, castling.kingTo})
        if (CountAttackers(position, square, Opponent(castling.side), 1) > 0)
            return false;
    return true;
}

// ---- pseudo-legal moves: everything but the safety of the own king

void AddMove(std::vector<Move>& moves, int from, int to, char promotion = 0) {
    moves.push_back({static_cast<std::uint8_t>(from), static_cast<std::uint8_t>(to), promotion});
}

void AddLeaps(const Position& position, int from, const SquareList& targets, std::vector<Move>& moves) {
    for (const int to : targets)
        if (!BelongsTo(ManAt(position, to), position.toMove))
            AddMove(moves, from, to);
}

void AddRides(const Position& position, int from, Directions directions, std::vector<Move>& moves) {
    for (std::size_t direction = directions.first; direction < directions.last; ++direction)
        for (const int to : kRays[direction][static_cast<std::size_t>(from)]) {
            const char man = ManAt(position, to);
            if (!BelongsTo(man, position.toMove))
                AddMove(moves, from, to);
            if (man != kEmpty)
                break;
        }
}

void AddPawnMove(const Position& position, int from, int to, std::vector<Move>& moves) {
    if (RankOf(to) != PromotionRank(position.toMove))
        return AddMove(moves, from, to);
    for (const char promotion : {'Q', 'R', 'B', 'N'})
        AddMove(moves, from, to, promotion);
}

void AddPawnMoves(const Position& position, int from, std::vector<Move>& moves) {
    const int forward = 8 * Forward(position.toMove);
    const int ahead = from + forward;
    if (ManAt(position, ahead) == kEmpty) {
        AddPawnMove(position, from, ahead, moves);
        if (RankOf(from) == DoubleStepRank(position.toMove) && ManAt(position, ahead + forward) == kEmpty)
            AddMove(moves, from, ahead + forward);
    }
    for (const int side : {-1, 1}) {
        if (!OnBoard(FileOf(from) + side, 0))
            continue;
        const int to = ahead + side;
        if (BelongsTo(ManAt(position, to), Opponent(position.toMove)) || to == position.enPassant)
            AddPawnMove(position, from, to, moves);
    }
}

void AddCastlings(const Position& position, std::vector<Move>& moves) {
    if (position.castling == 0)
        return;
    for (const Castling& castling : kCastlings)
        if (CanCastle(position, castling))
            AddMove(moves, castling.kingFrom, castling.kingTo);
}

std::vector<Move> PseudoLegalMoves(const Position& position) {
    std::vector<Move> moves;
    moves.reserve(64);
    for (int from = 0; from < 64; ++from) {
        const char man = ManAt(position, from);
        if (!BelongsTo(man, position.toMove))
            continue;
        switch (const char kind = KindOf(man)) {
        case 'P':
            AddPawnMoves(position, from, moves);
            break;
        case 'N':
            AddLeaps(position, from, kKnightLeaps[static_cast<std::size_t>(from)], moves);
            break;
        case 'K':
            AddLeaps(position, from, kKingLeaps[static_cast<std::size_t>(from)], moves);
            break;
        default:
            AddRides(position, from, DirectionsOf(kind), moves);
            break;
        }
    }
    AddCastlings(position, moves);
    return moves;
}

bool IsEnPassant(const Position& position, Move move) {
    return move.to == position.enPassant && KindOf(ManAt(position, move.from)) == 'P' &&
           FileOf(move.from) != FileOf(move.to);
}

bool IsDoubleStep(const Position& position, Move move) {
    return KindOf(ManAt(position, move.from)) == 'P' && (move.to == move.from + 16 || move.from == move.to + 16);
}

const Castling* CastlingOf(const Position& position, Move move) {
    if (KindOf(ManAt(position, move.from)) != 'K')
        return nullptr;
    for (const Castling& castling : kCastlings)
        if (castling.side == position.toMove && castling.kingFrom == move.from && castling.kingTo == move.to)
            return &castling;
    return nullptr;
}

/// The board after the move; fields other than the board are left as they are.
void MoveMen(Position& position, Move move) {
    const char man = ManAt(position, move.from);
    if (const Castling* castling = CastlingOf(position, move)) {
        Put(position, castling->rookTo, ManAt(position, castling->rookFrom));
        Put(position, castling->rookFrom, kEmpty);
    }
    if (IsEnPassant(position, move))
        Put(position, SquareAt(FileOf(move.to), RankOf(move.from)), kEmpty);
    Put(position, move.from, kEmpty);
    Put(position, move.to, move.promotion == 0 ? man : ManOf(move.promotion, position.toMove));
}

bool KeepsKingSafe(const Position& position, Move move) {
    Position after = position;
    MoveMen(after, move);
    return !InCheck(after, position.toMove);
}

// ---- FEN

[[noreturn]] void Refuse(std::string_view what, std::string_view fen) {
    throw std::invalid_argument(std::string(what) + ": " + std::string(fen));
}

/// Cuts the next blank-separated field off the front of the text; empty if there is none.
std::string_view NextField(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view field = text.substr(0, text.find(' '));
    text.remove_prefix(field.size());
    return field;
}

std::array<char, 64> ReadPlacement(std::string_view field) {
    std::array<char, 64> board{};
    board.fill(kEmpty);
    int file = 0;
    int rank = 7;
    for (const char letter : field) {
        if (letter == '/') {
            if (file != 8 || rank == 0)
                Refuse("rank of wrong length", field);
            file = 0;
            --rank;
        } else if (letter >= '1' && letter <= '8') {
            file += letter - '0';
        } else {
            if (kMen.find(letter) == std::string_view::npos || file > 7)
                Refuse("bad man or rank of wrong length", field);
            board[static_cast<std::size_t>(SquareAt(file++, rank))] = letter;
        }
        if (file > 8)
            Refuse("rank of wrong length", field);
    }
    if (file != 8 || rank != 0)
        Refuse("placement of wrong length", field);
    return board;
}

void CheckMen(const Position& position, std::string_view field) {
    if (std::ranges::count(position.board, 'K') != 1 || std::ranges::count(position.board, 'k') != 1)
        Refuse("each side needs one king", field);
    for (int square = 0; square < 64; ++square)
        if (KindOf(ManAt(position, square)) == 'P' && (RankOf(square) == 0 || RankOf(square) == 7))
            Refuse("pawn on the first or last rank", field);
}

std::uint8_t ReadCastling(std::string_view field) {
    if (field.empty() || field == "-")
        return 0;
    unsigned rights = 0;
    for (const char letter : field) {
        const std::size_t index = std::string_view("KQkq").find(letter);
        if (index == std::string_view::npos)
            Refuse("bad castling field", field);
        rights |= 1U << index;
    }
    return static_cast<std::uint8_t>(rights);
}

std::int8_t ReadEnPassant(const Position& position, std::string_view field) {
    if (field.empty() || field == "-")
        return kNoSquare;
    if (field.size() != 2)
        Refuse("bad en passant field", field);
    const int file = std::tolower(static_cast<unsigned char>(field[0])) - 'a';
    const int rank = field[1] - '1';
    const Side stepper = Opponent(position.toMove);
    const int forward = 8 * Forward(stepper);
    if (!OnBoard(file, rank) || rank != DoubleStepRank(stepper) + Forward(stepper))
        Refuse("bad en passant square", field);
    const int square = SquareAt(file, rank);
    if (ManAt(position, square) != kEmpty || ManAt(position, square - forward) != kEmpty ||
        ManAt(position, square + forward) != ManOf('P', stepper))
        Refuse("no double step can have passed over the square", field);
    return static_cast<std::int8_t>(square);
}

std::uint16_t ReadCounter(std::string_view field, std::uint16_t whenAbsent) {
    if (field.empty())
        return whenAbsent;
    std::uint16_t value = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (error != std::errc() || end != field.data() + field.size())
        Refuse("bad counter", field);
    return value;
}

std::string SquareName(int square) {
    return {static_cast<char>('a' + FileOf(square)), static_cast<char>('1' + RankOf(square))};
}

std::string CastlingField(std::uint8_t rights) {
    std::string text;
    for (unsigned index = 0; index < 4; ++index)
        if ((rights >> index & 1U) != 0)
            text += "KQkq"[index];
    return text.empty() ? "-" : text;
}

} // namespace

Position FromFen(std::string_view fen) {
    Position position;
    const std::string_view placement = NextField(fen);
    position.board = ReadPlacement(placement);
    CheckMen(position, placement);
    const std::string_view side = NextField(fen);
    if (!side.empty() && side != "w" && side != "b")
        Refuse("bad side to move", side);
    position.toMove = side == "b" ? Side::Black : Side::White;
    position.castling = ReadCastling(NextField(fen)) & RightsAllowedByBoard(position);
    position.enPassant = ReadEnPassant(position, NextField(fen));
    position.halfMovesSinceCaptureOrPawnMove = ReadCounter(NextField(fen), 0);
    position.moveNumber = ReadCounter(NextField(fen), 1);
    return position;
}

Position ProblemFromFen(std::string_view placement) {
    Position position = FromFen(NextField(placement));
    position.castling = RightsAllowedByBoard(position);
    return position;
}

std::string Placement(const Position& position) {
    std::string text;
    for (int rank = 7; rank >= 0; --rank) {
        int empty = 0;
        const auto writeEmpty = [&] {
            if (empty > 0)
                text += std::to_string(empty);
            empty = 0;
        };
        for (int file = 0; file < 8; ++file) {
            const char man = ManAt(position, SquareAt(file, rank));
            if (man == kEmpty) {
                ++empty;
                continue;
            }
            writeEmpty();
            text += man;
        }
        writeEmpty();
        if (rank > 0)
            text += '/';
    }
    return text;
}

std::string ToFen(const Position& position) {
    return Placement(position) + (position.toMove == Side::White ? " w " : " b ") + CastlingField(position.castling) +
           ' ' + (position.enPassant == kNoSquare ? "-" : SquareName(position.enPassant)) + ' ' +
           std::to_string(position.halfMovesSinceCaptureOrPawnMove) + ' ' + std::to_string(position.moveNumber);
}

std::vector<Move> LegalMoves(const Position& position) {
    std::vector<Move> moves = PseudoLegalMoves(position);
    std::erase_if(moves, [&](Move move) { return !KeepsKingSafe(position, move); });
    return moves;
}

bool HasLegalMove(const Position& position) {
    return std::ranges::any_of(PseudoLegalMoves(position), [&](Move move) { return KeepsKingSafe(position, move); });
}

Position Play(const Position& position, Move move) {
    Position after = position;
    const bool resetsClock = IsCapture(position, move) || KindOf(ManAt(position, move.from)) == 'P';
    MoveMen(after, move);
    // A right is lost with the first move of king or rook and with the rook's capture: in each case its home square is
    // the start or the end of the move.
    for (const Castling& castling : kCastlings)
        for (const int home : {castling.kingFrom, castling.rookFrom})
            if (move.from == home || move.to == home)
                after.castling &= static_cast<std::uint8_t>(~castling.right);
    after.enPassant = static_cast<std::int8_t>(IsDoubleStep(position, move) ? (move.from + move.to) / 2 : kNoSquare);
    after.halfMovesSinceCaptureOrPawnMove =
        static_cast<std::uint16_t>(resetsClock ? 0 : position.halfMovesSinceCaptureOrPawnMove + 1);
    after.moveNumber = static_cast<std::uint16_t>(position.moveNumber + (position.toMove == Side::Black ? 1 : 0));
    after.toMove = Opponent(position.toMove);
    return after;
}

int CountAttackers(const Position& position, int square, Side by, int limit) {
    const auto at = static_cast<std::size_t>(square);
    int count = 0;
    for (const int from : kKnightLeaps[at])
        count += ManAt(position, from) == ManOf('N', by) ? 1 : 0;
    for (const int from : kKingLeaps[at])
        count += ManAt(position, from) == ManOf('K', by) ? 1 : 0;
    const int pawnRank = RankOf(square) - Forward(by);
    for (const int side : {-1, 1})
        if (OnBoard(FileOf(square) + side, pawnRank))
            count += ManAt(position, SquareAt(FileOf(square) + side, pawnRank)) == ManOf('P', by) ? 1 : 0;
    for (std::size_t direction = 0; direction < kRays.size() && count < limit; ++direction)
        for (const int from : kRays[direction][at]) {
            const char man = ManAt(position, from);
            if (man == kEmpty)
                continue;
            count += man == ManOf('Q', by) || man == ManOf(direction < 4 ? 'R' : 'B', by) ? 1 : 0;
            break;
        }
    return std::min(count, limit);
}

int KingSquare(const Position& position, Side side) {
    const std::string_view board(position.board.data(), position.board.size());
    return static_cast<int>(board.find(ManOf('K', side)));
}

bool InCheck(const Position& position) { return InCheck(position, position.toMove); }

bool InCheck(const Position& position, Side side) {
    return CountAttackers(position, KingSquare(position, side), Opponent(side), 1) > 0;
}

bool IsMate(const Position& position) { return InCheck(position) && !HasLegalMove(position); }

bool IsStalemate(const Position& position) { return !InCheck(position) && !HasLegalMove(position); }

bool IsCapture(const Position& position, Move move) {
    return ManAt(position, move.to) != kEmpty || IsEnPassant(position, move);
}

std::uint64_t Perft(const Position& position, int depth) {
    if (depth == 0)
        return 1;
    const std::vector<Move> moves = LegalMoves(position);
    if (depth == 1)
        return moves.size();
    std::uint64_t leaves = 0;
    for (const Move move : moves)
        leaves += Perft(Play(position, move), depth - 1);
    return leaves;
}

std::string LongNotation(const Position& position, Move move) {
    if (const Castling* castling = CastlingOf(position, move))
        return FileOf(castling->kingTo) > FileOf(castling->kingFrom) ? "0-0" : "0-0-0";
    const char kind = KindOf(ManAt(position, move.from));
    std::string text;
    if (kind != 'P')
        text += kind;
    text += SquareName(move.from);
    text += IsCapture(position, move) ? ':' : '-';
    text += SquareName(move.to);
    if (move.promotion != 0)
        text += move.promotion;
    return text;
}

Move MoveFromNotation(const Position& position, std::string_view notation) {
    for (const Move move : LegalMoves(position))
        if (LongNotation(position, move) == notation)
            return move;
    Refuse("no such legal move", notation);
}

} // namespace reference
