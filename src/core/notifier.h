#pragma once
// INotifier: how the engine and the library speak to a person. They never open a box; the window, the command line and
// the tests each implement this.
//
// Threads: called on the thread that runs the solve or the file operation, one call at a time.

#include <string_view>

namespace quillon {

class INotifier {
  public:
    virtual ~INotifier() = default;

    /// A message to read.
    virtual void Inform(std::string_view text, std::string_view title) = 0;

    /// A question answered by Yes (true) or No.
    [[nodiscard]] virtual bool AskYesNo(std::string_view text, std::string_view title) = 0;
};

} // namespace quillon
