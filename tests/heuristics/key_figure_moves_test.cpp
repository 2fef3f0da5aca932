// SH_KEYWHITEFIGURE: the key figure stays.

#include "heuristics/key_figure_moves.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

constexpr const char* kPin = "k2n3R/8/8/8/8/1p6/1P6/K7"; // Rh8 pins the knight

CHeuristicLine& Pin(CHeuristicLine& line) {
    line.Context().m_nKeyWhiteFigure = String2Square("h8");
    line.Context().m_nPinnedFigure = String2Square("d8");
    return line;
}

TEST(KeyFigureMoves, ThePinHoldsWhileBothStandOnTheKingsLine) {
    CHeuristicLine line(kPin, 21, SH_KEYWHITEFIGURE);
    EXPECT_FALSE(HoldsKeyPin(line.Now())) << "no figure is named";
    EXPECT_TRUE(HoldsKeyPin(Pin(line).Now()));
    line.Context().m_nPinnedFigure = String2Square("e8");
    EXPECT_FALSE(HoldsKeyPin(line.Now()));
    CHeuristicLine bishop("k2n3B/8/8/8/8/1p6/1P6/K7", 21, SH_KEYWHITEFIGURE);
    EXPECT_FALSE(HoldsKeyPin(Pin(bishop).Now())) << "a bishop pins nothing on a rank";
    CHeuristicLine left(kPin, 21, SH_KEYWHITEFIGURE);
    Pin(left).Play("Ka1-b1 Ka8-a7");
    EXPECT_FALSE(HoldsKeyPin(left.Now()));
}

TEST(KeyFigureMoves, TheKeyFigureMayOnlyTakeOrCheck) {
    CHeuristicLine line(kPin, 21, SH_KEYWHITEFIGURE);
    const auto moves = Pin(line).Generated();
    EXPECT_TRUE(moves.contains("Rh8:d8"));
    EXPECT_FALSE(moves.contains("Rh8-h7"));
    EXPECT_TRUE(moves.contains("Ka1-b1"));
    EXPECT_TRUE(line.m_bDoubtful);
}

TEST(KeyFigureMoves, WithFewPliesOrWithoutThePinAllMovesAreTriedButTheNodeStaysDoubtful) {
    CHeuristicLine few(kPin, 7, SH_KEYWHITEFIGURE), more(kPin, 9, SH_KEYWHITEFIGURE);
    EXPECT_TRUE(Pin(few).Generated().empty());
    EXPECT_TRUE(few.m_bDoubtful);
    EXPECT_FALSE(Pin(more).Generated().empty());
    CHeuristicLine none(kPin, 21, SH_KEYWHITEFIGURE);
    EXPECT_TRUE(none.Generated().empty());
    EXPECT_TRUE(none.m_bDoubtful);
}

TEST(KeyFigureMoves, ANodeWithThisHeuristicIsNeverRefuted) {
    CHeuristicLine line(kPin, 5, SH_KEYWHITEFIGURE);
    EXPECT_EQ(line.Verdict(), MR_DOUBTFUL);
    CHeuristicLine without(kPin, 5, SH_KEYLINE);
    EXPECT_EQ(without.Verdict(), MR_NOMATE);
}

} // namespace
} // namespace quillon::test
