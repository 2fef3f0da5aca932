#include "cli/help_formatter.h"

#include <sstream>

namespace quillon {

namespace {

constexpr std::size_t kNameColumns = 26;
constexpr std::size_t kTextColumns = 80 - kNameColumns;

/// The text in lines of kTextColumns at most.
std::string Wrapped(const std::string& text) {
    std::istringstream words(text);
    std::string wrapped, word;
    std::size_t nColumn = 0;
    while (words >> word) {
        const bool bBreak = nColumn > 0 && nColumn + 1 + word.size() > kTextColumns;
        if (nColumn > 0)
            wrapped += bBreak ? '\n' : ' ';
        nColumn = bBreak ? word.size() : nColumn + (nColumn > 0 ? 1 : 0) + word.size();
        wrapped += word;
    }
    return wrapped;
}

} // namespace

CHelpFormatter::CHelpFormatter() { column_width(kNameColumns); }

std::string CHelpFormatter::make_usage(const CLI::App* app, std::string name) const {
    const bool bWhole = app->get_parent() == nullptr;
    std::string usage = "\nUsage: " + name + (bWhole ? " COMMAND [options]\n" : "");
    const auto isPositional = [](const CLI::Option* option) { return option->get_positional(); };
    if (!bWhole)
        for (const CLI::Option* positional : app->get_options(isPositional))
            usage +=
                positional->get_required() ? " " + positional->get_name(true) : " [" + positional->get_name(true) + "]";
    return usage + (bWhole ? "" : " [options]\n");
}

std::string CHelpFormatter::make_option_opts(const CLI::Option* option) const {
    const bool bValue = option->get_type_size() != 0 && !option->get_positional();
    return (bValue ? " " + option->get_type_name() : "") + (option->get_required() ? " (required)" : "");
}

std::string CHelpFormatter::make_option_desc(const CLI::Option* option) const {
    return Wrapped(option->get_description());
}

} // namespace quillon
