// The values of options.

#include "cli/option_values.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

/// What the validator makes of the text; its complaint in brackets.
std::string Checked(const CLI::Validator& validator, std::string text) {
    const std::string complaint = validator(text);
    return complaint.empty() ? text : "(" + complaint + ")";
}

TEST(WholeNumber, TakesDecimalDigitsOnly) {
    EXPECT_EQ(Checked(WholeNumber(1, 299), "1"), "1");
    EXPECT_EQ(Checked(WholeNumber(1, 299), "299"), "299");
    EXPECT_EQ(Checked(WholeNumber(1, 299), "010"), "10");
    for (const char* text : {"", "0", "300", "-1", "+1", "0x10", "1.0", "1 ", "99999999999999999999"})
        EXPECT_EQ(Checked(WholeNumber(1, 299), text),
                  "(a number from 1 to 299 is wanted, not '" + std::string(text) + "')");
}

TEST(Seconds, TakesAPositiveDecimal) {
    for (const char* text : {"1", "0.5", ".5", "20.", "007"})
        EXPECT_EQ(Checked(Seconds(), text), text);
    for (const char* text : {"", ".", "0", "0.0", "-1", "1e3", "inf", "nan", "0x1", "1.2.3", "10000000000"})
        EXPECT_EQ(Checked(Seconds(), text), "(seconds above 0 are wanted, not '" + std::string(text) + "')");
}

TEST(Threads, TakesThreadsAndLevels) {
    EXPECT_EQ(Checked(Threads(), "8"), "8");
    EXPECT_EQ(Checked(Threads(), "8^2"), "8^2");
    EXPECT_EQ(ThreadsOf("1"), 1);
    EXPECT_EQ(ThreadsOf("8^2"), 8);
    for (const char* text : {"", "0", "128", "8^", "^2", "8^0", "8^2^2", "-8"})
        EXPECT_NE(Checked(Threads(), text), text);
}

TEST(ProblemIds, TakesNumbersAndRanges) {
    const auto ranges = ParseIds("7,10-12,0");
    ASSERT_TRUE(ranges);
    ASSERT_EQ(ranges->size(), 3u);
    EXPECT_EQ(ranges->at(0).m_nFirst, 7);
    EXPECT_EQ(ranges->at(0).m_nLast, 7);
    EXPECT_EQ(ranges->at(1).m_nFirst, 10);
    EXPECT_EQ(ranges->at(1).m_nLast, 12);
    EXPECT_EQ(ranges->at(2).m_nLast, 0);
    for (const char* text : {"", ",", "1,", "3-2", "1-", "-1", "1--2", "1-2-3", "x", "2147483648"})
        EXPECT_FALSE(ParseIds(text)) << text;
}

} // namespace
} // namespace quillon
