#include "core/board_transform.h"

namespace quillon {
namespace {

constexpr std::string_view kRotated90 = "Rotated 90\u00B0: ";
constexpr std::string_view kRotated180 = "Rotated 180\u00B0: ";
constexpr std::string_view kRotated270 = "Rotated 270\u00B0: ";

struct TTurn {
    std::string_view m_before;
    std::string_view m_after;
};
constexpr TTurn kTurns[] = {{kRotated90, kRotated180}, {kRotated180, kRotated270}, {kRotated270, ""}};

constexpr TFigure OtherColour(TFigure figure) {
    return figure == kNoFigure ? kNoFigure : static_cast<TFigure>(figure ^ (kWhite | kBlack));
}

} // namespace

void SwapColours(TChessboard& b) {
    const auto before = b.m_board;
    for (int square = 0; square < kSquares; ++square)
        b.m_board[SquareAt(FileOf(square), 7 - RankOf(square))] = OtherColour(before[static_cast<std::size_t>(square)]);
}

void Rotate90(TChessboard& b) {
    const auto before = b.m_board;
    for (int square = 0; square < kSquares; ++square)
        b.m_board[SquareAt(RankOf(square), 7 - FileOf(square))] = before[static_cast<std::size_t>(square)];
}

std::string RotatedDescription(std::string_view description) {
    for (const TTurn& turn : kTurns)
        if (description.substr(0, turn.m_before.size()) == turn.m_before)
            return std::string(turn.m_after).append(description.substr(turn.m_before.size()));
    return std::string(kRotated90).append(description);
}

} // namespace quillon
