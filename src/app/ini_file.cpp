#include "app/ini_file.h"

#include "library/file_text.h"

namespace quillon {

namespace {

constexpr std::size_t kMaxFileBytes = std::size_t{16} << 20;

} // namespace

std::error_code ReadIniFile(const std::filesystem::path& path, std::string& text) {
    text.clear();
    std::error_code failure;
    const std::filesystem::file_status status = std::filesystem::status(path, failure);
    if (status.type() == std::filesystem::file_type::not_found)
        return {};
    if (failure)
        return failure;
    if (!std::filesystem::is_regular_file(status))
        return std::make_error_code(std::errc::invalid_argument);
    return ReadFileText(path, text, kMaxFileBytes);
}

} // namespace quillon
