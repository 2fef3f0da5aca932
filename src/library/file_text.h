#pragma once
// A text file, read whole.

#include <cstddef>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <system_error>

namespace quillon {

/// No text that people write is larger. A device or pipe that never ends is not read until memory is gone.
inline constexpr std::size_t kMaxTextBytes = std::size_t{1} << 30;

/// Reads a file, or what a stream has left, into `text`. What went wrong is returned, no error if nothing did:
/// std::errc::is_a_directory, file_too_large above nMaxBytes, io_error, and what the system says.
[[nodiscard]] std::error_code ReadFileText(const std::filesystem::path& path, std::string& text,
                                           std::size_t nMaxBytes = kMaxTextBytes);
[[nodiscard]] std::error_code ReadStreamText(std::istream& stream, std::string& text,
                                             std::size_t nMaxBytes = kMaxTextBytes);

} // namespace quillon
