#include "library/sort_indication.h"

#include <cstddef>
#include <string>

#include "core/chess_exception.h"
#include "core/notation.h"
#include "library/ascii.h"

namespace quillon {

namespace {

constexpr const char* kInvalid = "Invalid description of SortIndication";
constexpr const char* kInvalidInPolish = "Niepoprawny opis SortIndication";
constexpr const char* kTooLong =
    "Move description too long (note that moves should be separated with a comma or semicolon)";

/// Reads one indication from left to right, after the signs at its end have been cut.
class CIndicationReader {
  public:
    CIndicationReader(std::string_view piece, const char* invalid)
        : m_piece(piece), m_rest(piece), m_invalid(invalid) {}

    SortIndication Read() {
        ReadSigns();
        if (SkipIf('~'))
            m_indication.m_bWorst = true;
        ReadMoveNumber();
        ReadFigure();
        if (m_rest.starts_with('0'))
            ReadCastling();
        else
            ReadSquares();
        return m_indication;
    }

  private:
    [[noreturn]] void Fail() const { throw ChessException(std::string(m_invalid) + ": " + std::string(m_piece)); }

    bool SkipIf(char c) {
        const bool bThere = m_rest.starts_with(c);
        m_rest.remove_prefix(bThere ? 1 : 0);
        return bThere;
    }

    bool CutIf(char c) {
        const bool bThere = m_rest.ends_with(c);
        m_rest.remove_suffix(bThere ? 1 : 0);
        return bThere;
    }

    void ReadSigns() {
        if (CutIf('+'))
            m_indication.m_nCheck = CutIf('+') ? 2 : 1;
        m_indication.m_bOnlyIfNotCapturable = CutIf('*');
    }

    void ReadMoveNumber() {
        const auto dot = m_rest.find('.');
        if (dot == std::string_view::npos)
            return;
        m_indication.m_nMove = LeadingNumber(m_rest.substr(0, dot));
        m_rest.remove_prefix(dot + 1);
        while (SkipIf(' ')) {
        }
    }

    void ReadFigure() {
        if (m_rest.empty() || !IsAsciiLetter(m_rest[0]) || (m_rest.size() > 1 && IsAsciiDigit(m_rest[1])))
            return;
        m_indication.m_figure = static_cast<TFigure>(kWhite | FigureLetterToKind(m_rest[0]));
        m_rest.remove_prefix(1);
    }

    void ReadCastling() {
        m_indication.m_nFrom = kE1;
        m_indication.m_nCapture = kMustNotCapture;
        if (m_rest == "0-0-0")
            m_indication.m_nTo = kC1;
        else if (m_rest == "0-0")
            m_indication.m_nTo = kG1;
        else
            Fail();
    }

    TSquare TakeSquare() {
        if (m_rest.size() < 2 || !IsAsciiLetter(m_rest[0]))
            Fail();
        const std::string_view text = m_rest.substr(0, 2);
        m_rest.remove_prefix(2);
        try {
            return String2Square(text);
        } catch (const ChessException&) {
            Fail();
        }
    }

    void ReadSquares() {
        if (m_rest.size() > 1 && IsAsciiLetter(m_rest[0]) && m_rest.find_first_of(":>-") != std::string_view::npos)
            m_indication.m_nFrom = TakeSquare();
        if (SkipIf(':'))
            m_indication.m_nCapture = kMustCapture;
        else if (SkipIf('>'))
            m_indication.m_nCapture = kMustNotCapture;
        else
            SkipIf('-');
        m_indication.m_nTo = TakeSquare();
        if (!m_rest.empty() && IsAsciiLetter(m_rest[0])) {
            m_indication.m_nPromotion = FigureLetterToKind(m_rest[0]);
            m_rest.remove_prefix(1);
        }
        if (!m_rest.empty())
            throw ChessException(kTooLong);
    }

    std::string_view m_piece;
    std::string_view m_rest;
    const char* m_invalid; // the message
    SortIndication m_indication;
};

/// Unlike in the notation of moves, a pawn has a letter here: a letter says that the kind matters.
char FigureLetter(TFigure kind) { return kind == kPawn ? 'P' : KindToLetter(kind); }

/// "0-0" says no figure, but the squares of the king and that nothing is captured.
bool IsCastling(const SortIndication& indication) {
    return indication.m_nFrom == kE1 && (indication.m_nTo == kG1 || indication.m_nTo == kC1) &&
           indication.m_nCapture == kMustNotCapture && indication.m_figure == kNoFigure &&
           indication.m_nPromotion == kNoFigure;
}

std::string SquaresText(const SortIndication& indication) {
    std::string text;
    if (indication.m_figure != kNoFigure)
        text += FigureLetter(KindOf(indication.m_figure));
    if (indication.m_nFrom != kNoSquare)
        text += SquareText(indication.m_nFrom);
    if (indication.m_nCapture == kMustCapture)
        text += ':';
    else if (indication.m_nCapture == kMustNotCapture)
        text += '>';
    else if (indication.m_nFrom != kNoSquare)
        text += '-';
    text += SquareText(indication.m_nTo);
    if (indication.m_nPromotion != kNoFigure)
        text += FigureLetter(indication.m_nPromotion);
    return text;
}

std::string Text(const SortIndication& indication) {
    std::string text = indication.m_bWorst ? "~" : "";
    if (indication.m_nMove != 0)
        text += std::to_string(indication.m_nMove) + ".";
    if (IsCastling(indication))
        text += indication.m_nTo == kG1 ? "0-0" : "0-0-0";
    else
        text += SquaresText(indication);
    if (indication.m_bOnlyIfNotCapturable)
        text += '*';
    return text + std::string(indication.m_nCheck, '+');
}

} // namespace

void ParseSortIndications(SortIndications& indications, std::string_view text, bool bPolish) {
    const char* const invalid = bPolish ? kInvalidInPolish : kInvalid;
    text = Trimmed(text);
    const char separator = text.find(',') != std::string_view::npos ? ',' : ';';
    for (;;) {
        const auto end = text.find(separator);
        const std::string_view piece = Trimmed(text.substr(0, end));
        if (piece.empty())
            throw ChessException(invalid);
        indications.insert(CIndicationReader(piece, invalid).Read());
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

SortIndications IndicationsOf(const Variant& variant) {
    SortIndications indications;
    for (std::size_t i = 0; i < variant.moves.size(); i += 2) {
        const TMove& move = variant.moves[i].move;
        SortIndication indication;
        indication.m_nMove = static_cast<int>(i / 2 + 1);
        indication.m_nFrom = move.m_nFrom;
        indication.m_nTo = move.m_nTo;
        indication.m_nPromotion = PromotionKind(move);
        indications.insert(indication);
    }
    return indications;
}

std::string FormatSortIndications(const SortIndications& indications) {
    std::string text;
    for (const SortIndication& indication : indications)
        text += (text.empty() ? "" : "; ") + Text(indication);
    return text;
}

} // namespace quillon
