#include "cli/uci_position.h"

#include <algorithm>
#include <optional>

#include "cli/uci_text.h"
#include "core/castling.h"
#include "core/chess_exception.h"
#include "core/printable.h"

namespace quillon {

namespace {

constexpr std::string_view kStartOfGame = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
constexpr std::string_view kFen = "fen", kStartPosition = "startpos", kMoves = "moves";

[[noreturn]] void Fail(const std::string& text) { throw ChessException(text); }

bool ReadSide(const std::string& field) {
    const std::string side = Lowered(field);
    if (side != "w" && side != "b")
        Fail("FEN: improper side to move '" + Printable(field) + "'");
    return side == "w";
}

int Weight(std::string_view field, char kingSide, char queenSide) {
    return (field.find(kingSide) != std::string_view::npos ? kCastlingKingSide : 0) +
           (field.find(queenSide) != std::string_view::npos ? kCastlingQueenSide : 0);
}

/// Rights that the board does not bear out are dropped.
void ReadCastling(const std::string& field, const TChessboard& board, TGamePosition& position) {
    if (field.find_first_not_of("KQkq-") != std::string::npos)
        Fail("FEN: improper castling field '" + Printable(field) + "'");
    position.m_nCastlingWhite = WhiteCastlingsOnBoard(board) & Weight(field, 'K', 'Q');
    position.m_nCastlingBlack = BlackCastlingsOnBoard(board) & Weight(field, 'k', 'q');
}

/// The pawn that passed over the square; kNoSquare if none can have done so.
TSquare PawnBehind(const std::string& field, const TGamePosition& position) {
    const std::optional<TMove> square = ReadUciMove(field + field); // a move from the square to itself
    const int passedRank = position.m_bWhiteToMove ? 5 : 2;
    if (!square || RankOf(square->m_nTo) != passedRank)
        return kNoSquare;
    const int passed = square->m_nTo, forward = position.m_bWhiteToMove ? -8 : 8;
    const auto figureAt = [&position](int at) { return position.m_board[static_cast<std::size_t>(at)]; };
    const TFigure pawn = position.m_bWhiteToMove ? kBlackPawn : kWhitePawn;
    const bool bPassed =
        figureAt(passed) == kNoFigure && figureAt(passed - forward) == kNoFigure && figureAt(passed + forward) == pawn;
    return bPassed ? static_cast<TSquare>(passed + forward) : kNoSquare;
}

void CheckSideNotToMove(const TChessboard& board, bool bWhiteToMove) {
    if ((bWhiteToMove ? board.m_blackChecker : board.m_whiteChecker) != kNoChecker)
        Fail(bWhiteToMove ? "Black is in check with White to move." : "White is in check with Black to move.");
}

std::string Joined(const std::vector<std::string>& words, std::size_t first, std::size_t last) {
    std::string text;
    for (std::size_t i = first; i < last; ++i)
        text += (text.empty() ? "" : " ") + words[i];
    return text;
}

void Play(TGamePosition& position, const std::string& word) {
    const std::optional<TMove> wanted = ReadUciMove(word);
    if (!wanted)
        Fail("not a move: " + word);
    const std::vector<TGameMove> moves = LegalMoves(position);
    const auto found =
        std::ranges::find_if(moves, [&](const TGameMove& move) { return SameMove(move.m_move, *wanted); });
    if (found == moves.end())
        Fail("illegal move: " + word);
    position = found->m_after;
}

} // namespace

TGamePosition StartOfGame() { return ReadGameFen(kStartOfGame).m_position; }

TUciPosition ReadGameFen(std::string_view text) {
    const std::vector<std::string> fields = WordsOf(text);
    const TChessboard board = ChessboardFromFEN(fields.empty() ? std::string() : fields[0]);
    TUciPosition read;
    TGamePosition& position = read.m_position;
    position.m_board = board.m_board;
    position.m_bWhiteToMove = fields.size() < 2 || ReadSide(fields[1]);
    ReadCastling(fields.size() < 3 ? "KQkq" : fields[2], board, position);
    CheckSideNotToMove(board, position.m_bWhiteToMove);
    if (fields.size() < 4 || fields[3] == "-")
        return read;
    position.m_nDoubleStep = PawnBehind(fields[3], position);
    if (position.m_nDoubleStep == kNoSquare)
        read.m_note = "FEN: no pawn can have passed " + fields[3] + "; there is no en passant capture";
    return read;
}

TUciPosition ReadUciPosition(const std::vector<std::string>& words) {
    const std::string first = words.empty() ? std::string() : Lowered(words[0]);
    const auto movesWord = std::ranges::find_if(words, [](const std::string& word) { return Lowered(word) == kMoves; });
    const auto end = static_cast<std::size_t>(movesWord - words.begin());
    TUciPosition read;
    if (first == kStartPosition)
        read.m_position = StartOfGame();
    else if (first == kFen)
        read = ReadGameFen(Joined(words, 1, end));
    else
        Fail("position: \"fen\" or \"startpos\" is missing");
    for (std::size_t i = end + 1; i < words.size(); ++i)
        Play(read.m_position, words[i]);
    return read;
}

} // namespace quillon
