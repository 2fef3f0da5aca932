#include "globalregister/verification/whole_list.h"

namespace quillon {

void AddStamps(TFileStamps& stamps, const std::vector<std::filesystem::path>& files) {
    for (const std::filesystem::path& file : files)
        stamps[std::filesystem::absolute(file).lexically_normal().string()] =
            std::to_string(std::filesystem::file_size(file)) + " " +
            std::to_string(std::filesystem::last_write_time(file).time_since_epoch().count());
}

std::string WholeListText(const std::filesystem::path& log, int nLimit, TFileStamps stamps) {
    AddStamps(stamps, {log});
    std::string text = "limit " + std::to_string(nLimit) + "\n";
    for (const auto& [path, stamp] : stamps)
        text.append(stamp).append(" ").append(path).append("\n");
    return text;
}

} // namespace quillon
