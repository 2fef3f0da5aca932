#pragma once
// The tags of a problem file, without its problems: also of a file that cannot be read as problems.

#include <filesystem>
#include <set>
#include <string>

namespace quillon {

/// Adds the text of every "//#..." line that stands below a line "//#TAGS".
///   Errors  ChessException "Error reading file.".
void AppendTagsFromFile(const std::filesystem::path& path, std::set<std::string>& tags);

} // namespace quillon
