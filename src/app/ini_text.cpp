#include "app/ini_text.h"

#include <algorithm>
#include <cstdint>

#define SI_NO_CONVERSION  // text stays UTF-8
#define SI_IMPLEMENTATION // Debian's header leaves the functions to a library of its own unless asked
#include <SimpleIni.h>

#include "app/ini_lines.h"

namespace quillon {

namespace {

constexpr bool IsQuote(char c) { return c == '"' || c == '\''; }

bool IsQuoted(std::string_view value) {
    return value.size() >= 2 && IsQuote(value.front()) && value.front() == value.back();
}

/// Value of a digit of any base up to 16; 16 for all other characters.
constexpr unsigned DigitOf(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A' + 10);
    return 16;
}

/// Takes "0x", "0o" or "0b" off the front; without one the base is 10.
unsigned TakeBase(std::string_view& digits) {
    if (digits.size() < 2 || digits[0] != '0')
        return 10;
    const unsigned base = digits[1] == 'x' ? 16 : digits[1] == 'o' ? 8 : digits[1] == 'b' ? 2 : 10;
    if (base != 10)
        digits.remove_prefix(2);
    return base;
}

/// The parser takes a NUL for the end, and lets a header that is not closed reach over the line behind it.
std::string ForParser(const std::string& text) {
    std::string lines = "\n"; // a byte order mark can no more be at the beginning
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const TIniLine line = IniLineAt(text, begin);
        const std::string_view words = WordsOf(text, line);
        lines += IsIniHeader(words) && !IsClosedIniHeader(words) ? std::string_view("[]") : words;
        lines += '\n';
        begin = line.m_next;
    }
    std::replace(lines.begin(), lines.end(), '\0', ' ');
    return lines;
}

} // namespace

struct CIniText::TParsed {
    CSimpleIniA m_ini;
};

CIniText::CIniText(const std::string& text) : m_parsed(std::make_unique<TParsed>()) {
    m_parsed->m_ini.SetMultiKey(true);               // else the last of equal keys would count
    (void)m_parsed->m_ini.LoadData(ForParser(text)); // fails for want of memory only, and then knows no key
}

CIniText::~CIniText() = default;

std::optional<std::string> CIniText::Value(const std::string& section, const std::string& key) const {
    const char* const found = m_parsed->m_ini.GetValue(section.c_str(), key.c_str());
    if (found == nullptr)
        return std::nullopt;
    const std::string_view value = found;
    return std::string(IsQuoted(value) ? value.substr(1, value.size() - 2) : value);
}

std::optional<int> CIniText::Integer(const std::string& section, const std::string& key) const {
    const std::optional<std::string> value = Value(section, key);
    if (!value || value->empty())
        return std::nullopt;
    return IniInteger(*value);
}

int IniInteger(std::string_view value) {
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    const bool bNegative = value.starts_with('-');
    if (bNegative || value.starts_with('+'))
        value.remove_prefix(1);
    const unsigned base = TakeBase(value);
    std::uint32_t number = 0;
    for (const char c : value) {
        if (DigitOf(c) >= base)
            break;
        number = number * base + DigitOf(c);
    }
    return static_cast<std::int32_t>(bNegative ? 0 - number : number);
}

} // namespace quillon
