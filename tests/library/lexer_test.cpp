#include "library/lexer.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quillon {
namespace {

constexpr bool kRequired = true, kOptional = false;
constexpr bool kKeepSpecial = true, kSkipSpecial = false;

/// Every lexeme of a text up to its end.
std::vector<std::string> Lexemes(std::string_view text, bool bKeepSpecialComments = kSkipSpecial) {
    std::vector<std::string> lexemes;
    CTextPosition position(text);
    for (;;) {
        const std::string_view lexeme = NextLexeme(position, kOptional, bKeepSpecialComments);
        if (lexeme.empty())
            return lexemes;
        lexemes.emplace_back(lexeme);
    }
}

/// "line:column message" of the failure of a call; empty if it does not fail.
template <class TCall> std::string FailureOf(TCall call) {
    try {
        call();
    } catch (const ProblemFileError& error) {
        return std::to_string(error.Line()) + ":" + std::to_string(error.Column()) + " " + error.what();
    }
    return {};
}

std::string LexemeFailure(std::string_view text, bool bRequired, bool bKeepSpecialComments = kSkipSpecial) {
    CTextPosition position(text);
    return FailureOf([&] { static_cast<void>(NextLexeme(position, bRequired, bKeepSpecialComments)); });
}

using TLexemes = std::vector<std::string>;

TEST(Lexer, SplitsRunsOfLettersAndDigitsFromSingleCharacters) {
    EXPECT_EQ(Lexemes("117 #5 s#3{W:Ke1,Qd1}(-)"),
              (TLexemes{"117", "#", "5", "s", "#", "3", "{", "W", ":", "Ke1", ",", "Qd1", "}", "(", "-", ")"}));
}

TEST(Lexer, KeepsHatAndUnderscoreInsideARun) {
    EXPECT_EQ(Lexemes("THREADS 4^2 SH_KEYLINE"), (TLexemes{"THREADS", "4^2", "SH_KEYLINE"}));
}

TEST(Lexer, HatAndUnderscoreDoNotBeginARun) { EXPECT_EQ(Lexemes("^a _b"), (TLexemes{"^", "a", "_", "b"})); }

TEST(Lexer, SkipsAllFiveBlanks) {
    EXPECT_EQ(Lexemes(" \t\n\r\xA0"
                      "a\xA0\r\n\t b \xA0"),
              (TLexemes{"a", "b"}));
}

TEST(Lexer, BytesOutsideAsciiAreLexemesOfOneByte) {
    EXPECT_EQ(Lexemes("a\xC5\x82z"), (TLexemes{"a", "\xC5", "\x82", "z"}));
}

TEST(Lexer, SkipsBothKindsOfComments) {
    EXPECT_EQ(Lexemes("a/* b \n c */d // e\n f"), (TLexemes{"a", "d", "f"}));
    EXPECT_EQ(Lexemes("/**/a/***/b//\nc"), (TLexemes{"a", "b", "c"}));
}

TEST(Lexer, CommentSignsMeanNothingInsideTheOtherKind) {
    EXPECT_EQ(Lexemes("/* // */ a // /* \n b"), (TLexemes{"a", "b"}));
}

TEST(Lexer, AnOpeningSignDoesNotCloseItself) { EXPECT_EQ(Lexemes("/*/ a */ b"), (TLexemes{"b"})); }

TEST(Lexer, SkipsSpecialCommentsUnlessTheyAreKept) {
    EXPECT_EQ(Lexemes("//!x\n//#y\n//@SortIndications: z\na"), (TLexemes{"a"}));
}

TEST(Lexer, ReturnsKeptSpecialCommentsWhole) {
    EXPECT_EQ(Lexemes("//!default #2 AllSolutions\n//#tag name \n//@SortIndications: 1.Qd1\n// no\na", kKeepSpecial),
              (TLexemes{"//!default #2 AllSolutions", "//#tag name ", "//@SortIndications: 1.Qd1", "a"}));
}

TEST(Lexer, KeptSpecialCommentEndsBeforeItsLineFeed) {
    CTextPosition position("//#tag\r\nnext");
    EXPECT_EQ(NextLexeme(position, kRequired, kKeepSpecial), "//#tag\r");
    EXPECT_EQ(position.Place(), (TTextPlace{1, 8}));
    EXPECT_EQ(NextLexeme(position, kRequired, kKeepSpecial), "next");
}

TEST(Lexer, KeepsOfTheAtCommentsOnlySortIndicationsInAnyCase) {
    EXPECT_EQ(Lexemes("//@other\n//@sortINDICATIONS\n//@SortIndication s\na", kKeepSpecial),
              (TLexemes{"//@sortINDICATIONS", "a"}));
}

TEST(Lexer, EndOfTextIsEmptyOrFails) {
    EXPECT_TRUE(Lexemes(" \n\t").empty());
    EXPECT_EQ(LexemeFailure("", kRequired), "1:1 Unexpected end of file.");
    EXPECT_EQ(LexemeFailure(" \n\t", kRequired), "2:2 Unexpected end of file.");
    EXPECT_EQ(LexemeFailure("", kOptional), "");
}

TEST(Lexer, UnclosedCommentFailsWhereItBegins) {
    EXPECT_EQ(LexemeFailure("\n /* a\n b", kRequired), "2:2 Unexpected end of file before comment closed.");
    EXPECT_EQ(LexemeFailure("\n // a", kRequired), "2:2 Unexpected end of file before comment closed.");
    EXPECT_EQ(LexemeFailure("//", kRequired), "1:1 Unexpected end of file before comment closed.");
    EXPECT_EQ(LexemeFailure("//#tag", kRequired, kKeepSpecial), "1:1 Unexpected end of file before comment closed.");
}

TEST(Lexer, UnclosedCommentIsTheEndOfTheTextWhereNothingIsRequired) {
    EXPECT_EQ(Lexemes("a /* b"), (TLexemes{"a"}));
    EXPECT_EQ(Lexemes("a // b"), (TLexemes{"a"}));
    EXPECT_EQ(Lexemes("a //#b", kKeepSpecial), (TLexemes{"a"}));
}

TEST(Lexer, SlashBeforeAnythingElseFails) {
    EXPECT_EQ(LexemeFailure(" /a", kRequired), "1:2 Unexpected lexem (slash).");
    EXPECT_EQ(LexemeFailure("/", kRequired), "1:1 Unexpected lexem (slash).");
    EXPECT_EQ(LexemeFailure("/ /", kOptional), "1:1 Unexpected lexem (slash).");
}

TEST(Lexer, AFailureLeavesThePositionWhereItWas) {
    CTextPosition position("a /b");
    EXPECT_EQ(NextLexeme(position, kRequired, kSkipSpecial), "a");
    EXPECT_THROW(static_cast<void>(NextLexeme(position, kRequired, kSkipSpecial)), ProblemFileError);
    EXPECT_EQ(position.Rest(), "/b");
}

TEST(Lexer, TokenEndsAtTheFirstCarriageReturn) {
    CTextPosition position("//#tag\rmore\r\nnext");
    EXPECT_EQ(NextToken(position, kRequired, kKeepSpecial), "//#tag");
    EXPECT_EQ(NextToken(position, kRequired, kKeepSpecial), "next");
    EXPECT_EQ(NextToken(position, kOptional, kKeepSpecial), "");
}

TEST(Lexer, IdentifierMustBeginWithALetterOrDigit) {
    CTextPosition position("White 7up ,");
    EXPECT_EQ(NextIdentifier(position), "White");
    EXPECT_EQ(NextIdentifier(position), "7up");
    EXPECT_EQ(FailureOf([&] { static_cast<void>(NextIdentifier(position)); }),
              "1:11 Alphanumeric identifier expected. Found: ,");
}

TEST(Lexer, IdentifierIsRequiredAndSkipsSpecialComments) {
    CTextPosition position("//#tag\n a ");
    EXPECT_EQ(NextIdentifier(position), "a");
    EXPECT_EQ(FailureOf([&] { static_cast<void>(NextIdentifier(position)); }), "2:4 Unexpected end of file.");
}

TEST(Lexer, WordSkipsSpacesAndTabsAndRunsToTheNextBlank) {
    CTextPosition position(" \t8/8,{}// w\rx\ny");
    EXPECT_EQ(NextWord(position), "8/8,{}//");
    EXPECT_EQ(NextWord(position), "w");
    EXPECT_EQ(NextWord(position), "");
}

TEST(Lexer, WordDoesNotCrossALine) {
    CTextPosition position("  \n8/8");
    EXPECT_EQ(NextWord(position), "");
    EXPECT_EQ(position.Place(), (TTextPlace{1, 3}));
}

TEST(Lexer, WordAtTheEndOfTheTextIsEmpty) {
    CTextPosition position("ab");
    EXPECT_EQ(NextWord(position), "ab");
    EXPECT_EQ(NextWord(position), "");
}

TEST(Lexer, PeekingLeavesThePosition) {
    CTextPosition position("a b");
    EXPECT_EQ(PeekToken(position), "a");
    EXPECT_EQ(NextToken(position, kRequired, kSkipSpecial), "a");
}

TEST(TextPosition, CountsLinesAndColumnsFromOne) {
    CTextPosition position("ab\ncd\n\ne");
    EXPECT_EQ(position.Place(), (TTextPlace{1, 1}));
    position.Advance(2);
    EXPECT_EQ(position.Place(), (TTextPlace{1, 3}));
    position.Advance(1);
    EXPECT_EQ(position.Place(), (TTextPlace{2, 1}));
    position.Advance(4);
    EXPECT_EQ(position.Place(), (TTextPlace{4, 1}));
}

TEST(TextPosition, DoesNotMoveBeyondTheEnd) {
    CTextPosition position("ab");
    position.Advance(std::string_view::npos);
    EXPECT_TRUE(position.AtEnd());
    EXPECT_EQ(position.Place(), (TTextPlace{1, 3}));
}

TEST(TextPosition, ACopyIsABookmark) {
    CTextPosition position("a\nb\nc");
    static_cast<void>(NextLexeme(position, kRequired, kSkipSpecial));
    const CTextPosition bookmark = position;
    static_cast<void>(NextLexeme(position, kRequired, kSkipSpecial));
    position = bookmark;
    EXPECT_EQ(NextLexeme(position, kRequired, kSkipSpecial), "b");
    EXPECT_EQ(position.LexemePlace(), (TTextPlace{2, 1}));
}

TEST(TextPosition, KnowsWhatStandsBeforeAndBehindOnItsLine) {
    CTextPosition position("x\n12 #3\ny");
    static_cast<void>(NextLexeme(position, kRequired, kSkipSpecial));
    static_cast<void>(NextLexeme(position, kRequired, kSkipSpecial));
    EXPECT_EQ(position.LineSoFar(), "12");
    EXPECT_EQ(position.RestOfLine(), " #3");
    EXPECT_EQ(position.LexemeStart().RestOfLine(), "12 #3");
}

TEST(TextPosition, FirstLineNumberCanBeSet) { EXPECT_EQ(CTextPosition("a", 7).Place(), (TTextPlace{7, 1})); }

TEST(TextPosition, MessagesStayReadableWhateverTheyQuote) {
    CTextPosition position("x\n\x1B[2J");
    static_cast<void>(NextLexeme(position, kRequired, kSkipSpecial));
    EXPECT_EQ(FailureOf([&] { static_cast<void>(NextIdentifier(position)); }),
              "2:1 Alphanumeric identifier expected. Found: \\x1B");
    EXPECT_EQ(FailureOf([&] { position.Fail("Found: " + std::string(1000, 'a')); }),
              "2:1 Found: " + std::string(293, 'a') + "...");
}

TEST(Lexer, MillionsOfLexemesAreReadInOnePass) {
    std::string text;
    for (int i = 0; i < 1'000'000; ++i)
        text += i % 10 == 0 ? "/* c */ // d\n" : "ab, ";
    text.append(10'000'000, 'z');
    const auto start = std::chrono::steady_clock::now();
    const std::vector<std::string> lexemes = Lexemes(text);
    EXPECT_EQ(lexemes.size(), 1'800'001u);
    EXPECT_EQ(lexemes.back().size(), 10'000'000u);
    // A reader that went back to the beginning for each lexeme would need hours.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

} // namespace
} // namespace quillon
