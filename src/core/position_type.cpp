#include "core/position_type.h"

#include <algorithm>
#include <cstddef>

#include "core/chess_exception.h"
#include "core/chessboard.h"

namespace quillon {
namespace {

constexpr int kNibbleBits = 4;
constexpr std::size_t kMaxTypeLetters = 7;

} // namespace

std::array<std::uint8_t, 10> FigureCounts(const TChessboard& b) {
    return {
        b.m_whiteQueens, b.m_whiteRooks, b.m_whiteBishops, b.m_whiteKnights, b.m_whitePawns,
        b.m_blackQueens, b.m_blackRooks, b.m_blackBishops, b.m_blackKnights, b.m_blackPawns,
    };
}

TPositionType GetPositionType(const TChessboard& b) {
    if (WhiteMen(b) + BlackMen(b) > kMaxTypeMen)
        return 0;
    TPositionType type = 0;
    TPositionType nibble = 0;
    for (const std::uint8_t count : FigureCounts(b)) {
        ++nibble;
        for (int i = 0; i < count; ++i)
            type = (type << kNibbleBits) | nibble;
    }
    return type << 1;
}

std::string PositionTypeToString(TPositionType type) {
    std::string text;
    for (TPositionType rest = type >> 1; rest != 0; rest >>= kNibbleBits) {
        const auto nibble = static_cast<std::size_t>(rest & 0xf);
        if (nibble == 0 || nibble > kTypeLetters.size() || text.size() == kMaxTypeLetters)
            return {};
        text += kTypeLetters[nibble - 1];
    }
    std::reverse(text.begin(), text.end());
    return text;
}

std::string RemoveFromPosType(std::string_view typeText, char letter) {
    std::string text(typeText);
    const std::size_t index = text.find(letter);
    if (index == std::string::npos)
        throw ChessException("Error in RemoveFromPosType: pos.type " + text + " does not contain " + letter);
    return text.erase(index, 1);
}

int GetIndexToRemoveToObtainOtherPosType(std::string_view typeText, std::string_view otherText) {
    if (otherText.size() + 1 != typeText.size())
        throw ChessException("Error in GetIndexToRemoveToObtainOtherPosType: " + std::string(typeText) + " and " +
                             std::string(otherText) + " passed to function");
    for (std::size_t i = 0; i < typeText.size(); ++i)
        if (typeText.substr(0, i) == otherText.substr(0, i) && typeText.substr(i + 1) == otherText.substr(i))
            return static_cast<int>(i);
    return -1;
}

} // namespace quillon
