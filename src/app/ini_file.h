#pragma once
// Ini files on the disk.

#include <filesystem>
#include <string>
#include <system_error>

namespace quillon {

/// Reads the text of a file; it is empty, without an error, where there is no file. A pipe or device, which might never
/// end, cannot be read, nor can a file that is larger than any ini file.
[[nodiscard]] std::error_code ReadIniFile(const std::filesystem::path& path, std::string& text);

} // namespace quillon
