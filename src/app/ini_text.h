#pragma once
// The text of an ini file: values read from it, values put into it.
//
//   [section]          names of sections and keys in any case; blanks around names and values do not count
//   key = value        one pair of quotes around a value is no part of it, " or '
//   ; note             so is a line that begins with #
//
// Nothing here fails on a text: what is no section, key or note is passed over. Of a key that stands twice in a section
// the first counts. A section may stand twice. CR, LF and both together end a line; a byte order mark is passed over.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillon {

class CIniText {
  public:
    explicit CIniText(const std::string& text);
    CIniText(const CIniText&) = delete;
    CIniText& operator=(const CIniText&) = delete;
    ~CIniText();

    /// None if the key is not there; empty if nothing stands behind its "=".
    [[nodiscard]] std::optional<std::string> Value(const std::string& section, const std::string& key) const;

    /// The value as IniInteger reads it; none also if it is empty.
    [[nodiscard]] std::optional<int> Integer(const std::string& section, const std::string& key) const;

  private:
    struct TParsed;
    std::unique_ptr<TParsed> m_parsed;
};

/// The whole number that a value begins with, 0 if it begins with none: a sign, then decimal digits, or 0x, 0o, 0b and
/// digits of that base. "12abc" is 12. A number beyond 32 bits keeps its low 32.
[[nodiscard]] int IniInteger(std::string_view value);

/// The text with this value. All else stays as it is, byte for byte: notes, blank lines, what no reader understands. A
/// new key becomes the last line of its section, a new section the last of the file. Line ends within the value become
/// blanks; it gets quotes where it would not be read back without.
[[nodiscard]] std::string WithIniValue(std::string text, std::string_view section, std::string_view key,
                                       std::string_view value);

} // namespace quillon
