#include "heuristics/forced_mate_depth.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

TEST(ForcedMateDepth, EveryCodeHasItsText) {
    EXPECT_EQ(ForcedMateDepthText(2), "CheckOnly");
    EXPECT_EQ(ForcedMateDepthText(3), "#1");
    EXPECT_EQ(ForcedMateDepthText(4), "#1+");
    EXPECT_EQ(ForcedMateDepthText(5), "#2");
    EXPECT_EQ(ForcedMateDepthText(6), "#2+");
    EXPECT_EQ(ForcedMateDepthText(7), "#3");
    EXPECT_EQ(ForcedMateDepthText(8), "#4");
    EXPECT_EQ(ForcedMateDepthText(9), "#5");
}

TEST(ForcedMateDepth, NumberThatIsNoCodePrintsNothing) {
    for (const int code : {-128, -1, 0, 1, 10, 11, 255, 256 + 3})
        EXPECT_EQ(ForcedMateDepthText(code), "") << code;
}

TEST(ForcedMateDepth, ButtonsDifferFromTheTextsForTheFirstTwoCodes) {
    const std::array<std::string_view, 8> buttons{"check+excps", "threat #1", "#1+", "#2", "#2+", "#3", "#4", "#5"};
    ASSERT_EQ(kForcedMateDepths.size(), buttons.size());
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        EXPECT_EQ(kForcedMateDepths[i].m_nCode, i + 2);
        EXPECT_EQ(kForcedMateDepths[i].m_button, buttons[i]);
    }
}

} // namespace
} // namespace quillon
