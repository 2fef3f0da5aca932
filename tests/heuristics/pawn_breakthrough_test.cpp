// White pawns that get through.

#include "heuristics/pawn_breakthrough.h"

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr int kPlies = 21;

bool IsFree(const char* placement) { return HasFreeWhitePawn(ChessboardFromFEN(placement)); }

TEST(PawnBreakthrough, AFreePawnIsNotStopped) {
    EXPECT_TRUE(IsFree("7k/8/8/P7/8/8/8/K7"));
    EXPECT_FALSE(IsFree("1k6/8/8/P7/8/8/8/K7")) << "the king is near";
    EXPECT_FALSE(IsFree("7k/8/1p6/P7/8/8/8/K7")) << "a pawn beside its way";
    EXPECT_FALSE(IsFree("7k/8/p7/P7/8/8/8/K7")) << "a pawn on its way";
    EXPECT_FALSE(IsFree("7k/8/8/P7/8/8/5b2/K7")) << "a7 is guarded";
    EXPECT_FALSE(IsFree("7k/8/8/8/8/8/8/K7"));
}

TEST(PawnBreakthrough, AFreePawnWinsTheRace) {
    EXPECT_TRUE(IsFree("8/8/5k2/P7/8/8/8/K7")) << "five steps against three moves";
    EXPECT_FALSE(IsFree("8/8/3k4/P7/8/8/8/K7")) << "three steps are enough";
    EXPECT_TRUE(IsFree("7k/8/8/8/8/8/P7/K7")) << "a double step saves a move: five against seven";
}

bool DrivesIn(const char* placement) { return DrivesKingInByPromotion(CSearchedPosition(placement, kPlies).Root()); }

TEST(PawnBreakthrough, APromotionMayDriveTheKingIn) {
    EXPECT_TRUE(DrivesIn("8/P7/8/8/8/6k1/8/K7")) << "f4 is open to him";
    EXPECT_FALSE(DrivesIn("8/P7/8/8/8/8/8/K6k")) << "from h1 nothing lies inside";
    EXPECT_FALSE(DrivesIn("7r/P7/8/8/8/6k1/8/K7")) << "the new figure is lost";
    EXPECT_FALSE(DrivesIn("8/8/P7/8/8/6k1/8/K7")) << "not on the seventh rank";
    EXPECT_TRUE(DrivesKingInByPromotion(CSearchedPosition("8/P7/8/8/8/6k1/8/K7", 1).Root())) << "whatever the plies";
}

TEST(PawnBreakthrough, AnyFarPawnMayDriveTheKingIn) {
    EXPECT_TRUE(DrivesKingInByPawns(CSearchedPosition("8/8/8/P7/8/6k1/8/K7", kPlies).Root()));
    EXPECT_FALSE(DrivesKingInByPawns(CSearchedPosition("8/8/8/8/P7/6k1/8/K7", kPlies).Root())) << "the fourth rank";
    EXPECT_FALSE(DrivesKingInByPawns(CSearchedPosition("8/8/8/P7/8/8/8/K6k", kPlies).Root())) << "nowhere to go";
}

} // namespace
} // namespace quillon::test
