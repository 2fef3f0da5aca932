#pragma once
// What says that the log of a run is a whole list: no element is faulty that it does not name. It does so for the files
// that the run has looked at alone, and for what it was told of the table.
//
// The mark is a file beside the log. Picture, lines of text:
//   limit N                  half-moves: longer mates may be missing; 0: none may
//   size time absolute path  of the log, and of each file whose elements were looked up, in the order of their paths

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

/// Beside a log that is a whole list.
inline constexpr std::string_view kWholeListExtension = ".whole";

/// Size and time of the last change of files, by their absolute paths.
using TFileStamps = std::map<std::string, std::string>;

/// Adds these files; those that are there already are looked at anew.
///   Errors  std::filesystem::filesystem_error.
void AddStamps(TFileStamps& stamps, const std::vector<std::filesystem::path>& files);

/// The content of a mark.
///   Errors  std::filesystem::filesystem_error.
[[nodiscard]] std::string WholeListText(const std::filesystem::path& log, int nLimit, TFileStamps stamps);

} // namespace quillon
