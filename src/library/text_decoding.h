#pragma once
// From the bytes of a file to the UTF-8 text that the program works with.
//
// Threads: the decoders may be called from any thread; SetLegacyCodePage belongs to the start of the program.

#include <string>
#include <string_view>

namespace quillon {

[[nodiscard]] bool IsValidUtf8(std::string_view bytes);

/// The bytes as UTF-8; what is not well-formed becomes U+FFFD, so that the result always is.
[[nodiscard]] std::string DecodeUtf8(std::string_view bytes);

/// Text of a file that does not name its encoding: in the legacy code page if one is set, else in the character set of
/// the user's locale. Where that is UTF-8 (or plain ASCII) and the bytes are not valid UTF-8, they are windows-1250,
/// the code page of the machines on which such files were written.
[[nodiscard]] std::string DecodeLegacyText(std::string_view bytes);

/// Takes the mark of UTF-8 off the front of a file's text; true if it is there: the word "UTF-8", perhaps behind
/// blanks, or a byte order mark, which editors put before it or in its place.
[[nodiscard]] bool TakeUtf8Mark(std::string_view& text);

/// Fixes the code page of DecodeLegacyText by a name such as "windows-1251"; empty for the locale's, as at the start.
/// False, and nothing changes, if there is no such code page.
[[nodiscard]] bool SetLegacyCodePage(const std::string& name);

/// Without blanks (space, tab, CR, LF, no-break space) at both ends. `text` is UTF-8.
[[nodiscard]] std::string_view TrimText(std::string_view text);

} // namespace quillon
