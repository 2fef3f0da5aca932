// Verification of whole tables of four men that come from the rules alone, pawns of both colours among them.

#include "globalregister/verified_tables.h"

#include <algorithm>

#include "globalregister/piece_letters.h"
#include "globalregister/verification/one_move_types.h"
#include "support/retrograde_reference.h"

namespace quillon {
namespace {

TElements ElementsOf(const std::string& type, reference::RetrogradeTables& tables) {
    const reference::RetrogradeTable& table = tables.Of(type);
    const TPositionIndexing indexing(type);
    TElements elements(indexing.GetSize(), 0);
    for (std::uint64_t i = 1; i < elements.size(); ++i) {
        TChessboard b = EmptyChessboard();
        if (!indexing.GetPositionByIndex(i, b))
            continue;
        std::vector<int> squares{WhiteKingSquare(b), BlackKingSquare(b)};
        for (std::size_t letter = 0; letter < type.size(); ++letter)
            for (int square = 0; square < kSquares; ++square)
                if (b.m_board[static_cast<std::size_t>(square)] == FigureOfLetter(type[letter]) &&
                    std::ranges::find(squares, square) == squares.end()) {
                    squares.push_back(square);
                    break;
                }
        elements[i] = static_cast<std::uint8_t>(table.MateIn(squares));
    }
    elements[0] = static_cast<std::uint8_t>(FlagsOf(indexing, false));
    return elements;
}

TEST(VerifyType, TablesOfTheRulesAreRight) {
    reference::RetrogradeTables rules;
    CVerifiedTables tables;
    for (const char* const type : {"Pp", "Qp", "PP", "Rr"}) {
        for (const std::string& other : TypesAfterOneMove(type))
            if (!std::filesystem::exists(tables.Path(other)))
                tables.Write(other, ElementsOf(other, rules));
        (void)tables.Registers().UnloadAll();
        const TVerifyResult result = tables.Verify({.m_typeName = type, .m_nThreads = 2});
        EXPECT_EQ(result.m_status,
                  "Verification of precalculated data for position type " + std::string(type) + " complete - all OK")
            << (tables.m_user.m_told.empty() ? "" : tables.m_user.m_told.front());
    }
}

} // namespace
} // namespace quillon
