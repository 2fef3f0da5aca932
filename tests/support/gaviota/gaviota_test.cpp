// The endgame tables of the reference against those of an installed library that was made elsewhere: every position
// of three men, either side to move.

#include "support/retrograde_reference.h"

#include <gtb-probe.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace reference {
namespace {

constexpr unsigned kNowhere = tb_NOSQUARE;

// The library with its tables, and its memory for them.
class GaviotaTables {
  public:
    GaviotaTables() {
        m_paths = tbpaths_add(tbpaths_init(), GAVIOTA_TABLES);
        tb_init(0, tb_CP4, m_paths);
        tbcache_init(std::size_t{1} << 22, 8);
    }
    ~GaviotaTables() {
        tbcache_done();
        tb_done();
        tbpaths_done(m_paths);
    }
    GaviotaTables(const GaviotaTables&) = delete;
    GaviotaTables& operator=(const GaviotaTables&) = delete;

    [[nodiscard]] bool HasThreeMen() const { return (tb_availability() & 2) != 0; }

    // Half-moves until Black is mated; 0 if White to move does not win, kNotLost for Black to move.
    [[nodiscard]] int HalfMoves(char letter, const std::array<int, 3>& squares, bool whiteToMove) const {
        const bool whitePiece = letter < 'a';
        const auto kind = static_cast<unsigned char>(std::string(" PNBRQ").find(static_cast<char>(letter & ~32)));
        const auto piece = static_cast<unsigned>(squares[2]);
        const std::array white{static_cast<unsigned>(squares[0]), whitePiece ? piece : kNowhere, kNowhere};
        const std::array black{static_cast<unsigned>(squares[1]), whitePiece ? kNowhere : piece, kNowhere};
        const std::array<unsigned char, 3> one{tb_KING, kind, tb_NOPIECE}, none{tb_KING, tb_NOPIECE, tb_NOPIECE};
        unsigned info = tb_UNKNOWN, plies = 0;
        const int found = tb_probe_hard(whiteToMove ? tb_WHITE_TO_MOVE : tb_BLACK_TO_MOVE, tb_NOSQUARE, tb_NOCASTLE,
                                        white.data(), black.data(), (whitePiece ? one : none).data(),
                                        (whitePiece ? none : one).data(), &info, &plies);
        EXPECT_TRUE(found != 0 && info != tb_UNKNOWN && info != tb_FORBID) << letter;
        if (info == tb_WMATE)
            return static_cast<int>(plies);
        return whiteToMove ? 0 : RetrogradeTable::kNotLost;
    }

  private:
    const char** m_paths;
};

int HalfMovesByReference(const RetrogradeTable& table, const std::array<int, 3>& squares, bool whiteToMove) {
    if (whiteToMove)
        return table.MateIn(squares) == 0 ? 0 : 2 * table.MateIn(squares) - 1;
    return table.MatedIn(squares) == RetrogradeTable::kNotLost ? RetrogradeTable::kNotLost : 2 * table.MatedIn(squares);
}

TEST(RetrogradeReference, EveryPositionOfThreeMenIsThatOfGaviota) {
    const GaviotaTables gaviota;
    ASSERT_TRUE(gaviota.HasThreeMen());
    RetrogradeTables tables;
    for (const char letter : std::string("QRBNPqrbnp")) {
        const RetrogradeTable& table = tables.Of({letter});
        int compared = 0, wrong = 0;
        for (int number = 0; number < 64 * 64 * 64; ++number)
            for (const bool whiteToMove : {true, false}) {
                const std::array squares{number / 4096, number / 64 % 64, number % 64};
                if (!table.IsLegal(squares, whiteToMove))
                    continue;
                ++compared;
                wrong += gaviota.HalfMoves(letter, squares, whiteToMove) !=
                         HalfMovesByReference(table, squares, whiteToMove);
            }
        EXPECT_EQ(wrong, 0) << letter;
        EXPECT_GT(compared, 250000) << letter;
    }
}

} // namespace
} // namespace reference
