#pragma once

// The rules of chess, written a second time and as plainly as possible, so that tests have a truth that does not come
// from the code under test. Nothing here includes anything of the product, and nothing is tuned: every pseudo-legal
// move is played on a copy and refused if the mover's king could then be taken.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

enum class Side : std::uint8_t { White, Black };

[[nodiscard]] constexpr Side Opponent(Side side) { return side == Side::White ? Side::Black : Side::White; }

/// Squares are numbered a1 = 0, b1 = 1, ... h8 = 63.
inline constexpr int kNoSquare = -1;
inline constexpr char kEmpty = '.';

/// Castling rights, one bit each, in the order of the FEN field.
inline constexpr std::uint8_t kWhiteShort = 1, kWhiteLong = 2, kBlackShort = 4, kBlackLong = 8;

/// A move; castling is the king's step of two files, en passant the pawn's step to the square passed over.
struct Move {
    std::uint8_t from = 0;
    std::uint8_t to = 0;
    char promotion = 0; // 'Q', 'R', 'B', 'N' for either colour, 0 if the move is no promotion

    friend bool operator==(const Move&, const Move&) = default;
};

/// A position with all that its future depends on; the two counters serve the FEN text only.
struct Position {
    std::array<char, 64> board{}; // FEN letters (capitals are White), kEmpty on an empty square
    Side toMove = Side::White;
    std::uint8_t castling = 0;         // rights not yet lost; the men then do stand on their home squares
    std::int8_t enPassant = kNoSquare; // square passed over by the double step just made, whoever could take there
    std::uint16_t halfMovesSinceCaptureOrPawnMove = 0;
    std::uint16_t moveNumber = 1;

    friend bool operator==(const Position&, const Position&) = default;
};

/// Reads the placement, and the side to move, castling and en passant fields and counters as far as they are present.
///   Defaults White to move, no castling, no en passant, counters 0 and 1.
///   Tolerated a castling right whose king or rook is not at home is dropped; the en passant square may be in capitals.
///   Errors   std::invalid_argument: bad placement, not one king of each colour, a pawn on rank 1 or 8, a bad field, an
///            en passant square that no double step of the opponent can have passed over.
[[nodiscard]] Position FromFen(std::string_view fen);

/// The convention of mate problems: White to move, every castling is possible whose king and rook stand on their home
/// squares, and no en passant in the first move. Text after the placement is ignored. Errors as FromFen.
[[nodiscard]] Position ProblemFromFen(std::string_view placement);

/// All six FEN fields. The en passant square is written after every double step.
[[nodiscard]] std::string ToFen(const Position& position);

/// The first FEN field alone.
[[nodiscard]] std::string Placement(const Position& position);

/// The legal moves of the side to move, each once, in no particular order.
[[nodiscard]] std::vector<Move> LegalMoves(const Position& position);

/// True if the side to move has a legal move; stops at the first.
[[nodiscard]] bool HasLegalMove(const Position& position);

/// The position after a move; the move must be legal.
[[nodiscard]] Position Play(const Position& position, Move move);

/// Men of `by` that attack the square, own men on it or not. Counting stops at `limit`.
[[nodiscard]] int CountAttackers(const Position& position, int square, Side by, int limit = 64);

[[nodiscard]] int KingSquare(const Position& position, Side side);

/// Is the king of the side to move attacked? The second form asks for either side.
[[nodiscard]] bool InCheck(const Position& position);
[[nodiscard]] bool InCheck(const Position& position, Side side);

[[nodiscard]] bool IsMate(const Position& position);
[[nodiscard]] bool IsStalemate(const Position& position);

/// Is the move a capture, en passant included?
[[nodiscard]] bool IsCapture(const Position& position, Move move);

/// Number of move sequences of `depth` half-moves; 1 for depth 0.
[[nodiscard]] std::uint64_t Perft(const Position& position, int depth);

/// "Ng1-f3", "e2-e4", "e4:d5", "e7-e8Q", "e7:d8N", "0-0", "0-0-0"; no sign for check or mate. The move must be legal.
[[nodiscard]] std::string LongNotation(const Position& position, Move move);

/// The legal move with that long notation. Errors: std::invalid_argument if there is none.
[[nodiscard]] Move MoveFromNotation(const Position& position, std::string_view notation);

} // namespace reference
