#include "cli/output.h"

#include <cerrno>
#include <cstring>
#include <iostream>

#include "core/printable.h"

namespace quillon {

void WriteOutput(std::string_view text) {
    errno = 0;
    std::cout << text << std::flush;
    if (!std::cout)
        throw COutputError(std::string("cannot write to standard output") +
                           (errno != 0 ? std::string(": ") + std::strerror(errno) : ""));
}

void WriteDiagnostic(std::string_view message) {
    std::cerr << "quillon: " + WithoutControls(message) + "\n" << std::flush;
}

std::string WithoutControls(std::string_view text) {
    std::string clean;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        clean += byte < 0x20 || byte == 0x7f ? Printable(c) : std::string(1, c);
    }
    return clean;
}

} // namespace quillon
