#include "core/set_of_squares.h"

#include <algorithm>

#include "core/chess_exception.h"
#include "core/printable.h"

namespace quillon {

std::vector<TSquare> ParseSetOfSquares(std::string_view text) {
    constexpr std::string_view kSeparators = " \t\n\r\xA0,";
    const auto fail = [text] { throw ChessException("Error in ParseSetOfSquares: " + Printable(text)); };
    std::vector<TSquare> squares;
    for (std::size_t at = text.find_first_not_of(kSeparators); at != std::string_view::npos;
         at = text.find_first_not_of(kSeparators, at + 2)) {
        const char letter = text[at] >= 'a' && text[at] <= 'z' ? static_cast<char>(text[at] - 'a' + 'A') : text[at];
        const char digit = at + 1 < text.size() ? text[at + 1] : '\0';
        if (letter < 'A' || letter > 'H' || digit < '1' || digit > '8')
            fail();
        const TSquare square = SquareAt(letter - 'A', digit - '1');
        if (std::ranges::find(squares, square) == squares.end())
            squares.push_back(square);
    }
    return squares;
}

} // namespace quillon
