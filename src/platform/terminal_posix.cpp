#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace quillon {

namespace {

int DescriptorOf(EStream stream) { return stream == EStream::Output ? STDOUT_FILENO : STDERR_FILENO; }

} // namespace

bool IsTerminal(EStream stream) { return isatty(DescriptorOf(stream)) != 0; }

int TerminalWidth(EStream stream) {
    winsize size{};
    if (ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return kDefaultTerminalWidth;
    return size.ws_col;
}

} // namespace quillon
