#include "library/file_text.h"

#include <cerrno>
#include <fstream>
#include <istream>
#include <vector>

namespace quillon {

std::error_code ReadStreamText(std::istream& stream, std::string& text, std::size_t nMaxBytes) {
    std::vector<char> buffer(std::size_t{1} << 16);
    text.clear();
    while (stream.read(buffer.data(), static_cast<std::streamsize>(buffer.size())), stream.gcount() > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(stream.gcount()));
        if (text.size() > nMaxBytes)
            return std::make_error_code(std::errc::file_too_large);
    }
    return stream.bad() ? std::make_error_code(std::errc::io_error) : std::error_code();
}

std::error_code ReadFileText(const std::filesystem::path& path, std::string& text, std::size_t nMaxBytes) {
    std::error_code failure;
    const std::filesystem::file_status status = std::filesystem::status(path, failure);
    if (failure)
        return failure;
    if (std::filesystem::is_directory(status))
        return std::make_error_code(std::errc::is_a_directory);
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return errno != 0 ? std::error_code(errno, std::generic_category()) : std::make_error_code(std::errc::io_error);
    return ReadStreamText(stream, text, nMaxBytes);
}

} // namespace quillon
