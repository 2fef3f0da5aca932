#include "cli/show_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/diagram.h"
#include "cli/given_position.h"
#include "cli/output.h"
#include "core/castling.h"
#include "core/chess_exception.h"
#include "core/chessboard_id.h"
#include "core/position_type.h"

namespace quillon {

namespace {

constexpr const char* kShowExamples = R"(
Examples:
  quillon show --fen "8/8/8/8/8/1K5Q/1p6/kn6"
  quillon show --fen "r3k2r/8/8/8/8/8/8/4K3 b kq")";

std::string CastlingsText(int castlings) {
    switch (castlings) {
    case kCastlingKingSide:
        return "0-0";
    case kCastlingQueenSide:
        return "0-0-0";
    case kCastlingAll:
        return "0-0, 0-0-0";
    default:
        return "none";
    }
}

std::string TypeText(const TChessboard& b) {
    const int men = WhiteMen(b) + BlackMen(b);
    if (men == 0)
        return "none (bare kings)";
    if (men > kMaxTypeMen)
        return "none (more than five figures besides the kings)";
    const TPositionType type = GetPositionType(b);
    return PositionTypeToString(type) + " (" + std::to_string(type) + ")";
}

std::string CheckText(const TGivenPosition& position) {
    const bool bWhite = position.m_board.m_whiteChecker != kNoChecker;
    if (!bWhite && position.m_board.m_blackChecker == kNoChecker)
        return "none";
    const bool bToMove = bWhite == (position.m_fields.m_cSideToMove == 'w');
    return std::string(bWhite ? "White" : "Black") + " is in check" +
           (bToMove ? "" : ", which cannot be: the other side is to move");
}

std::string ShowText(const TGivenPosition& position) {
    const bool bWhiteToMove = position.m_fields.m_cSideToMove == 'w';
    TChessboard b = position.m_board;
    b.m_nMoves = b.m_nInitialMoves = bWhiteToMove ? 1 : 2; // only the parity counts
    return DiagramText(b) + "To move:        " + (bWhiteToMove ? "White" : "Black") +
           "\nFEN:            " + WriteFEN(b, true) + "\nPosition id:    " + ToAlphanum6(MakeChessboardId(b)) +
           "\nPosition type:  " + TypeText(b) + "\nCastlings:      White " + CastlingsText(WhiteCastlingsOnBoard(b)) +
           "; Black " + CastlingsText(BlackCastlingsOnBoard(b)) + "\nCheck:          " + CheckText(position) + "\n";
}

EExitStatus RunShow(const std::string& fen) {
    try {
        const TGivenPosition position = ReadGivenPosition(fen);
        if (!position.m_note.empty())
            WriteDiagnostic(position.m_note);
        WriteOutput(ShowText(position));
        return EExitStatus::Answered;
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddShowCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("show", "Show a position: board, FEN, position id, position type");
    const auto fen = std::make_shared<std::string>();
    command->add_option("--fen", *fen, "A FEN, its placement alone, or a position id")->type_name("FEN")->required();
    command->footer(kShowExamples);
    command->callback([fen, &chosen] { chosen = [fen] { return RunShow(*fen); }; });
}

} // namespace quillon
