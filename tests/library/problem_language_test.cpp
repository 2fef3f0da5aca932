#include "library/problem_language.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;

const std::string kPolishMain = "Wariant główny", kUkrainianMain = "Основний варіант";

std::unique_ptr<ChessProblem> ReadIn(ELanguage language, const std::string& sections,
                                     const std::vector<std::string>& warnings = {}) {
    TReading reading;
    ReadProblems("UTF-8\n1 #3\n" + sections + std::string(kPlainBody), Problems(reading), Errors(reading), language);
    EXPECT_EQ(reading.Errors(), warnings);
    return std::move(reading.m_problems.at(0));
}

std::set<std::string> TagsIn(ELanguage language, const std::string& tag) {
    return ReadIn(language, "//#TAGS\n//#" + tag + "\n")->tags;
}

std::set<std::string> Names(const ChessProblem& problem) {
    std::set<std::string> names;
    for (const auto& [name, variant] : problem.variants) {
        EXPECT_EQ(variant.name, name);
        names.insert(name);
    }
    return names;
}

TEST(Languages, TheMainVariantHasItsNameInEach) {
    const std::string section = "//!VARIANTS\n//!{Main variant} Ke1-e2\n//!{other} Ke1-d2\n";
    EXPECT_EQ(Names(*ReadIn(ELanguage::English, section)), (std::set<std::string>{"Main variant", "other"}));
    EXPECT_EQ(Names(*ReadIn(ELanguage::Polish, section)), (std::set<std::string>{kPolishMain, "other"}));
    EXPECT_EQ(Names(*ReadIn(ELanguage::Ukrainian, section)), (std::set<std::string>{kUkrainianMain, "other"}));
}

TEST(Languages, OfTwoMainVariantsTheOneInTheLanguageIsKept) {
    const std::string section = "//!VARIANTS\n//!{Main variant} Ke1-e2\n//!{" + kPolishMain + "} Ke1-d2\n";
    const std::vector<std::string> told{"2:1 Two main variants: only one is kept."};
    const auto polish = ReadIn(ELanguage::Polish, section, told);
    ASSERT_EQ(Names(*polish), (std::set<std::string>{kPolishMain}));
    EXPECT_EQ(polish->variants.at(kPolishMain).moves.at(0).text, "Ke1-d2");
    const auto english = ReadIn(ELanguage::English, section, told);
    ASSERT_EQ(Names(*english), (std::set<std::string>{"Main variant"}));
    EXPECT_EQ(english->variants.at("Main variant").moves.at(0).text, "Ke1-e2");
    EXPECT_EQ(Names(*ReadIn(ELanguage::Ukrainian, section, told)), (std::set<std::string>{kUkrainianMain}));
}

TEST(Languages, KnownTagsAreTranslated) {
    EXPECT_EQ(TagsIn(ELanguage::Polish, "ideal mate"), (std::set<std::string>{"mat idealny"}));
    EXPECT_EQ(TagsIn(ELanguage::English, "mat wzorowy"), (std::set<std::string>{"model mate"}));
    EXPECT_EQ(TagsIn(ELanguage::English, "roszada"), (std::set<std::string>{"castling"}));
    EXPECT_EQ(TagsIn(ELanguage::Polish, "zderoszowanie"), (std::set<std::string>{"zderoszowanie"}));
}

TEST(Languages, OtherTagsStay) {
    for (const ELanguage language : {ELanguage::Polish, ELanguage::English, ELanguage::Ukrainian}) {
        EXPECT_EQ(TagsIn(language, "my own"), (std::set<std::string>{"my own"}));
        EXPECT_EQ(TagsIn(language, "zagrożenie patem"), (std::set<std::string>{"zagrożenie patem"}));
    }
    EXPECT_EQ(TagsIn(ELanguage::Ukrainian, "ideal mate"), (std::set<std::string>{"ideal mate"}));
    EXPECT_EQ(TagsIn(ELanguage::English, "Ideal Mate"), (std::set<std::string>{"Ideal Mate"}));
}

TEST(Languages, ATagInTwoLanguagesBecomesOne) {
    EXPECT_EQ(ReadIn(ELanguage::English, "//#TAGS\n//#pendulum\n//#wahadło\n")->tags,
              (std::set<std::string>{"pendulum"}));
}

TEST(Languages, EachNameOfATagBelongsToOneTheme) {
    const std::set<std::string> known = KnownTags();
    EXPECT_EQ(known.size(), 101u); // 51 themes in two languages, one of them with the same name in both
    for (const std::string& tag : known) {
        EXPECT_EQ(TagName(TagName(tag, ELanguage::Polish), ELanguage::English), TagName(tag, ELanguage::English));
        EXPECT_EQ(TagName(TagName(tag, ELanguage::English), ELanguage::Polish), TagName(tag, ELanguage::Polish));
    }
}

TEST(Languages, WhatIsWrongWithSortIndicationsIsToldInPolishToo) {
    TReading reading;
    ReadProblems("1 #3\n//@SortIndications: 1.Qz1\n{}", Problems(reading), Errors(reading), ELanguage::Polish);
    EXPECT_STREQ(reading.m_errors.at(0).what(), "Niepoprawny opis SortIndication: 1.Qz1");
    SortIndications none;
    EXPECT_THROW(ParseSortIndications(none, "", true), ChessException);
    try {
        ParseSortIndications(none, "", true);
    } catch (const ChessException& failure) {
        EXPECT_STREQ(failure.what(), "Niepoprawny opis SortIndication");
    }
}

} // namespace
} // namespace quillon
