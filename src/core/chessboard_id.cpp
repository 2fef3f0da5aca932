#include "core/chessboard_id.h"

#include <algorithm>
#include <cstddef>

#include "core/chess_exception.h"

namespace quillon {
namespace {

constexpr std::string_view kDigits = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ()";
static_assert(kDigits.size() == 64);

constexpr int kShortCodeBits = 4;
constexpr std::array<TFigure, 12> kFigureOfShortCode{
    kWhiteKing, kBlackKing, kWhitePawn,   kBlackPawn,   kWhiteQueen,  kBlackQueen,
    kWhiteRook, kBlackRook, kWhiteBishop, kBlackBishop, kWhiteKnight, kBlackKnight,
};

unsigned ShortCodeOf(TFigure figure) {
    const auto found = std::find(kFigureOfShortCode.begin(), kFigureOfShortCode.end(), figure);
    if (found == kFigureOfShortCode.end())
        throw ChessException("Unknown figure code");
    return static_cast<unsigned>(found - kFigureOfShortCode.begin());
}

bool BitAt(const TChessboardId& id, unsigned index) { return ((id.m_bits[index / 8] >> (index % 8)) & 1) != 0; }

/// The bits in groups of `nGroupBits`, least significant first; the last group may be short.
std::string ToText(const TChessboardId& id, unsigned nGroupBits, char (*digit)(unsigned)) {
    std::string text;
    for (unsigned start = 0; start < id.m_nBits; start += nGroupBits) {
        unsigned value = 0;
        for (unsigned bit = 0; bit < nGroupBits && start + bit < id.m_nBits; ++bit)
            value |= static_cast<unsigned>(BitAt(id, start + bit)) << bit;
        text += digit(value);
    }
    return text;
}

[[noreturn]] void FailWrongId() { throw ChessException("Wrong chessboard id"); }

/// Takes the bits back out of the text.
class CIdReader {
  public:
    explicit CIdReader(std::string_view text) : m_text(text) {}

    bool NextBit() {
        const std::size_t index = m_nRead / kBitsPerDigit;
        if (index >= m_text.size())
            FailWrongId();
        const std::size_t value = kDigits.find(m_text[index]);
        if (value == std::string_view::npos)
            FailWrongId();
        return ((value >> (m_nRead++ % kBitsPerDigit)) & 1) != 0;
    }

    TFigure NextFigure() {
        unsigned code = 0;
        for (int bit = 0; bit < kShortCodeBits; ++bit)
            code |= static_cast<unsigned>(NextBit()) << bit;
        if (code >= kFigureOfShortCode.size())
            throw ChessException("Unknown figure short code");
        return kFigureOfShortCode[code];
    }

    /// Behind the last square only the unset rest of the last digit may stand, so that a position has one text.
    void ExpectEnd() {
        while (m_nRead % kBitsPerDigit != 0)
            if (NextBit())
                FailWrongId();
        if (m_nRead / kBitsPerDigit != m_text.size())
            FailWrongId();
    }

  private:
    static constexpr std::size_t kBitsPerDigit = 6;

    std::string_view m_text;
    std::size_t m_nRead = 0; // bits taken so far
};

} // namespace

void AppendBit(TChessboardId& id, bool bBit) {
    const std::size_t byte = id.m_nBits / 8;
    if (byte >= id.m_bits.size())
        throw ChessException("Exception in TChessboardId");
    if (bBit)
        id.m_bits[byte] = static_cast<std::uint8_t>(id.m_bits[byte] | (1u << (id.m_nBits % 8)));
    ++id.m_nBits;
}

TChessboardId MakeChessboardId(const TChessboard& b) {
    TChessboardId id;
    for (const TFigure figure : b.m_board) {
        AppendBit(id, figure != kNoFigure);
        if (figure == kNoFigure)
            continue;
        const unsigned code = ShortCodeOf(figure);
        for (int bit = 0; bit < kShortCodeBits; ++bit)
            AppendBit(id, ((code >> bit) & 1) != 0);
    }
    return id;
}

char Alphanum6Digit(unsigned value) {
    if (value >= kDigits.size())
        throw ChessException("Error in ToAlphanum6");
    return kDigits[value];
}

char Alphanum5Digit(unsigned value) {
    if (value >= 32)
        throw ChessException("Error in ToAlphanum5");
    return kDigits[value];
}

std::string ToAlphanum6(const TChessboardId& id) { return ToText(id, 6, Alphanum6Digit); }

std::string ToAlphanum5(const TChessboardId& id) { return ToText(id, 5, Alphanum5Digit); }

void ReadChessboardId(TChessboard& b, std::string_view text) {
    std::array<TFigure, kSquares> board{};
    CIdReader reader(text);
    for (TFigure& figure : board)
        if (reader.NextBit())
            figure = reader.NextFigure();
    reader.ExpectEnd();
    b.m_board = board;
}

} // namespace quillon
