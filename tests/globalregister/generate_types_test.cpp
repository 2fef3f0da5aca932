#include "globalregister/generator/reached_types.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "globalregister/generator/table_making.h"

namespace quillon {
namespace {

using TTypes = std::vector<std::string>;

TEST(NeededTypes, CapturesAndPromotionsOfBothSides) {
    EXPECT_EQ(NeededTypes("Q"), TTypes{}) << "without it no mate is left";
    EXPECT_EQ(NeededTypes("P"), (TTypes{"Q", "R"})) << "bishop and knight alone cannot mate";
    EXPECT_EQ(NeededTypes("QR"), (TTypes{"Q", "R"}));
    EXPECT_EQ(NeededTypes("RQ"), (TTypes{"Q", "R"})) << "letters in any order";
    EXPECT_EQ(NeededTypes("Qr"), TTypes{"Q"});
    EXPECT_EQ(NeededTypes("QRr"), (TTypes{"Q", "R", "QR", "Qr", "Rr"})) << "Black may take in answer to a capture";
}

/// A pawn that takes while it promotes changes two letters at once.
TEST(NeededTypes, PromotionWithCapture) {
    const TTypes types = NeededTypes("Pr");
    for (const char* type : {"Q", "R", "P", "Qr", "Rr", "Br", "Nr"})
        EXPECT_TRUE(std::ranges::count(types, type) == 1) << type;
    EXPECT_EQ(types.size(), 7u);
}

/// White promotes, Black takes the other man; two pawns may promote one after the other.
TEST(NeededTypes, TwoMovesDeep) {
    const TTypes types = NeededTypes("NPp");
    for (const char* type : {"Qp", "Np", "Pp", "NP", "P", "QNp", "QNq", "NPq", "Nq", "Pq", "Qq"})
        EXPECT_EQ(std::ranges::count(types, type), 1) << type;
    for (const char* type : {"Q", "QN"}) // no pawn is taken where pawns promote
        EXPECT_EQ(std::ranges::count(types, type), 0) << type;
    EXPECT_EQ(std::ranges::count(types, "NPp"), 0) << "not the type itself";
}

/// 1.axb6 in passing, b7 next to it steps twice, 2.axb6 in passing again: three pawns go one after the other.
TEST(NeededTypes, CapturesInPassingFollowUponEachOther) {
    const TTypes types = NeededTypes("PPppp");
    EXPECT_EQ(std::ranges::count(types, "PPpp"), 1);
    EXPECT_EQ(std::ranges::count(types, "PPp"), 1);
    EXPECT_EQ(std::ranges::count(types, "PP"), 1);
}

TEST(NeededTypes, OrderOfMakingHasWhatIsNeededFirst) {
    const TTypes all = TypesInOrderOfMaking({"PPp", "Pr"});
    EXPECT_EQ(std::ranges::count(all, "PPp"), 1);
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(std::ranges::count(all, all[i]), 1) << all[i];
        for (const std::string& needed : NeededTypes(all[i]))
            EXPECT_LT(std::ranges::find(all, needed) - all.begin(), static_cast<std::ptrdiff_t>(i))
                << all[i] << " needs " << needed;
    }
    EXPECT_EQ(TypesInOrderOfMaking({"P", "Q"}), (TTypes{"Q", "R", "P"}));
}

TEST(LastLevelOfConversions, LeavesRoomForEachCaptureInPassing) {
    EXPECT_EQ(LastLevelOfConversions("Q", 0), 2u);
    EXPECT_EQ(LastLevelOfConversions("QR", 16), 33u) << "31 half-moves, and two more";
    EXPECT_EQ(LastLevelOfConversions("Pp", 28), 59u);
    EXPECT_EQ(LastLevelOfConversions("QPpp", 28), 61u);
    EXPECT_EQ(LastLevelOfConversions("QRpp", 28), 57u) << "nobody takes in passing";
    EXPECT_EQ(LastLevelOfConversions("QPP", 28), 57u);
    EXPECT_EQ(LastLevelOfConversions("Kkp(b3)+Pa4", 0), 2u) << "a capture leaves the pattern";
}

} // namespace
} // namespace quillon
