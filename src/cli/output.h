#pragma once
// Standard output, which may be a full disk, and one-line diagnostics on standard error.

#include <stdexcept>
#include <string>
#include <string_view>

namespace quillon {

/// Standard output cannot be written: nothing that follows would reach anyone.
class COutputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Writes the text to standard output and hands it on at once.
///   Errors  COutputError.
void WriteOutput(std::string_view text);

/// Writes "quillon: " and the message as one line to standard error.
void WriteDiagnostic(std::string_view message);

/// The text with control characters written as \xNN: what comes from a file must not steer a terminal. Bytes above 127
/// stay, they are letters in UTF-8.
[[nodiscard]] std::string WithoutControls(std::string_view text);

} // namespace quillon
