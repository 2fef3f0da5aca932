#include "library/text_decoding.h"

#include <algorithm>
#include <cstdint>
#include <langinfo.h>
#include <limits>
#include <locale.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include "core/chess_exception.h"

namespace quillon {

namespace {

constexpr const char* kFallback = "windows-1250";
constexpr const char* kUtf8 = "UTF-8";
constexpr std::string_view kUtf8Mark = kUtf8;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kNoBreakSpace = "\xC2\xA0";

bool IsPlainAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The length as ICU takes it, with room for a result of several bytes a character.
std::int32_t IcuLength(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<std::int32_t>::max() / 4)
        throw ChessException("Text too long.");
    return static_cast<std::int32_t>(bytes.size());
}

/// From the named code page to UTF-8; characters that cannot be mapped become U+FFFD.
std::string Convert(std::string_view bytes, const char* codePage) {
    const std::int32_t nLength = IcuLength(bytes);
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t nNeeded = ucnv_convert(kUtf8, codePage, nullptr, 0, bytes.data(), nLength, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status))
        throw ChessException("Text cannot be decoded from code page " + std::string(codePage));
    std::string text(static_cast<std::size_t>(nNeeded), '\0');
    status = U_ZERO_ERROR;
    ucnv_convert(kUtf8, codePage, text.data(), nNeeded, bytes.data(), nLength, &status);
    if (U_FAILURE(status))
        throw ChessException("Text cannot be decoded from code page " + std::string(codePage));
    return text;
}

bool IsCodePage(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name.c_str(), &status);
    if (U_FAILURE(status))
        return false;
    ucnv_close(converter);
    return true;
}

bool SameCodePage(const std::string& a, const char* b) { return ucnv_compareNames(a.c_str(), b) == 0; }

/// The character set that the environment asks for; the process need not have called setlocale. Empty where it says
/// nothing of use: a locale that does not exist, or plain ASCII, which is a part of every other set.
std::string LocaleCodePage() {
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", locale_t{});
    if (!locale)
        return {};
    const std::string name = nl_langinfo_l(CODESET, locale);
    freelocale(locale);
    const bool bAscii = SameCodePage(name, "ANSI_X3.4-1968") || SameCodePage(name, "US-ASCII");
    return bAscii || !IsCodePage(name) ? std::string() : name;
}

std::string& FixedCodePage() {
    static std::string name;
    return name;
}

std::string CodePage() {
    static const std::string ofLocale = LocaleCodePage();
    return FixedCodePage().empty() ? ofLocale : FixedCodePage();
}

} // namespace

bool IsValidUtf8(std::string_view bytes) {
    if (IsPlainAscii(bytes))
        return true;
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t nUnits = 0;
    u_strFromUTF8(nullptr, 0, &nUnits, bytes.data(), IcuLength(bytes), &status);
    return status == U_BUFFER_OVERFLOW_ERROR || U_SUCCESS(status);
}

std::string DecodeUtf8(std::string_view bytes) {
    return IsValidUtf8(bytes) ? std::string(bytes) : Convert(bytes, kUtf8);
}

std::string DecodeLegacyText(std::string_view bytes) {
    if (IsPlainAscii(bytes))
        return std::string(bytes);
    const std::string codePage = CodePage();
    if (!codePage.empty() && !SameCodePage(codePage, kUtf8))
        return Convert(bytes, codePage.c_str());
    return IsValidUtf8(bytes) ? std::string(bytes) : Convert(bytes, kFallback);
}

bool TakeUtf8Mark(std::string_view& text) {
    bool bUtf8 = false;
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
        bUtf8 = true;
    }
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.starts_with(kUtf8Mark)) {
        text.remove_prefix(kUtf8Mark.size());
        bUtf8 = true;
    }
    return bUtf8;
}

bool SetLegacyCodePage(const std::string& name) {
    if (!name.empty() && !IsCodePage(name))
        return false;
    FixedCodePage() = name;
    return true;
}

std::string_view TrimText(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    for (;;) {
        if (!text.empty() && isBlank(text.front()))
            text.remove_prefix(1);
        else if (!text.empty() && isBlank(text.back()))
            text.remove_suffix(1);
        else if (text.starts_with(kNoBreakSpace))
            text.remove_prefix(kNoBreakSpace.size());
        else if (text.ends_with(kNoBreakSpace))
            text.remove_suffix(kNoBreakSpace.size());
        else
            return text;
    }
}

} // namespace quillon
