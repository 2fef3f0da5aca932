#pragma once
// How the help of a command looks: eighty columns wide, without the notes on which option needs which.

#include <CLI/CLI.hpp>
#include <string>

namespace quillon {

class CHelpFormatter : public CLI::Formatter {
  public:
    CHelpFormatter();

    std::string make_usage(const CLI::App* app, std::string name) const override;
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};

} // namespace quillon
