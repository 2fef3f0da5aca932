#pragma once
// Foreign text inside one-line messages.

#include <string>
#include <string_view>

namespace quillon {

/// The text with every byte outside printable ASCII written as \xNN, so that a message stays one readable line whatever
/// was pasted or read from a file.
[[nodiscard]] inline std::string Printable(std::string_view text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string printable;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f)
            printable += c;
        else
            printable.append({'\\', 'x', kHex[byte >> 4], kHex[byte & 0xf]});
    }
    return printable;
}

[[nodiscard]] inline std::string Printable(char c) { return Printable(std::string_view(&c, 1)); }

} // namespace quillon
