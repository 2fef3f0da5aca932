#include "app/ini_text.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace quillon {
namespace {

std::string ValueOf(const std::string& text, const std::string& key = "A") {
    return CIniText(text).Value("chess", key).value_or("(missing)");
}

TEST(IniText, NamesAreFoundInAnyCase) {
    EXPECT_EQ(ValueOf("[chess]\nQuickMode=7\n", "QuickMode"), "7");
    EXPECT_EQ(ValueOf("[CHESS]\nquickmode=7\n", "QuickMode"), "7");
    EXPECT_EQ(ValueOf("[Chess]\nQUICKMODE=7\n", "quickMode"), "7");
}

TEST(IniText, OnlyTheSectionAskedForCounts) {
    EXPECT_EQ(ValueOf("A=1\n"), "(missing)");
    EXPECT_EQ(ValueOf("A=1\n[other]\nA=2\n"), "(missing)");
    EXPECT_EQ(ValueOf("A=1\n[other]\nA=2\n[chess]\nA=3\n[more]\nA=4\n"), "3");
    EXPECT_EQ(ValueOf("[chess"), "(missing)");
    EXPECT_EQ(ValueOf("[chess\nA=1\n"), "(missing)") << "the section was never begun";
    EXPECT_EQ(ValueOf("[\n[chess]\nA=1\n"), "1") << "a broken line hides no other";
    EXPECT_EQ(ValueOf("[chess]\nA=1\n[x\nB=2\n", "B"), "(missing)") << "but it ends the section";
    EXPECT_EQ(ValueOf(""), "(missing)");
}

TEST(IniText, BlanksQuotesAndNotesAreNoPartOfAValue) {
    EXPECT_EQ(ValueOf("  [ chess ]  \n \t A \t = \t x y \t \n"), "x y");
    EXPECT_EQ(ValueOf("[chess]\nA=\" x \"\n"), " x ");
    EXPECT_EQ(ValueOf("[chess]\nA='x'\n"), "x");
    EXPECT_EQ(ValueOf("[chess]\nA='x\"\n"), "'x\"") << "not a pair";
    EXPECT_EQ(ValueOf("[chess]\nA=\"\n"), "\"");
    EXPECT_EQ(ValueOf("[chess]\n;A=1\n#A=2\nA=3\n"), "3");
    EXPECT_EQ(ValueOf("[chess]\nA=\n"), "");
    EXPECT_EQ(ValueOf("[chess]\nA=b=c\n"), "b=c");
    EXPECT_EQ(ValueOf("[chess]\nA\n=5\nA 6\n"), "(missing)") << "no key stands before a sign of equality";
}

TEST(IniText, OfEqualKeysTheFirstCounts) {
    EXPECT_EQ(ValueOf("[chess]\nA=1\na=2\nA=3\n"), "1");
    EXPECT_EQ(ValueOf("[chess]\nB=1\n[x]\nA=0\n[CHESS]\nA=2\n"), "2") << "the section goes on";
}

TEST(IniText, EveryLineEndAndAByteOrderMarkWillDo) {
    for (const char* const lineEnd : {"\n", "\r\n", "\r"}) {
        const std::string end = lineEnd;
        const std::string text = "[chess]" + end + "A=1" + end + "B=2" + end;
        for (const std::string& whole : {text, "\xEF\xBB\xBF" + text, text.substr(0, text.size() - end.size())}) {
            EXPECT_EQ(ValueOf(whole, "A"), "1");
            EXPECT_EQ(ValueOf(whole, "B"), "2");
        }
    }
}

TEST(IniText, NulBytesDoNotEndTheText) { EXPECT_EQ(ValueOf(std::string("[chess]\nB=1\0\n\0\nA=2\n", 19)), "2"); }

TEST(IniInteger, IsTheNumberAtTheBeginning) {
    const struct {
        const char* m_value;
        int m_number;
    } rows[] = {
        {"5", 5},
        {"-1", -1},
        {"+7", 7},
        {"007", 7},
        {"12abc", 12},
        {"5 ; five", 5},
        {"abc", 0},
        {"", 0},
        {"-", 0},
        {"  3", 3},
        {"1.9", 1},
        {"- 4", 0},
        {"0x1F", 31},
        {"-0x10", -16},
        {"0x", 0},
        {"0xg", 0},
        {"1x10", 1},
        {"0o17", 15},
        {"0b101", 5},
        {"0b12", 1},
        {"--5", 0},
        {"\t8", 8},
        {"2147483647", 2147483647},
        {"true", 0},
        {"0xffffffff", -1},
    };
    for (const auto& row : rows)
        EXPECT_EQ(IniInteger(row.m_value), row.m_number) << row.m_value;
}

TEST(IniInteger, KeepsTheLow32BitsOfAHugeNumber) {
    EXPECT_EQ(IniInteger("4294967296"), 0);
    EXPECT_EQ(IniInteger("4294967301"), 5);
    EXPECT_EQ(IniInteger("2147483648"), -2147483647 - 1);
    EXPECT_EQ(IniInteger("99999999999999999999"), 1661992959);
}

TEST(IniText, AnIntegerIsMissingWhereNothingStands) {
    EXPECT_EQ(CIniText("[chess]\nA=\n").Integer("chess", "A"), std::nullopt);
    EXPECT_EQ(CIniText("[chess]\nA=\"\"\n").Integer("chess", "A"), std::nullopt);
    EXPECT_EQ(CIniText("[chess]\nA=x\n").Integer("chess", "A"), 0);
    EXPECT_EQ(CIniText("[chess]\nA=\"5\"\n").Integer("chess", "A"), 5);
}

std::string With(const std::string& text, const std::string& value) { return WithIniValue(text, "chess", "A", value); }

TEST(IniValue, ReplacesNothingButTheValue) {
    EXPECT_EQ(With("; note\n[chess]\n  a =  1 ; old\nB=2\n\n; end", "5"), "; note\n[chess]\n  a =  5\nB=2\n\n; end");
    EXPECT_EQ(With("[chess]\r\nA=1\r\nB=2", "5"), "[chess]\r\nA=5\r\nB=2");
    EXPECT_EQ(With("[chess]\nA=", "5"), "[chess]\nA=5");
    EXPECT_EQ(With("[chess]\nA=  \nB=\n", "5"), "[chess]\nA=  5\nB=\n");
    EXPECT_EQ(With("[chess]\nA=1\nA=2\n", "5"), "[chess]\nA=5\nA=2\n") << "the one that is read";
    EXPECT_EQ(With("[x]\nA=0\n[chess]\nB=1\n[CHESS]\nA=2\n", "5"), "[x]\nA=0\n[chess]\nB=1\n[CHESS]\nA=5\n");
}

TEST(IniValue, OfANewKeyEndsItsSection) {
    EXPECT_EQ(With("[chess]\nB=1\n\n[x]\nA=2\n", "5"), "[chess]\nB=1\nA=5\n\n[x]\nA=2\n");
    EXPECT_EQ(With("[chess]\r\nB=1\r\n\r\n", "5"), "[chess]\r\nB=1\r\nA=5\r\n\r\n");
    EXPECT_EQ(With("[chess]\n;A=1\nwhat is this\n", "5"), "[chess]\n;A=1\nwhat is this\nA=5\n");
    EXPECT_EQ(With("[chess]", "5"), "[chess]\nA=5\n") << "the line is ended first";
    EXPECT_EQ(With("[chess]\nB=1", "5"), "[chess]\nB=1\nA=5\n");
}

TEST(IniValue, OfANewSectionEndsTheFile) {
    EXPECT_EQ(With("", "5"), "[chess]\nA=5\n");
    EXPECT_EQ(With("\xEF\xBB\xBF", "5"), "\xEF\xBB\xBF[chess]\nA=5\n");
    EXPECT_EQ(With("A=1\n[x]\nA=2", "5"), "A=1\n[x]\nA=2\n[chess]\nA=5\n");
    EXPECT_EQ(With("[chess\nA=1\n", "5"), "[chess\nA=1\n[chess]\nA=5\n") << "what was cut off is no section";
    EXPECT_EQ(With("[x]\r\n", "5"), "[x]\r\n[chess]\r\nA=5\r\n");
}

TEST(IniValue, IsReadBackWhateverItIs) {
    for (const std::string value : {"x", "", " x", "x ", "\"x\"", "'x'", "'", "\"", "\"\"", "; x", "[x]", "a=b", "  ",
                                    "\tx", "\xC5\xBB\xC3\xB3\xC5\x82w"})
        EXPECT_EQ(ValueOf(With("[chess]\nB=1\n", value)), value) << value;
    EXPECT_EQ(ValueOf(With("", "two\r\nlines")), "two  lines") << "a value is one line";
}

/// Texts of the pieces that ini files, whole and broken ones, are made of.
std::string RandomText(std::mt19937& random) {
    static const std::vector<std::string> pieces = {"[chess]",
                                                    "[CHESS]",
                                                    "[x]",
                                                    "[",
                                                    "]",
                                                    "A",
                                                    "a",
                                                    "B",
                                                    "=",
                                                    "= ",
                                                    " ",
                                                    "\t",
                                                    "\n",
                                                    "\n",
                                                    "\n",
                                                    "\r\n",
                                                    "\r",
                                                    ";",
                                                    "#",
                                                    "1",
                                                    "'",
                                                    "\"",
                                                    "\xEF\xBB\xBF",
                                                    "[chess",
                                                    "A=1",
                                                    "B=2",
                                                    std::string(1, '\0')};
    std::string text;
    for (int count = std::uniform_int_distribution(0, 30)(random); count > 0; --count)
        text += pieces[std::uniform_int_distribution<std::size_t>(0, pieces.size() - 1)(random)];
    return text;
}

TEST(IniValue, IsReadBackFromEveryTextAndDisturbsNoOther) {
    std::mt19937 random(6);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = RandomText(random);
        const std::string changed = With(text, "new");
        ASSERT_EQ(ValueOf(changed), "new") << ::testing::PrintToString(text);
        ASSERT_EQ(With(changed, "new"), changed) << ::testing::PrintToString(text);
        const CIniText before(text);
        const CIniText after(changed);
        for (const auto& [section, key] : std::map<std::string, std::string>{{"chess", "B"}, {"x", "A"}})
            ASSERT_EQ(before.Value(section, key), after.Value(section, key)) << ::testing::PrintToString(text);
        ASSERT_EQ(before.Value("x", "B"), after.Value("x", "B")) << ::testing::PrintToString(text);
    }
}

} // namespace
} // namespace quillon
