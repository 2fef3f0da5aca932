#include "include_rules.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <regex>
#include <sstream>

namespace quillon {

namespace {

namespace fs = std::filesystem;

struct TLayer {
    std::string_view m_folder;
    int m_nHeight; // a folder includes folders of its own height and lower ones
};

constexpr std::array kLayers{
    TLayer{"platform", 0}, TLayer{"core", 1},       TLayer{"tempregister", 2}, TLayer{"globalregister", 2},
    TLayer{"search", 3},   TLayer{"heuristics", 3}, TLayer{"parallel", 4},     TLayer{"tablebase", 5},
    TLayer{"library", 6},  TLayer{"app", 7},        TLayer{"cli", 8},          TLayer{"ui", 8},
};

constexpr std::string_view kFolderOfTheWindowSystem = "ui";

std::string FirstFolder(const std::string& path) {
    const std::size_t slash = path.find('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::optional<int> HeightOf(std::string_view folder) {
    const auto layer = std::ranges::find(kLayers, folder, &TLayer::m_folder);
    if (layer == kLayers.end())
        return std::nullopt;
    return layer->m_nHeight;
}

// "QWidget", "QtWidgets/QWidget", "qevent.h": the names that Qt gives its headers.
bool IsWindowSystemHeader(const std::string& header) {
    static const std::regex qt("Q[A-Z][A-Za-z]*|Qt[A-Za-z0-9]*/.*|q[a-z]+\\.h");
    return std::regex_match(header, qt);
}

std::optional<std::string> FaultOfOwnInclude(const std::string& folder, const std::string& header) {
    const std::string included = FirstFolder(header);
    if (included.empty())
        return "\"" + header + "\" does not name its folder";
    const auto height = HeightOf(included);
    if (!height)
        return "unknown folder of \"" + header + "\"";
    if (*height > *HeightOf(folder))
        return folder + " must not include " + included;
    if (*height == *HeightOf(folder) && folder != included && (folder == "cli" || folder == "ui"))
        return "the programs must not include each other";
    return std::nullopt;
}

std::optional<std::string> FaultOfInclude(const std::string& folder, bool bAngled, const std::string& header) {
    if (IsWindowSystemHeader(header)) {
        if (folder != kFolderOfTheWindowSystem)
            return folder + " must not know the window system: " + header;
        return std::nullopt;
    }
    return bAngled ? std::nullopt : FaultOfOwnInclude(folder, header);
}

bool IsSource(const fs::path& path) {
    const std::string name = path.filename().string();
    return name.ends_with(".h") || name.ends_with(".h.in") || name.ends_with(".cpp");
}

std::string ReadText(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace

std::vector<TIncludeFault> CheckIncludes(const std::string& file, std::string_view text) {
    const std::string folder = FirstFolder(file);
    if (!HeightOf(folder))
        return {{file, 0, "is in no known folder"}};

    static const std::regex include("\\s*#\\s*include\\s*([<\"])([^>\"]+)[>\"].*");
    std::vector<TIncludeFault> faults;
    std::istringstream lines{std::string(text)};
    int nLine = 0;
    for (std::string line; std::getline(lines, line);) {
        ++nLine;
        std::smatch match;
        if (!std::regex_match(line, match, include))
            continue;
        if (auto fault = FaultOfInclude(folder, match[1] == "<", match[2]))
            faults.push_back({file, nLine, *fault});
    }
    return faults;
}

std::vector<TIncludeFault> CheckIncludesUnder(const fs::path& src, int& nFiles) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(src))
        if (entry.is_regular_file() && IsSource(entry.path()))
            files.push_back(entry.path());
    std::ranges::sort(files);
    nFiles = static_cast<int>(files.size());

    std::vector<TIncludeFault> faults;
    for (const fs::path& file : files)
        std::ranges::move(CheckIncludes(file.lexically_relative(src).generic_string(), ReadText(file)),
                          std::back_inserter(faults));
    return faults;
}

} // namespace quillon
