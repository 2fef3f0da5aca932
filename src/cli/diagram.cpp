#include "cli/diagram.h"

#include "core/notation.h"

namespace quillon {

namespace {

constexpr const char* kFrame = "    +-----------------+\n";

char FigureLetter(TFigure figure) {
    if (figure == kNoFigure)
        return '.';
    const char letter = KindOf(figure) == kPawn ? 'P' : KindToLetter(KindOf(figure));
    return IsWhite(figure) ? letter : static_cast<char>(letter - 'A' + 'a');
}

} // namespace

std::string DiagramText(const TChessboard& b) {
    std::string text = kFrame;
    for (int rank = 7; rank >= 0; --rank) {
        text += "  " + std::to_string(rank + 1) + " |";
        for (int file = 0; file < 8; ++file)
            text += {' ', FigureLetter(b.m_board[SquareAt(file, rank)])};
        text += " |\n";
    }
    return text + kFrame + "      a b c d e f g h\n";
}

} // namespace quillon
