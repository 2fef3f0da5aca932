#include "heuristics/figure_exchange.h"

#include <gtest/gtest.h>

#include "core/fen.h"
#include "core/notation.h"

namespace quillon::test {
namespace {

bool CanBe(const char* placement, const char* square) {
    return CanBeExchanged(ChessboardFromFEN(placement), String2Square(square));
}

TEST(FigureExchange, NeedsATakerAndARetaker) {
    EXPECT_TRUE(CanBe("k7/8/4n3/8/3R4/2P5/8/K7", "d4"));
    EXPECT_FALSE(CanBe("k7/8/4n3/8/3R4/8/8/K7", "d4")) << "a loss, no exchange";
    EXPECT_FALSE(CanBe("k7/8/8/8/3R4/2P5/8/K7", "d4")) << "nobody takes";
    EXPECT_FALSE(CanBe("8/8/8/3k4/3R4/2P5/8/K7", "d4")) << "the king's taking is none";
    EXPECT_FALSE(CanBe("3k4/3n4/8/8/5n2/2P5/8/K2R4", "d1")) << "no taker within reach";
    EXPECT_FALSE(CanBe("k7/8/4n3/8/8/2P5/8/K7", "d4")) << "an empty square";
    EXPECT_FALSE(CanBeExchanged(ChessboardFromFEN("k7/8/4n3/8/3R4/2P5/8/K7"), kNoSquare));
}

} // namespace
} // namespace quillon::test
