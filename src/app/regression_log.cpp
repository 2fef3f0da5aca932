#include "app/regression_log.h"

#include <array>
#include <cstdio>

#include "app/settings.h"

namespace quillon {

namespace {

constexpr std::array<std::uint32_t, 3> kPausesMs{0, 100, 200}; // before the further tries to rename

bool Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code failure;
    std::filesystem::rename(from, to, failure);
    return !failure;
}

} // namespace

std::filesystem::path RegressionLogPath() { return WorkingFolder() / kRegressionLogName; }

bool AppendRegressionLog(std::string_view text, const std::filesystem::path& path) {
    std::FILE* const file = std::fopen(path.c_str(), "a");
    if (file == nullptr)
        return false;
    const bool bWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return std::fclose(file) == 0 && bWritten;
}

void KeepPreviousRegressionLog(const std::filesystem::path& path, const std::function<void(std::uint32_t)>& sleep) {
    const std::filesystem::path backup = path.string() + ".BAK";
    std::error_code ignored;
    std::filesystem::remove(backup, ignored);
    if (!std::filesystem::exists(path, ignored)) // there is nothing that a further try could rename
        return;
    if (Rename(path, backup))
        return;
    for (const std::uint32_t pause : kPausesMs) {
        sleep(pause);
        if (Rename(path, backup))
            return;
    }
}

} // namespace quillon
