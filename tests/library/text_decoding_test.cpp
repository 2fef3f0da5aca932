#include "library/text_decoding.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

/// Holds a legacy code page for the length of a test.
class CCodePage {
  public:
    explicit CCodePage(const char* name) { EXPECT_TRUE(SetLegacyCodePage(name)); }
    CCodePage(const CCodePage&) = delete;
    CCodePage& operator=(const CCodePage&) = delete;
    ~CCodePage() { static_cast<void>(SetLegacyCodePage("")); }
};

TEST(TextDecoding, TellsValidUtf8) {
    EXPECT_TRUE(IsValidUtf8(""));
    EXPECT_TRUE(IsValidUtf8("plain"));
    EXPECT_TRUE(IsValidUtf8("\xC5\x82"));          // a Polish l
    EXPECT_TRUE(IsValidUtf8("\xF0\x9F\x99\x82"));  // beyond 16 bits
    EXPECT_FALSE(IsValidUtf8("\xB3"));             // lone continuation
    EXPECT_FALSE(IsValidUtf8("a\xC5"));            // cut short
    EXPECT_FALSE(IsValidUtf8("\xC0\xAF"));         // overlong
    EXPECT_FALSE(IsValidUtf8("\xED\xA0\x80"));     // surrogate
    EXPECT_FALSE(IsValidUtf8("\xF4\x90\x80\x80")); // beyond Unicode
}

TEST(TextDecoding, Utf8StaysAsItIs) {
    EXPECT_EQ(DecodeUtf8("Z\xC5\x82oty"), "Z\xC5\x82oty");
    EXPECT_EQ(DecodeUtf8(""), "");
}

TEST(TextDecoding, BytesThatAreNotUtf8AreReplacedAndTheRestStays) {
    EXPECT_EQ(DecodeUtf8("a\xFFz"), "a\xEF\xBF\xBDz");
    EXPECT_TRUE(IsValidUtf8(DecodeUtf8("\xC5z\xE2\x82\xF0\x80")));
}

TEST(TextDecoding, LegacyCodePageIsUsedWhenItIsSet) {
    const CCodePage cyrillic("windows-1251");
    EXPECT_EQ(DecodeLegacyText("\xCC\xE0\xF2"), "\xD0\x9C\xD0\xB0\xD1\x82"); // "Mat", checkmate, in Cyrillic
    EXPECT_EQ(DecodeLegacyText("\xC5\x82"), "\xD0\x95\xE2\x80\x9A");         // though it is valid UTF-8
}

TEST(TextDecoding, UnderUtf8WhatIsNotUtf8IsCentralEuropean) {
    const CCodePage utf8("UTF-8");
    EXPECT_EQ(DecodeLegacyText("\xC5\x82"), "\xC5\x82");
    EXPECT_EQ(DecodeLegacyText("wa\xBF"), "wa\xC5\xBC"); // z with a dot
    EXPECT_EQ(DecodeLegacyText("\xB3\xF3\x9C\xE6"), "\xC5\x82\xC3\xB3\xC5\x9B\xC4\x87");
}

TEST(TextDecoding, AsciiIsTheSameInEveryCodePage) {
    for (const char* name : {"windows-1250", "windows-1251", "UTF-8", ""}) {
        const CCodePage codePage(name);
        EXPECT_EQ(DecodeLegacyText("Mate in 3 {x}"), "Mate in 3 {x}") << name;
    }
}

TEST(TextDecoding, UnknownCodePageIsRefused) {
    const CCodePage cyrillic("windows-1251");
    EXPECT_FALSE(SetLegacyCodePage("no-such-page"));
    EXPECT_EQ(DecodeLegacyText("\xCC"), "\xD0\x9C");
}

TEST(TextDecoding, ResultIsValidUtf8ForEveryByteOfEveryCodePage) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const char* name : {"windows-1250", "windows-1251", "windows-1252", "ISO-8859-2", "UTF-8", ""}) {
        const CCodePage codePage(name);
        EXPECT_TRUE(IsValidUtf8(DecodeLegacyText(all))) << name;
    }
}

TEST(TextDecoding, TrimsBlanksAndNoBreakSpaces) {
    EXPECT_EQ(TrimText(" \t\r\n\xC2\xA0 a b\xC2\xA0\r"), "a b");
    EXPECT_EQ(TrimText(" \xC2\xA0"), "");
    EXPECT_EQ(TrimText(""), "");
    EXPECT_EQ(TrimText("voil\xC3\xA0"), "voil\xC3\xA0"); // ends with the byte of a no-break space
}

} // namespace
} // namespace quillon
