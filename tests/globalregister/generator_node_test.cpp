// One position and its moves: double steps, captures in passing, stalemate, material that changes.

#include "core/chess_exception.h"
#include "globalregister/generated_tables.h"
#include "globalregister/generator/node_value.h"

namespace quillon {

namespace {

// The materials of a type; of what it turns into "P", "Q" and "R" have data.
class CMaterialsForTest {
  public:
    explicit CMaterialsForTest(const std::string& type)
        : m_registers(TablesOfWinners().Registers()), m_table(type), m_materials(m_table, *m_registers) {}

    [[nodiscard]] const CMaterial& Root() const { return m_materials.Root(); }

    [[nodiscard]] TPlacement Place(const std::string& fen) const {
        const TChessboard b = ChessboardFromFEN(fen + " w - -");
        TPlacement p;
        std::size_t next = 0;
        for (std::size_t man = 0; man < Root().Men(); ++man) {
            if (man > 0 && Root().Figure(man) != Root().Figure(man - 1))
                next = 0;
            while (b.m_board[next] != Root().Figure(man))
                ++next;
            p.m_men[man] = static_cast<TSquare>(next++);
        }
        Root().SetMasks(p, WhiteKingSquare(b), BlackKingSquare(b));
        return p;
    }

    /// Black to move; every quiet move is answered by a mate in `quiet` (0: none), double steps in `doubleStep`.
    [[nodiscard]] unsigned BlackValue(const std::string& fen, unsigned quiet, unsigned doubleStep,
                                      int nDoubleStep = kNoDoubleStep) const {
        const TPlacement p = Place(fen);
        const auto answers = [&](std::size_t man, int from, int to) {
            return man != kNoMan && from - to == 16 ? doubleStep : quiet;
        };
        return CBlackNode<decltype(answers)>(Root(), p, nDoubleStep, answers).Value();
    }

    /// The number of moves from which on the look finds a mate; 0 if there is none.
    [[nodiscard]] unsigned WhiteConversion(const std::string& fen) const {
        for (unsigned n = 1; n < 100; ++n) {
            const TPlacement p = Place(fen);
            const unsigned value = CWhiteConversions(Root(), p).Value(n);
            if (value <= n)
                return value;
            if (value == kNoMateFound)
                break;
        }
        return 0;
    }

    /// Of finished data of a type.
    [[nodiscard]] static unsigned Length(const std::string& type, const std::string& fen) {
        const auto registers = TablesOfWinners().Registers();
        const CRegisterUse data(registers->GetRegisterForTool(TPositionIndexing(type).nPositionType));
        return (data->IsMate(ChessboardFromFEN(fen + " w - -")) + 1u) / 2;
    }

  private:
    std::unique_ptr<CGlobalRegisters> m_registers;
    TGlobalRegister m_table;
    CMaterials m_materials;
};

} // namespace

TEST(GeneratorNode, BlackDoubleStepMayBeAnsweredInPassing) {
    const CMaterialsForTest materials("Pp");
    // 1 ... d5 2 exd6 e.p. Ka7 is forced, then the pawn runs.
    const std::string fen = "k7/2Kp4/8/4P3/8/8/8/8";
    const unsigned inPassing = CMaterialsForTest::Length("P", "8/k1K5/3P4/8/8/8/8/8") + 1;
    ASSERT_GT(inPassing, 2u);
    EXPECT_EQ(materials.BlackValue(fen, 1, 0), inPassing);
    EXPECT_EQ(materials.BlackValue(fen, 1, 2), 2u); // the element's mate is shorter
    EXPECT_EQ(materials.BlackValue(fen, 1, 100), inPassing);
    EXPECT_EQ(materials.BlackValue(fen, 0, 100), kNotLost);
    EXPECT_EQ(materials.BlackValue("k7/2Kp4/8/5P2/8/8/8/8", 1, 0), kNotLost); // no pawn beside d5
}

TEST(GeneratorNode, WhiteDoubleStepMayBeAnsweredInPassing) {
    const CMaterialsForTest materials("Pp");
    const std::string fen = "8/8/8/8/3pP3/k7/8/2K5";
    EXPECT_EQ(materials.BlackValue(fen, 3, 3), 3u);
    EXPECT_EQ(materials.BlackValue(fen, 3, 3, 28), kNotLost); // dxe3 e.p. leaves a bare white king
}

TEST(GeneratorNode, CaptureInPassingThatUncoversTheKingIsNoMove) {
    const CMaterialsForTest materials("RPp");
    EXPECT_EQ(materials.BlackValue("8/8/8/8/R2pP2k/8/8/2K5", 3, 3, 28), 3u);
    try { // off the line of the rook it is one, and "Rp" is not at hand
        static_cast<void>(materials.BlackValue("8/8/8/7k/R2pP3/8/8/2K5", 3, 3, 28));
        ADD_FAILURE();
    } catch (const ChessException& error) {
        EXPECT_STREQ(error.what(), "No global register found for position type Rp");
    }
}

TEST(GeneratorNode, CaptureInPassingIsAMoveOutOfMate) {
    const CMaterialsForTest materials("BNPp");
    const std::string fen = "2B3N1/8/5K2/7k/6Pp/8/8/8";
    EXPECT_EQ(materials.BlackValue(fen, 1, 1), 0u);
    EXPECT_THROW(static_cast<void>(materials.BlackValue(fen, 1, 1, 30)), ChessException); // goes on in "BNp"
}

TEST(GeneratorNode, StalemateIsNoMate) {
    const CMaterialsForTest materials("Q");
    EXPECT_EQ(materials.BlackValue("k7/8/1QK5/8/8/8/8/8", 1, 1), kNotLost);
    EXPECT_EQ(materials.BlackValue("k7/1Q6/2K5/8/8/8/8/8", 1, 1), 0u);
}

TEST(GeneratorNode, CaptureOfTheLastManSavesBlack) {
    const CMaterialsForTest materials("Q");
    EXPECT_EQ(materials.BlackValue("k7/1Q6/8/8/8/8/8/7K", 1, 1), kNotLost);
}

TEST(GeneratorNode, PromotionsToEachKindAreTried) {
    const CMaterialsForTest materials("P");
    // A queen mates at once; with the king on b6 a8=Q is stalemate's neighbour: the rook mates as well.
    EXPECT_EQ(materials.WhiteConversion("2k5/P7/2K5/8/8/8/8/8"), 1u);
    // Promotion to a queen is stalemate here, to a rook it is not.
    const unsigned rook = materials.WhiteConversion("8/5P1k/5K2/8/8/8/8/8");
    EXPECT_EQ(rook, CMaterialsForTest::Length("R", "5R2/8/5K1k/8/8/8/8/8") + 1);
}

TEST(GeneratorNode, CaptureByWhiteGoesOnInOtherMaterial) {
    const CMaterialsForTest materials("Rp");
    // 1 Rxa7+ with the king beside it: mate by the rook's own table.
    const unsigned captured = materials.WhiteConversion("1k6/p7/1K6/8/8/8/8/R7");
    EXPECT_EQ(captured, CMaterialsForTest::Length("R", "2k5/R7/1K6/8/8/8/8/8") + 1);
}

} // namespace quillon
