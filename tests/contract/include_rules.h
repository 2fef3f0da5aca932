#pragma once
// The rule of layers: which folder of src/ may include which. Read off the #include lines of the source text.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

/// One broken rule, as the test prints it.
struct TIncludeFault {
    std::string m_file; // relative to src/, with '/'
    int m_nLine = 0;    // from 1; 0 for a fault of the file itself
    std::string m_reason;

    bool operator==(const TIncludeFault&) const = default;
};

/// Checks one source file.
///   file  its path relative to src/, with '/': its first folder decides what it may include.
///   text  its contents.
[[nodiscard]] std::vector<TIncludeFault> CheckIncludes(const std::string& file, std::string_view text);

/// Checks every .h, .h.in and .cpp file under `src`, in order of their names.
///   nFiles  receives how many were read.
[[nodiscard]] std::vector<TIncludeFault> CheckIncludesUnder(const std::filesystem::path& src, int& nFiles);

} // namespace quillon
